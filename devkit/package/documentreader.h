#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/package/package.h"
#include "devkit/package/xpstree.h"
#include "devkit/package/xpsvocabulary.h"

namespace devkit::package {

// Finds the tree of an XPS document in a package. What XPS forbids is passed over with a finding where a
// document can be had nevertheless: of two start parts, two tickets on a part, or two references to a page
// the first counts, and a missing ticket or resource is left out.
class DocumentReader {
  public:
    explicit DocumentReader(const Package& package) : m_package(package) {}

    // Throws common::Error when there is no document to be had.
    [[nodiscard]] XpsTree Read();

    [[nodiscard]] Flavour GetFlavour() const noexcept { return m_flavour; }
    [[nodiscard]] const std::vector<std::string>& Findings() const noexcept { return m_findings; }

  private:
    [[nodiscard]] std::string FindStartPart(const std::vector<Relationship>& relationships);
    void ReadSequence(FixedDocumentSequence& sequence);
    void AddDocuments(FixedDocumentSequence& sequence, const std::vector<std::string>& references);
    void AddPages(FixedDocument& document, std::vector<std::string> references);
    void ReadHangers(FixedPage& page);
    [[nodiscard]] std::optional<std::string> TicketOf(const std::string& part,
                                                      const std::vector<Relationship>& relationships);
    [[nodiscard]] std::optional<std::string> TicketOf(const std::string& part);
    [[nodiscard]] std::vector<Relationship> RelationshipsOf(const std::string& part);
    [[nodiscard]] std::string ReadStructure(const std::string& part) const;
    // The part that a reference leads to, in the package's spelling.
    [[nodiscard]] std::optional<PartInfo> Target(std::string_view source, const std::string& reference) const;
    // The document or page that a reference names; empty when it names none or one that was there before.
    [[nodiscard]] std::optional<std::string> NextPart(const std::string& source,
                                                      const std::string& reference);
    void Note(std::string_view what, std::string_view where);

    const Package& m_package;
    Flavour m_flavour = Flavour::MicrosoftXps;
    std::vector<std::string> m_findings;
    std::vector<bool> m_seen;  // the documents and pages, by the numbers of their parts
    std::size_t m_references = 0;
};

}  // namespace devkit::package
