#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "devkit/package/documentmarkup.h"
#include "devkit/package/package.h"
#include "devkit/package/xpstree.h"
#include "devkit/package/xpsvocabulary.h"

namespace devkit::package {

// Brings a package from one tree to another, touching only the parts that differ.
class TreeWriter {
  public:
    TreeWriter(Package& package, Flavour flavour) noexcept : m_package(package), m_flavour(flavour) {}

    // New markup moves from the tree into the package; a sequence that was implied and now needs a part gets
    // its name. Throws common::Error when the tree names a part that is not there.
    void Apply(const XpsTree& before, XpsTree& after);

  private:
    void ApplySequence(const FixedDocumentSequence& before, FixedDocumentSequence& after);
    void ApplyDocument(const FixedDocument* pBefore, FixedDocument& after);
    void ApplyPage(const FixedPage* pBefore, FixedPage& after);
    void MakeSequence(FixedDocumentSequence& sequence);
    void RemoveLost(const XpsTree& before, const XpsTree& after);

    // A null target removes what is there.
    void SetTicket(const std::string& source, const std::string* pTarget);
    void SetThumbnail(const std::string* pTarget);
    void SetResources(const FixedPage& before, const FixedPage& after);
    void SetReferences(const std::string& part, DocumentRoot root, const std::vector<std::string>& targets);
    void AddTo(std::vector<Relationship>& relationships, std::string_view type,
               const std::string* pTarget) const;
    void CheckPart(const std::string& name) const;
    [[nodiscard]] std::vector<Relationship> RelationshipsOf(const std::string& source) const;

    Package& m_package;
    Flavour m_flavour;
};

}  // namespace devkit::package
