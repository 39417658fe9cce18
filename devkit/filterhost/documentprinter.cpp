#include "devkit/filterhost/documentprinter.h"

#include <string>
#include <string_view>
#include <unordered_set>

#include "devkit/common/numbers.h"
#include "devkit/common/text.h"
#include "devkit/package/partname.h"
#include "devkit/printschema/summary.h"

namespace devkit::filterhost {

namespace {

using package::FixedDocument;
using package::FixedDocumentSequence;
using package::FixedPage;
using package::Flavour;
using package::NameKey;
using package::PageDimensions;
using package::PartInfo;
using package::ReadPageDimensions;
using package::XpsDocument;

constexpr double kMillimetresPerUnit = 25.4 / 96;

std::string MillimetreText(double units) { return common::NumberText(units * kMillimetresPerUnit, 1); }

const char* ShapeText(const PageDimensions& page) {
    if (page.width > page.height) return "landscape";
    return page.width < page.height ? "portrait" : "square";
}

class Printer {
  public:
    Printer(std::ostream& output, const XpsDocument& document) : m_output(output), m_document(document) {}

    void Print() {
        std::size_t pages = 0;
        for (const FixedDocument& each : m_document.sequence.documents) pages += each.pages.size();
        Line(0, (m_document.GetFlavour() == Flavour::OpenXps ? "OpenXPS document, " : "XPS document, ") +
                    common::Counted(m_document.sequence.documents.size(), "fixed document") + ", " +
                    common::Counted(pages, "page"));
        if (m_document.thumbnail) PrintPart(1, "thumbnail", *m_document.thumbnail);
        PrintSequence(m_document.sequence);
        PrintOtherParts();
        PrintFindings();
    }

  private:
    void Line(int level, std::string_view text) {
        for (int i = 0; i < level; ++i) m_output << "  ";
        m_output << text << '\n';
    }

    void PrintSequence(const FixedDocumentSequence& sequence) {
        Line(1, sequence.implied ? "sequence (implied)" : "sequence  " + Seen(sequence.name));
        PrintTicket(2, sequence.ticket);
        for (std::size_t i = 0; i < sequence.documents.size(); ++i) {
            const FixedDocument& document = sequence.documents[i];
            Line(2, "document " + std::to_string(i + 1) + "  " + Seen(document.name));
            PrintTicket(3, document.ticket);
            for (std::size_t j = 0; j < document.pages.size(); ++j) PrintPage(j + 1, document.pages[j]);
        }
    }

    void PrintPage(std::size_t number, const FixedPage& page) {
        const std::string title = "page " + std::to_string(number) + "  " + Seen(page.name) + "  ";
        std::optional<PageDimensions> geometry;
        try {
            const std::string markup = m_document.ReadMarkup(page);
            geometry = ReadPageDimensions(markup, m_document.GetPackage().GetLimits().page);
            Line(3, title + (geometry ? SizeText(*geometry) : "its size cannot be read") + ", " +
                        BytesText(markup.size()));
        } catch (const common::StorageError&) {
            throw;
        } catch (const common::Error& failure) {
            Line(3, title + failure.what());
        }
        if (geometry && geometry->bleedBox) Line(4, "BleedBox    " + BoxText(*geometry->bleedBox));
        if (geometry && geometry->contentBox) Line(4, "ContentBox  " + BoxText(*geometry->contentBox));
        PrintTicket(4, page.ticket);
        for (const std::string& resource : page.resources) PrintPart(4, "resource", resource);
    }

    void PrintTicket(int level, const std::optional<std::string>& name) {
        if (!name) return;
        if (!m_tickets.insert(NameKey(*name)).second) {
            Line(level, "ticket  " + *name + "  as above");
            return;
        }
        std::string title = "ticket  ";
        try {
            const std::string bytes = m_document.ReadPart(Seen(*name));
            Line(level, title + *name + "  " + BytesText(bytes.size()));
            title.clear();
            ++level;
            PrintSettings(level, bytes);
        } catch (const common::StorageError&) {
            throw;
        } catch (const common::Error& failure) {
            Line(level, title + failure.what());
        }
    }

    void PrintSettings(int level, const std::string& bytes) {
        try {
            const auto ticket = printschema::ReadFramework(bytes, printschema::Tag::PrintTicket);
            for (const printschema::Setting& setting : printschema::SettingsOf(ticket.root, ticket.prefixes))
                Line(level, setting.name + " = " + setting.value);
        } catch (const printschema::FormatError& error) {
            Line(level, std::string("is no print ticket: ") + error.what());
        }
    }

    void PrintPart(int level, std::string_view what, const std::string& name) {
        const std::optional<PartInfo> part = m_document.GetPackage().Find(Seen(name));
        Line(level, std::string(what) + "  " + name + "  " + (part ? Describe(*part) : "is missing"));
    }

    static std::string Describe(const PartInfo& part) {
        const std::string type = part.contentType.empty() ? "no content type" : part.contentType;
        return type + ", " + (part.whole ? BytesText(part.size) : "a piece is missing");
    }

    void PrintOtherParts() {
        bool first = true;
        for (const PartInfo& part : m_document.GetPackage().Parts()) {
            if (m_seen.contains(NameKey(part.name))) continue;
            if (first) Line(1, "other parts");
            first = false;
            Line(2, part.name + "  " + Describe(part));
        }
    }

    void PrintFindings() {
        if (m_document.Findings().empty()) return;
        Line(1, "findings");
        for (const std::string& finding : m_document.Findings()) Line(2, finding);
    }

    // Notes that the part stands in the tree.
    const std::string& Seen(const std::string& name) {
        m_seen.insert(NameKey(name));
        return name;
    }

    std::ostream& m_output;
    const XpsDocument& m_document;
    std::unordered_set<std::string> m_seen;
    std::unordered_set<std::string> m_tickets;
};

}  // namespace

std::string SizeText(const PageDimensions& page) {
    return common::NumberText(page.width) + " x " + common::NumberText(page.height) + " (" +
           MillimetreText(page.width) + " x " + MillimetreText(page.height) + " mm), " + ShapeText(page);
}

std::string BoxText(const std::array<double, 4>& box) {
    std::string text;
    for (const double number : box) text += (text.empty() ? "" : ",") + common::NumberText(number);
    return text;
}

std::string BytesText(std::uint64_t count) {
    std::string digits = std::to_string(count);
    for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
    return digits + (count == 1 ? " byte" : " bytes");
}

void PrintDocument(std::ostream& output, const XpsDocument& document) { Printer(output, document).Print(); }

}  // namespace devkit::filterhost
