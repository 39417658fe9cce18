#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/package/package.h"

namespace devkit::package {

inline constexpr std::string_view kPrintTicketContentType = "application/vnd.ms-printing.printticket+xml";
inline constexpr std::string_view kFixedPageContentType = "application/vnd.ms-package.xps-fixedpage+xml";

// The tree of an XPS document, in sending order. Everything in it may be changed before XpsDocument::Save;
// part names are those of the package. Two places of the tree may name the same part.

struct FixedPage {
    std::string name;
    std::optional<std::string> markup;   // new markup; unset while the page keeps its own
    std::optional<std::string> ticket;   // the part's name
    std::vector<std::string> resources;  // names of the fonts, images, dictionaries ... that the page needs
};

struct FixedDocument {
    std::string name;
    std::optional<std::string> ticket;
    std::vector<FixedPage> pages;
};

struct FixedDocumentSequence {
    std::string name;
    std::optional<std::string> ticket;
    std::vector<FixedDocument> documents;
};

enum class Flavour { MicrosoftXps, OpenXps };

// An XPS or OpenXPS document in a package: the tree to look at and to change, the parts behind it, and the
// way back into a file. Every failure is a PackageError.
//
//     XpsDocument document = XpsDocument::Open("in.xps");
//     FixedPage& page = document.sequence.documents[0].pages[2];
//     page.markup = rewritten;
//     page.ticket = document.AddPart("/Metadata/page3.xml", kPrintTicketContentType, ticketBytes);
//     document.Save("out.xps");
class XpsDocument {
  public:
    // Refuses what has no start part, no sequence, or refers to a document or page that is missing.
    [[nodiscard]] static XpsDocument Open(const std::filesystem::path& file, const Limits& limits = {});

    FixedDocumentSequence sequence;
    std::optional<std::string> thumbnail;  // of the package; the part's name

    [[nodiscard]] Flavour GetFlavour() const noexcept { return m_flavour; }
    [[nodiscard]] const Package& GetPackage() const noexcept { return m_package; }
    // What is wrong with the document without keeping it from being read, one line each.
    [[nodiscard]] const std::vector<std::string>& Findings() const noexcept { return m_findings; }

    // The bytes of a part, for example of a ticket.
    [[nodiscard]] std::string ReadPart(std::string_view name) const { return m_package.Read(name); }
    // The page's new markup, or else its own.
    [[nodiscard]] std::string ReadMarkup(const FixedPage& page) const;

    // Adds a part that a place of the tree can then name. Returns its name, which is the wanted one made
    // legal and unique.
    std::string AddPart(std::string_view wantedName, std::string_view contentType, std::string bytes);

    // Brings markup, tickets, resources, thumbnail and the lists of documents and pages into the package as
    // the tree has them, then writes it; see Package::Save. What the tree does not change stays byte for
    // byte.
    void Save(const std::filesystem::path& file);

  private:
    struct Original {
        FixedDocumentSequence sequence;
        std::optional<std::string> thumbnail;
    };

    explicit XpsDocument(Package package) : m_package(std::move(package)) {}

    Package m_package;
    Flavour m_flavour = Flavour::MicrosoftXps;
    std::vector<std::string> m_findings;
    Original m_original;
};

}  // namespace devkit::package
