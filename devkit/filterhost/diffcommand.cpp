#include <new>
#include <string>

#include "devkit/common/file.h"
#include "devkit/filterhost/commands.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/documentdifference.h"
#include "devkit/filterhost/files.h"
#include "devkit/package/xpsdocument.h"
#include "devkit/printschema/reader.h"

namespace devkit::filterhost {
namespace {

using Path = std::filesystem::path;

// A document is a zip archive; anything else is to be a ticket.
bool IsDocument(const Path& path) {
    common::FileSource file(path);
    std::string start(2, '\0');
    start.resize(file.ReadAt(0, start.data(), start.size()));
    return start == "PK";
}

package::XpsDocument OpenDocument(const Path& path) try {
    return package::XpsDocument::Open(path);
} catch (const common::Error& error) {
    const std::string name = common::PathText(path);
    throw common::Error(name + ": " + ProblemOf(error, name));
}

std::string ReadTicket(const Path& path) {
    std::string bytes = ReadFile(path, "diff");
    try {
        static_cast<void>(printschema::ReadFramework(bytes, printschema::Tag::PrintTicket));
    } catch (const printschema::FormatError& error) {
        throw common::Error(common::PathText(path) +
                            ": is neither a document nor a print ticket: " + error.what());
    }
    return bytes;
}

std::vector<std::string> Compare(const DiffSettings& settings) {
    const bool areDocuments = IsDocument(settings.before);
    if (areDocuments != IsDocument(settings.after))
        throw UsageError("diff: a document cannot be compared with a ticket");
    if (areDocuments) return DiffDocuments(OpenDocument(settings.before), OpenDocument(settings.after));
    return DiffTickets(ReadTicket(settings.before), ReadTicket(settings.after));
}

}  // namespace

int Diff(const DiffSettings& settings) try {
    const std::vector<std::string> lines = Compare(settings);
    for (const std::string& line : lines) PrintOut(line + "\n");
    return lines.empty() ? kSame : kDifferent;
} catch (const common::Error& error) {
    PrintProblem(error.what());
    return UnreadableInput;
}

}  // namespace devkit::filterhost
