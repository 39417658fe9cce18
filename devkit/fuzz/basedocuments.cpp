#include "devkit/fuzz/basedocuments.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/file.h"
#include "devkit/common/text.h"
#include "devkit/fuzz/environment.h"
#include "devkit/package/ziparchive.h"
#include "platform/utf.h"

namespace devkit::fuzz {
namespace {

using Path = std::filesystem::path;

const std::string kXps = "http://schemas.microsoft.com/xps/2005/06";
const std::string kPackage = "http://schemas.openxmlformats.org/package/2006/";
const std::string kTicketType = "application/vnd.ms-printing.printticket+xml";

std::string Relationships(const std::vector<std::pair<std::string, std::string>>& typesAndTargets) {
    std::string text = "<Relationships xmlns=\"" + kPackage + "relationships\">";
    unsigned number = 0;
    for (const auto& [type, target] : typesAndTargets) {
        text += "<Relationship Id=\"r" + std::to_string(++number) + "\" Type=\"" + type + "\" Target=\"" +
                target + "\"/>";
    }
    return text + "</Relationships>";
}

std::string ContentTypes() {
    std::string text = "<Types xmlns=\"" + kPackage + "content-types\">";
    const std::pair<const char*, std::string> types[] = {
        {"rels", "application/vnd.openxmlformats-package.relationships+xml"},
        {"fdseq", "application/vnd.ms-package.xps-fixeddocumentsequence+xml"},
        {"fdoc", "application/vnd.ms-package.xps-fixeddocument+xml"},
        {"fpage", "application/vnd.ms-package.xps-fixedpage+xml"},
        {"xml", kTicketType},
        {"png", "image/png"}};
    for (const auto& [extension, type] : types)
        text += std::string("<Default Extension=\"") + extension + "\" ContentType=\"" + type + "\"/>";
    return text + "</Types>";
}

std::string PageMarkup(bool isLandscape) {
    const std::string size =
        isLandscape ? "Width=\"1122.56\" Height=\"793.76\"" : "Width=\"793.76\" Height=\"1122.56\"";
    return "<FixedPage xmlns=\"" + kXps + "\" " + size +
           " xml:lang=\"en\" ContentBox=\"48,48,600,600\" BleedBox=\"-3,-3,800,800\">"
           "<FixedPage.Resources><ResourceDictionary xmlns:x=\"" +
           kXps +
           "/resourcedictionary-key\"><SolidColorBrush x:Key=\"b\" Color=\"#FF0000\"/></ResourceDictionary>"
           "</FixedPage.Resources><Canvas RenderTransform=\"1,0,0,1,10,10\" Name=\"c\"><Path "
           "Fill=\"{StaticResource "
           "b}\" Data=\"M 0,0 L 10,0 10,10 Z\"/><Path><Path.Fill><ImageBrush ImageSource=\"/r.png\" "
           "Viewbox=\"0,0,1,1\" Viewport=\"0,0,1,1\"/></Path.Fill><Path.Data><PathGeometry Figures=\"M 1,1 L "
           "2,2\"/></Path.Data></Path></Canvas><!-- a comment --><Canvas Clip=\"M 0,0 L 5,5 "
           "Z\"/></FixedPage>";
}

std::string InUtf16(const std::string& text) {
    std::string bytes = "\xFF\xFE";
    for (const wchar_t unit : platform::ToUtf16(text)) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8 & 0xFF);
    }
    return bytes;
}

// Two pages, of which the second has no ticket.
BaseDocument SmallJob(const std::string& name, std::string (*encode)(const std::string&)) {
    const std::string ticket = kXps + "/printticket";
    const std::string resource = kXps + "/required-resource";
    Entries entries;
    entries.emplace_back("[Content_Types].xml", ContentTypes());
    entries.emplace_back("_rels/.rels", Relationships({{kXps + "/fixedrepresentation", "/s.fdseq"}}));
    entries.emplace_back("s.fdseq",
                         encode("<FixedDocumentSequence xmlns=\"" + kXps +
                                "\"><DocumentReference Source=\"/d.fdoc\"/></FixedDocumentSequence>"));
    entries.emplace_back("_rels/s.fdseq.rels", Relationships({{ticket, "/j.xml"}}));
    entries.emplace_back("j.xml", encode(UsualTicket()));
    entries.emplace_back("d.fdoc",
                         encode("<FixedDocument xmlns=\"" + kXps +
                                "\"><PageContent Source=\"/1.fpage\" Width=\"793.76\" Height=\"1122.56\"/>"
                                "<PageContent Source=\"/2.fpage\"/></FixedDocument>"));
    entries.emplace_back("_rels/d.fdoc.rels", Relationships({{ticket, "/d.xml"}}));
    entries.emplace_back("d.xml", encode(UsualTicket()));
    entries.emplace_back("1.fpage", encode(PageMarkup(false)));
    entries.emplace_back("_rels/1.fpage.rels", Relationships({{ticket, "/p.xml"}, {resource, "/r.png"}}));
    entries.emplace_back("p.xml", encode(UsualTicket()));
    entries.emplace_back("2.fpage", encode(PageMarkup(true)));
    entries.emplace_back("_rels/2.fpage.rels", Relationships({{resource, "/r.png"}}));
    // No filter draws it.
    entries.emplace_back("r.png", std::string("\x89PNG\r\n\x1A\n"));
    return {name, std::move(entries)};
}

// Nothing for what is no archive, or too large.
std::optional<BaseDocument> ReadDocument(const Path& path, const std::string& name) {
    try {
        auto source = std::make_shared<common::FileSource>(path);
        if (source->Size() > kMostBaseBytes) return std::nullopt;
        const package::ZipArchive archive(std::move(source), name, common::Limits());
        BaseDocument document{name, {}};
        std::size_t total = 0;
        for (std::size_t i = 0; i < archive.Entries().size(); ++i) {
            std::string bytes;
            archive.Read(i, 4 * kMostBaseBytes - total, bytes);
            total += bytes.size();
            document.entries.emplace_back(archive.NameOf(i), std::move(bytes));
        }
        return document;
    } catch (const common::Error&) {
        return std::nullopt;
    }
}

}  // namespace

std::vector<BaseDocument> OwnDocuments() {
    return {SmallJob("the small job", [](const std::string& text) { return text; }),
            SmallJob("the small job of UTF-16", InUtf16)};
}

std::vector<BaseDocument> DocumentsOf(const Path& folder) {
    std::vector<std::pair<std::string, Path>> files;
    std::error_code failure;
    for (std::filesystem::recursive_directory_iterator each(folder, failure), end; !failure && each != end;
         each.increment(failure)) {
        const std::string extension = common::PathText(each->path().extension());
        const bool isPackage =
            common::EqualIgnoringCase(extension, ".xps") || common::EqualIgnoringCase(extension, ".oxps");
        std::error_code ignored;
        if (isPackage && each->is_regular_file(ignored))
            files.emplace_back(common::PathText(each->path().lexically_relative(folder)), each->path());
    }
    std::ranges::sort(files, {}, &std::pair<std::string, Path>::first);
    std::vector<BaseDocument> documents;
    for (const auto& [name, path] : files) {
        if (auto document = ReadDocument(path, name)) documents.push_back(std::move(*document));
    }
    return documents;
}

}  // namespace devkit::fuzz
