#include "devkit/msxml/xpath.h"

#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <algorithm>
#include <memory>
#include <string>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/unicode.h"
#include "devkit/msxml/xpathprefixes.h"
#include "devkit/msxml/xpathtree.h"

namespace devkit::msxml {

namespace {

struct LibraryFree {
    void operator()(xmlXPathContext* p) const noexcept { xmlXPathFreeContext(p); }
    void operator()(xmlXPathCompExpr* p) const noexcept { xmlXPathFreeCompExpr(p); }
    void operator()(xmlXPathObject* p) const noexcept { xmlXPathFreeObject(p); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, LibraryFree>;

const xmlChar* Chars(const std::string& text) noexcept {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

void IgnoreError(void*, xmlErrorPtr) {}
void IgnoreMessage(void*, const char*, ...) {}

// Keeps the library from printing what it has no error code for. The setting is the thread's own.
class Silence {
  public:
    Silence() noexcept : m_pContext(xmlGenericErrorContext), m_handler(xmlGenericError) {
        xmlSetGenericErrorFunc(nullptr, IgnoreMessage);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() { xmlSetGenericErrorFunc(m_pContext, m_handler); }

  private:
    void* m_pContext;
    xmlGenericErrorFunc m_handler;
};

// The tree that the node belongs to, as it is now.
XPathTree& CurrentTree(Node& node) {
    Node* pRoot = &node;
    while (pRoot->Parent() != nullptr) pRoot = pRoot->Parent();
    Document& document = node.OwnerDocument();
    std::unique_ptr<XPathTree>& pCached = document.CachedXPathTree();
    if (!pCached || !pCached->IsCurrent(*pRoot)) {
        pCached.reset();
        pCached = std::make_unique<XPathTree>(*pRoot);
    }
    return *pCached;
}

// The library looks a prefix up only when it comes to use it; an expression with one that is not declared
// fails whatever the document holds.
void CheckPrefixesDeclared(std::wstring_view expression, const std::vector<SelectionNamespace>& namespaces) {
    for (const std::wstring_view prefix : PrefixesIn(expression)) {
        const bool isDeclared =
            std::any_of(namespaces.begin(), namespaces.end(),
                        [prefix](const SelectionNamespace& item) { return item.first == prefix; });
        if (!isDeclared && prefix != L"xml") throw ComError{E_FAIL};
    }
}

// Null for a node that XPath does not see.
Owned<xmlXPathObject> Evaluate(XPathTree& tree, Node& node, std::wstring_view expression) {
    const Owned<xmlXPathContext> pContext(xmlXPathNewContext(tree.LibraryDocument()));
    if (!pContext) throw std::bad_alloc();
    pContext->error = IgnoreError;
    for (const auto& [prefix, uri] : node.OwnerDocument().Settings().selectionNamespaces) {
        const int result =
            xmlXPathRegisterNs(pContext.get(), Chars(Utf8FromWide(prefix)), Chars(Utf8FromWide(uri)));
        if (result != 0) throw std::bad_alloc();
    }
    pContext->node = XPathTree::LibraryNodeOf(node);
    const Owned<xmlXPathCompExpr> pExpression(
        xmlXPathCtxtCompile(pContext.get(), Chars(Utf8FromWide(expression))));
    if (!pExpression) throw ComError{E_FAIL};
    if (pContext->node == nullptr) return nullptr;
    const Silence silence;
    Owned<xmlXPathObject> pResult(xmlXPathCompiledEval(pExpression.get(), pContext.get()));
    if (!pResult || pResult->type != XPATH_NODESET) throw ComError{E_FAIL};
    return pResult;
}

}  // namespace

std::vector<NodeRef> Select(Node& node, std::wstring_view expression) {
    const bool hasForbidden = FindForbiddenCharacter(expression) != std::wstring_view::npos;
    if (hasForbidden) throw ComError{E_FAIL};
    CheckPrefixesDeclared(expression, node.OwnerDocument().Settings().selectionNamespaces);
    const Owned<xmlXPathObject> pResult = Evaluate(CurrentTree(node), node, expression);
    std::vector<NodeRef> found;
    xmlNodeSet* const pSet = pResult ? pResult->nodesetval : nullptr;
    if (pSet == nullptr) return found;
    xmlXPathNodeSetSort(pSet);
    for (int i = 0; i < pSet->nodeNr; ++i) {
        if (pSet->nodeTab[i]->type == XML_NAMESPACE_DECL) continue;
        Node* const pNode = XPathTree::NodeOf(*pSet->nodeTab[i]);
        if (pNode != nullptr) found.emplace_back(pNode);
    }
    return found;
}

}  // namespace devkit::msxml
