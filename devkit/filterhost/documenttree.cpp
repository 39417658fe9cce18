#include "devkit/filterhost/documenttree.h"

#include <cstddef>
#include <optional>

#include "devkit/filterhost/numbers.h"
#include "devkit/filterhost/ticketfacts.h"
#include "devkit/package/pagegeometry.h"

namespace devkit::filterhost {
namespace {

using package::XpsDocument;

// ", ticket /Metadata/1.xml (ISOA4, LongEdgeFirst)", or nothing.
std::string TicketText(const XpsDocument& document, const std::optional<std::string>& ticket) {
    if (!ticket) return {};
    const TicketFacts facts = ReadTicketFacts(document.ReadPart(*ticket));
    std::string details = facts.mediaSize.value_or(std::string());
    if (facts.feedDirection) details += (details.empty() ? "" : ", ") + *facts.feedDirection;
    return ", ticket " + *ticket + (details.empty() ? "" : " (" + details + ")");
}

std::string PageLine(const XpsDocument& document, const package::FixedPage& page, std::size_t number) {
    const auto geometry = package::ReadPageGeometry(document.ReadMarkup(page));
    std::string line = "    page " + std::to_string(number) + " " + page.name + ": ";
    line += geometry ? NumberText(geometry->width) + " x " + NumberText(geometry->height) : "unknown size";
    if (!page.resources.empty()) line += ", " + Counted(page.resources.size(), "resource");
    return line + TicketText(document, page.ticket) + "\n";
}

std::size_t CountPages(const package::XpsTree& tree) {
    std::size_t pages = 0;
    for (const package::FixedDocument& document : tree.sequence.documents) pages += document.pages.size();
    return pages;
}

}  // namespace

std::string WriteTree(const XpsDocument& document) {
    const package::FixedDocumentSequence& sequence = document.sequence;
    std::string text = document.GetFlavour() == package::Flavour::OpenXps ? "OpenXPS" : "XPS";
    text +=
        ", " + Counted(sequence.documents.size(), "document") + ", " + Counted(CountPages(document), "page");
    text += document.thumbnail ? ", thumbnail " + *document.thumbnail + "\n" : "\n";
    text += sequence.implied ? "  sequence without a part of its own" : "  sequence " + sequence.name;
    text += TicketText(document, sequence.ticket) + "\n";
    std::size_t number = 0;
    for (const package::FixedDocument& fixedDocument : sequence.documents) {
        text += "   document " + fixedDocument.name + TicketText(document, fixedDocument.ticket) + "\n";
        for (const package::FixedPage& page : fixedDocument.pages) text += PageLine(document, page, ++number);
    }
    for (const std::string& finding : document.Findings()) text += "  finding: " + finding + "\n";
    return text;
}

}  // namespace devkit::filterhost
