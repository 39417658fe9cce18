#include "base/xml/xmlmarger.h"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/logging/check.h"
#include "platform/bstr.h"

namespace base::xml {

using logging::Throw;
using logging::ThrowIfFailed;
using logging::ThrowIfNull;

namespace {

[[nodiscard]] bool IsXmlDeclaration(IXMLDOMNode* pNode) {
    DOMNodeType type = NODE_INVALID;
    ThrowIfFailed(pNode->get_nodeType(&type));
    if (type != NODE_PROCESSING_INSTRUCTION) return false;
    platform::Bstr name;
    ThrowIfFailed(pNode->get_nodeName(name.Put()));
    return name.View() == L"xml";
}

}  // namespace

// The children of a base node before anything is appended to it, to be found by key where there are keys.
class XmlMarger::Level {
  public:
    Level(const XmlNodeComparator& comparator, std::vector<NodeView>& children)
        : m_comparator(comparator), m_children(children) {
        for (NodeView& child : m_children) {
            if (!child) Throw<std::runtime_error>("Unexpected state.");
            const std::optional<std::wstring>& key = child.KeyBy(comparator);
            if (!key) return;
            m_byKey.push_back({*key, &child});
        }
        std::ranges::stable_sort(m_byKey, {}, &Keyed::key);
    }

    // In the order of the children.
    [[nodiscard]] std::vector<NodeView*> Matches(NodeView& node) const {
        std::vector<NodeView*> matches;
        if (m_byKey.size() == m_children.size()) {
            for (const Keyed& same : std::ranges::equal_range(
                     m_byKey, std::wstring_view(node.KeyBy(m_comparator).value()), {}, &Keyed::key))
                matches.push_back(same.pNode);
        } else {
            for (NodeView& child : m_children) {
                if (m_comparator.IsSameNode(child.Get(), node.Get())) matches.push_back(&child);
            }
        }
        return matches;
    }

    [[nodiscard]] bool IsEmpty() const noexcept { return m_children.empty(); }

  private:
    struct Keyed {
        std::wstring_view key;
        NodeView* pNode;
    };

    const XmlNodeComparator& m_comparator;
    std::span<NodeView> m_children;
    std::vector<Keyed> m_byKey;
};

void XmlMarger::Merge(IXMLDOMDocument2* pBase, IXMLDOMDocument2* pTarget) {
    ThrowIfNull(pBase, "pBase is null.");
    ThrowIfNull(pTarget, "pTarget is null.");
    DocumentView base(pBase);
    DocumentView target(pTarget);
    Merge(base, target);
}

void XmlMarger::Merge(DocumentView& base, DocumentView& target) {
    m_pBaseDocument = base.Document();
    MergeNodes(base.Node(), target.Node());
}

void XmlMarger::MergeNodes(NodeView& base, NodeView& target) {
    if (!base.HasChildren() || !target.HasChildren()) return;
    const Level level(m_comparator, base.Children());
    std::vector<NodeView> missing;
    for (NodeView& child : target.Children()) {
        if (!child) Throw<std::runtime_error>("Unexpected state.");
        if (MergeIntoMatches(level, child)) continue;
        // A document without a declaration does not lack it, and could not take it behind its root.
        if (!IsXmlDeclaration(child.Get())) missing.push_back(child.Clone());
    }
    for (NodeView& clone : missing) base.Append(std::move(clone));
}

bool XmlMarger::MergeIntoMatches(const Level& level, NodeView& target) {
    if (level.IsEmpty()) return false;
    const std::vector<NodeView*> matches = level.Matches(target);
    for (NodeView* const pMatch : matches) {
        DeclareNamespaces(*pMatch, target);
        MergeNodes(*pMatch, target);
    }
    return !matches.empty();
}

// A declaration that the base has already is left alone.
void XmlMarger::DeclareNamespaces(NodeView& base, NodeView& target) {
    Declarations missing = target.GetDeclarations();
    if (missing.empty()) return;
    const Declarations& own = base.GetDeclarations();
    std::erase_if(missing, [&](const auto& declaration) {
        const auto found = own.find(declaration.first);
        return found != own.end() && found->second == declaration.second;
    });
    if (!missing.empty()) base.Declare(m_pBaseDocument, missing);
}

}  // namespace base::xml
