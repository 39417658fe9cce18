#include "devkit/msxml/xpath/selection.h"

#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <algorithm>
#include <memory>
#include <string>

#include "devkit/common/xmlsilence.h"
#include "devkit/msxml/tree/characters.h"
#include "devkit/msxml/tree/xmlerror.h"
#include "devkit/msxml/xpath/querytree.h"
#include "devkit/msxml/xpath/simplepath.h"
#include "platform/utf.h"

namespace devkit::msxml {

namespace {

struct LibraryFree {
    void operator()(xmlXPathContext* p) const noexcept { xmlXPathFreeContext(p); }
    void operator()(xmlXPathCompExpr* p) const noexcept { xmlXPathFreeCompExpr(p); }
    void operator()(xmlXPathObject* p) const noexcept { xmlXPathFreeObject(p); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, LibraryFree>;

void IgnoreError(void*, xmlErrorPtr) {}

// The library looks a prefix up only when it comes to use it; an expression with one that is not declared
// fails whatever the document holds.
void CheckPrefixesDeclared(std::wstring_view expression, const std::vector<SelectionNamespace>& namespaces) {
    for (const std::wstring_view prefix : PrefixesIn(expression)) {
        if (FindUri(namespaces, prefix) == nullptr && prefix != L"xml") throw Refused{XmlNotAllowed};
    }
}

// Null for a node that XPath does not see.
Owned<xmlXPathObject> Evaluate(QueryTree& tree, Node& node, std::wstring_view expression,
                               const std::vector<SelectionNamespace>& namespaces) {
    const Owned<xmlXPathContext> pContext(xmlXPathNewContext(tree.LibraryDocument()));
    if (!pContext) throw std::bad_alloc();
    pContext->error = IgnoreError;
    for (const auto& [prefix, uri] : namespaces) {
        const int result =
            xmlXPathRegisterNs(pContext.get(), Chars(platform::ToUtf8(prefix)), Chars(platform::ToUtf8(uri)));
        if (result != 0) throw std::bad_alloc();
    }
    pContext->node = QueryTree::LibraryNodeOf(node);
    const Owned<xmlXPathCompExpr> pExpression(
        xmlXPathCtxtCompile(pContext.get(), Chars(platform::ToUtf8(expression))));
    if (!pExpression) throw Refused{XmlNotAllowed};
    if (pContext->node == nullptr) return nullptr;
    const common::XmlSilence silence;
    Owned<xmlXPathObject> pResult(xmlXPathCompiledEval(pExpression.get(), pContext.get()));
    if (!pResult || pResult->type != XPATH_NODESET) throw Refused{XmlNotAllowed};
    return pResult;
}

}  // namespace

Selector::Selector() noexcept = default;

Selector::~Selector() = default;

QueryTree& Selector::CurrentTree(Node& root) {
    if (!m_pTree || !m_pTree->IsCurrent(root)) {
        m_pTree.reset();
        m_pTree = std::make_unique<QueryTree>(root);
    }
    return *m_pTree;
}

std::vector<NodeRef> Selector::Select(Node& node, std::wstring_view expression, std::size_t limit) {
    const bool hasForbidden = FindForbiddenCharacter(expression) != std::wstring_view::npos;
    if (hasForbidden) throw Refused{XmlNotAllowed};
    Node* pRoot = &node;
    while (pRoot->Parent() != nullptr) pRoot = pRoot->Parent();
    const std::optional<SimplePath> pSimple = SimplePath::Parse(expression, namespaces);
    if (pSimple && (pRoot->Is(Kind::Document) || !pSimple->IsAbsolute())) return pSimple->Select(node, limit);

    CheckPrefixesDeclared(expression, namespaces);
    const Owned<xmlXPathObject> pResult = Evaluate(CurrentTree(*pRoot), node, expression, namespaces);
    std::vector<NodeRef> found;
    xmlNodeSet* const pSet = pResult ? pResult->nodesetval : nullptr;
    if (pSet == nullptr) return found;
    xmlXPathNodeSetSort(pSet);
    for (int i = 0; i < pSet->nodeNr && found.size() < limit; ++i) {
        if (pSet->nodeTab[i]->type == XML_NAMESPACE_DECL) continue;
        Node* const pNode = QueryTree::NodeOf(*pSet->nodeTab[i]);
        if (pNode != nullptr) found.emplace_back(pNode);
    }
    return found;
}

}  // namespace devkit::msxml
