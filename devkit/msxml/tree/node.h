#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "devkit/msxml/tree/name.h"

namespace devkit::msxml {

class Document;
class Node;

// What a node is, numbered as the DOM numbers it.
enum class Kind : unsigned char {
    Element = 1,
    Attribute = 2,
    Text = 3,
    CdataSection = 4,
    EntityReference = 5,
    Instruction = 7,
    Comment = 8,
    Document = 9,
    Fragment = 11,
};

// The children or the attributes of a node, in document order. The version changes with each change of the
// chain.
struct NodeChain {
    Node* pFirst = nullptr;
    Node* pLast = nullptr;
    unsigned count = 0;
    unsigned version = 0;
};

// The object through which the outside uses a node. A layer above puts it there and is the only one to know
// what it is; it may use the room and goes with the node, without a destructor being called.
struct Facade {
    void* pObject = nullptr;
    alignas(void*) std::byte room[2 * sizeof(void*)];
};

// A node of a tree. Every node belongs to a document, which is the root of one of its trees.
//
// A node is kept by those who hold it and by each child and attribute that is itself kept; a kept node
// without a parent keeps its document. So a holder keeps the whole tree of the node and the document alive. A
// tree whose root is not kept holds nothing that is, and is destroyed as a whole. The count is not atomic:
// one thread at a time uses a document.
class Node {
  public:
    // The name is null for kinds without one of their own ("#text" and the like). Nobody keeps the node yet.
    Node(Kind kind, Document& document, SharedName pName) noexcept;
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    // How many hold the node after this, at the latest count.
    unsigned Keep() noexcept;
    unsigned Drop() noexcept;

    [[nodiscard]] Kind What() const noexcept { return m_kind; }
    [[nodiscard]] bool Is(Kind kind) const noexcept { return m_kind == kind; }
    [[nodiscard]] const SharedName& GetName() const noexcept { return m_pName; }
    [[nodiscard]] Document& OwnerDocument() const noexcept { return *m_pDocument; }

    // The data of text, CDATA sections, comments and processing instructions, and the value of an attribute
    // as long as it has no children. Everything else has none here. See RawText.
    [[nodiscard]] const std::wstring& Data() const noexcept { return m_data; }
    void SetData(std::wstring data) noexcept;

    // For an attribute the element that has it.
    [[nodiscard]] Node* Parent() const noexcept { return m_pParent; }
    [[nodiscard]] Node* Previous() const noexcept { return m_pPrevious; }
    [[nodiscard]] Node* Next() const noexcept { return m_pNext; }
    [[nodiscard]] const NodeChain& Children() const noexcept { return m_children; }
    [[nodiscard]] const NodeChain& Attributes() const noexcept { return m_attributes; }
    // An element or an XML declaration, which the DOM shows as a processing instruction "xml".
    [[nodiscard]] bool HasAttributes() const noexcept;
    [[nodiscard]] bool IsXmlDeclaration() const noexcept;

    // Puts a node without a parent before another child, or last when there is none; an attribute goes to the
    // attributes, any other node to the children. The node moves to this one's document. What may stand where
    // is the caller's to know.
    void Attach(Node& node, Node* pBefore) noexcept;
    // Leaves the parent. Destroys the node when nobody holds it.
    void Detach() noexcept;
    // Detaches all children, not the attributes.
    void DetachChildren() noexcept;

    [[nodiscard]] bool IsSelfOrBelow(const Node& ancestor) const noexcept;
    // The node that follows in document order within the tree of the root, attributes left out; null behind
    // the last.
    [[nodiscard]] Node* NextWithin(const Node& root) const noexcept;

    // Whether white space stood before the node, or behind the last child, that the parser dropped.
    bool hasSpaceBefore = false;
    bool hasSpaceAtEnd = false;

    Facade facade;
    // The node that stands for this one where a query is evaluated; QueryTree sets it and knows when it
    // holds.
    void* pQueryNode = nullptr;

    // The nodes that are alive in the process. Any thread may ask.
    [[nodiscard]] static long CountLiving() noexcept;

  protected:
    ~Node();

  private:
    [[nodiscard]] Node* Keeper() const noexcept;
    [[nodiscard]] NodeChain& ChainFor(const Node& node) noexcept;
    static void Destroy(Node& root) noexcept;
    void Adopt(Document& document) noexcept;

    Kind m_kind;
    unsigned m_keepers = 0;
    Document* m_pDocument;
    SharedName m_pName;
    std::wstring m_data;
    Node* m_pParent = nullptr;
    Node* m_pPrevious = nullptr;
    Node* m_pNext = nullptr;
    NodeChain m_children;
    NodeChain m_attributes;
};

// Holds a node.
class NodeRef {
  public:
    NodeRef() noexcept = default;
    explicit NodeRef(Node* pNode) noexcept : m_pNode(pNode) {
        if (m_pNode != nullptr) m_pNode->Keep();
    }
    NodeRef(const NodeRef& other) noexcept : NodeRef(other.m_pNode) {}
    NodeRef(NodeRef&& other) noexcept : m_pNode(std::exchange(other.m_pNode, nullptr)) {}
    ~NodeRef() {
        if (m_pNode != nullptr) m_pNode->Drop();
    }
    NodeRef& operator=(NodeRef other) noexcept {
        std::swap(m_pNode, other.m_pNode);
        return *this;
    }

    [[nodiscard]] Node* Get() const noexcept { return m_pNode; }
    Node& operator*() const noexcept { return *m_pNode; }
    Node* operator->() const noexcept { return m_pNode; }
    explicit operator bool() const noexcept { return m_pNode != nullptr; }

  private:
    Node* m_pNode = nullptr;
};

// The root of a document's tree and home of all nodes that were made for it. The one who derives from it
// decides what the nodes look like from outside.
class Document : public Node {
  public:
    Document() noexcept : Node(Kind::Document, *this, nullptr) {}
    virtual ~Document() = default;

    // Gives a node of the document its facade.
    virtual void Present(Node& /*node*/) noexcept {}

    // Each change of a node of the document, in its tree or not, counts.
    void NoteChange() noexcept { ++m_changes; }
    [[nodiscard]] unsigned long long Changes() const noexcept { return m_changes; }

    [[nodiscard]] Node* RootElement() const noexcept;
    // Null when there is none.
    [[nodiscard]] Node* Declaration() const noexcept;

    bool preservesWhiteSpace = false;

  private:
    unsigned long long m_changes = 0;
};

}  // namespace devkit::msxml
