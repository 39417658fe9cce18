#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/package/package.h"
#include "devkit/package/storedtree.h"
#include "devkit/package/xpstree.h"
#include "devkit/package/xpsvocabulary.h"

namespace devkit::package {

// An XPS or OpenXPS document in a package: the tree to look at and to change, the parts behind it, and the
// way back into a file. Every failure is a common::Error.
//
//     XpsDocument document = XpsDocument::Open("in.xps");
//     FixedPage& page = document.sequence.documents[0].pages[2];
//     page.markup = rewritten;
//     page.ticket = document.AddPart("/Metadata/page3.xml", kPrintTicketContentType, ticketBytes);
//     document.Save("out.xps");
class XpsDocument : public XpsTree {
  public:
    // Refuses what has no start part, no page, or refers to a document or page that is missing.
    [[nodiscard]] static XpsDocument Open(const std::filesystem::path& file,
                                          const common::Limits& limits = {});
    [[nodiscard]] static XpsDocument Open(Package package);

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
    std::string AddPart(std::string_view wantedName, std::string_view contentType, common::Content bytes);

    // Brings markup, tickets, resources, thumbnail and the lists of documents and pages into the package as
    // the tree has them, then writes it; see Package::Save. What the tree does not change stays byte for
    // byte. A document, a page or a ticket that the tree has lost leaves the package; a lost resource stays,
    // as other parts may need it. Afterwards the pages' new markup is the package's, and unset in the tree.
    void Save(const std::filesystem::path& file) &;
    void Save(common::ByteSink& sink) &;
    // The same of a document that has neither tree nor parts any more afterwards, nor after a failure; see
    // Package::Save.
    void Save(const std::filesystem::path& file) &&;
    void Save(common::ByteSink& sink) &&;

  private:
    explicit XpsDocument(Package package) noexcept : m_package(std::move(package)) {}
    // Whether there was anything to write.
    bool WriteTree();
    void ApplyTree();
    [[nodiscard]] Package&& TakePackage();

    Package m_package;
    Flavour m_flavour = Flavour::MicrosoftXps;
    std::vector<std::string> m_findings;
    StoredTree m_before;  // the tree as the package has it
};

}  // namespace devkit::package
