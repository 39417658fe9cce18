#include <algorithm>
#include <new>
#include <sstream>
#include <string>

#include "devkit/common/file.h"
#include "devkit/filterhost/commands.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/documentprinter.h"
#include "devkit/filterhost/files.h"
#include "devkit/package/xpsdocument.h"

namespace devkit::filterhost {
namespace {

ExitStatus InspectOne(const std::filesystem::path& input) {
    const std::string name = common::PathText(input);
    try {
        std::ostringstream tree;
        PrintDocument(tree, package::XpsDocument::Open(input));
        PrintOut(name + ":\n" + tree.str());
        return Done;
    } catch (const common::Error& error) {
        PrintProblem(name + ": " + ProblemOf(error, name));
    } catch (const std::bad_alloc&) {
        PrintProblem(name + ": there is not enough memory");
    }
    return UnreadableInput;
}

}  // namespace

ExitStatus Inspect(const InspectSettings& settings) {
    ExitStatus status = Done;
    for (const std::filesystem::path& input : settings.inputs) status = std::max(status, InspectOne(input));
    return status;
}

}  // namespace devkit::filterhost
