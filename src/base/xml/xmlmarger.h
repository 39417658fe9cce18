#pragma once

#include "platform/windows.h"

#include "base/xml/documentview.h"
#include "base/xml/xmlnodecomparator.h"
#include "platform/msxml6.h"

namespace base::xml {

// Copies into one document (the base) every node of another (the target) that the base lacks, level by level.
// What both have, as the comparator sees it, is kept as the base has it; the children of such a pair are
// merged in their turn. With a comparator that has keys the time grows with the number of nodes and not with
// its square.
class XmlMarger {
  public:
    // The comparator is borrowed and must outlive the merger.
    explicit XmlMarger(const XmlNodeComparator& comparator) noexcept : m_comparator(comparator) {}

    // Changes pBase in place and pTarget never. Both are borrowed for the call. A null document throws
    // std::invalid_argument, a failing DOM call HresultError, and the base then keeps what was merged so far.
    void Merge(IXMLDOMDocument2* pBase, IXMLDOMDocument2* pTarget);
    // The same for documents that take part in other merges by the same comparator too.
    void Merge(DocumentView& base, DocumentView& target);

  private:
    class Level;

    void MergeNodes(NodeView& base, NodeView& target);
    [[nodiscard]] bool MergeIntoMatches(const Level& level, NodeView& target);
    void DeclareNamespaces(NodeView& base, NodeView& target);

    const XmlNodeComparator& m_comparator;
    IXMLDOMDocument2* m_pBaseDocument = nullptr;
};

}  // namespace base::xml
