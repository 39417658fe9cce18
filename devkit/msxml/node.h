#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include "devkit/msxml/liveobject.h"
#include "devkit/msxml/name.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

namespace devkit::msxml {

class Document;
class Node;

// The children or the attributes of a node, in document order. The version changes with each change of the
// chain.
struct NodeChain {
    Node* pFirst = nullptr;
    Node* pLast = nullptr;
    std::size_t count = 0;
    unsigned version = 0;
};

// A node of a tree and the COM object that stands for it: one object, so a node has one identity.
//
// A node is kept by the references that callers hold and by each child and attribute that is itself kept; a
// kept node without a parent keeps its document. So a caller's reference keeps the whole tree of the node and
// the document alive. A tree whose root is not kept holds nothing that is, and is destroyed as a whole. The
// count is not atomic: one thread at a time uses a document.
class Node : private LiveObject {
  public:
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    virtual ~Node() = default;

    ULONG AddRef() noexcept;
    ULONG Release() noexcept;

    [[nodiscard]] virtual IXMLDOMNode* AsDomNode() noexcept = 0;

    [[nodiscard]] DOMNodeType Type() const noexcept { return m_type; }
    // Null for kinds without a name of their own ("#text" and the like).
    [[nodiscard]] const SharedName& GetName() const noexcept { return m_pName; }
    [[nodiscard]] Document& OwnerDocument() const noexcept { return *m_pDocument; }

    // The data of text, CDATA sections, comments and processing instructions. Everything else has none here.
    [[nodiscard]] const std::wstring& Data() const noexcept { return m_data; }
    virtual void SetData(std::wstring data);

    // For an attribute the element that has it.
    [[nodiscard]] Node* Parent() const noexcept { return m_pParent; }
    [[nodiscard]] Node* Previous() const noexcept { return m_pPrevious; }
    [[nodiscard]] Node* Next() const noexcept { return m_pNext; }
    [[nodiscard]] const NodeChain& Children() const noexcept { return m_children; }
    // Null for kinds that have no attributes.
    [[nodiscard]] virtual const NodeChain* Attributes() const noexcept { return nullptr; }

    // The node that stands for this one in the tree that XPath works on; XPathTree sets it and knows when it
    // holds.
    void* pXPathNode = nullptr;

  protected:
    Node(DOMNodeType type, Document& document, SharedName pName) noexcept;

  private:
    friend class Tree;

    [[nodiscard]] Node* Keeper() const noexcept;

    DOMNodeType m_type;
    ULONG m_references = 0;
    Document* m_pDocument;
    SharedName m_pName;
    std::wstring m_data;
    Node* m_pParent = nullptr;
    Node* m_pPrevious = nullptr;
    Node* m_pNext = nullptr;
    NodeChain m_children;
};

using NodeRef = platform::ComPtr<Node>;

// The identifier under which an object gives its Node, with a reference, if it is one of this library.
inline constexpr IID IID_Node = {
    0x6f1d6c5e, 0x2f0b, 0x4a9e, {0x9b, 0x0d, 0x51, 0x53, 0x0a, 0x8e, 0x37, 0xc4}};

// The node behind an interface pointer. Null for a null pointer and for an object that is not of this
// library.
[[nodiscard]] NodeRef NodeOf(IUnknown* object) noexcept;

// Gives a node to the caller of a COM method: S_OK with a reference, or S_FALSE and null for none.
// E_INVALIDARG for a null out-parameter.
template <typename Object, typename Interface>
[[nodiscard]] HRESULT Return(Object* pNode, Interface** ppOut) noexcept {
    if (ppOut == nullptr) return E_INVALIDARG;
    *ppOut = nullptr;
    if (pNode == nullptr) return S_FALSE;
    if constexpr (std::is_same_v<Object, Node>) {
        *ppOut = pNode->AsDomNode();
    } else {
        *ppOut = pNode;
    }
    (*ppOut)->AddRef();
    return S_OK;
}

}  // namespace devkit::msxml
