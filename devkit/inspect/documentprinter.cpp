#include "devkit/inspect/documentprinter.h"

#include <string>
#include <string_view>
#include <unordered_set>

#include "devkit/inspect/sizetext.h"
#include "devkit/inspect/ticketsummary.h"
#include "devkit/package/pagedimensions.h"
#include "devkit/package/partname.h"

namespace devkit::inspect {

namespace {

using namespace package;

std::string Count(std::size_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

class Printer {
  public:
    Printer(std::ostream& output, const XpsDocument& document) : m_output(output), m_document(document) {}

    void Print() {
        std::size_t pages = 0;
        for (const FixedDocument& each : m_document.sequence.documents) pages += each.pages.size();
        Line(0, (m_document.GetFlavour() == Flavour::OpenXps ? "OpenXPS document, " : "XPS document, ") +
                    Count(m_document.sequence.documents.size(), "fixed document") + ", " +
                    Count(pages, "page"));
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
            for (const std::string& setting :
                 SummarizeTicket(bytes, *name, m_document.GetPackage().GetLimits().structure))
                Line(level, setting);
        } catch (const common::StorageError&) {
            throw;
        } catch (const common::Error& failure) {
            Line(level, title + failure.what());
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

void PrintDocument(std::ostream& output, const XpsDocument& document) { Printer(output, document).Print(); }

}  // namespace devkit::inspect
