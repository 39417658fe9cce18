#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "devkit/msxml/com/dispatchobject.h"
#include "devkit/msxml/tree/node.h"

namespace devkit::msxml {

// Reads the children or the attributes of a node: by index, with the last place remembered, so that a walk by
// index costs no more than a walk by links; and one by one for nextNode.
class ChainCursor {
  public:
    // Keeps the owner. The chain must be one of the owner's.
    ChainCursor(Node& owner, const NodeChain& chain) noexcept : m_pOwner(&owner), m_chain(chain) {}

    [[nodiscard]] Node& Owner() const noexcept { return *m_pOwner; }
    [[nodiscard]] long Count() const noexcept { return static_cast<long>(m_chain.count); }
    // Null when there is no node of that index.
    [[nodiscard]] Node* At(long index) noexcept;

    // The first node, then each one's follower; null behind the last and from then on until Reset. Null as
    // well once the node that was given last has left its place.
    [[nodiscard]] Node* Next() noexcept;
    void Reset() noexcept;

  private:
    enum class State { BeforeFirst, AtNode, AtEnd };

    void Start(unsigned index) noexcept;

    NodeRef m_pOwner;
    const NodeChain& m_chain;

    // The remembered place, good while the chain has this version.
    Node* m_pRemembered = nullptr;
    unsigned m_rememberedIndex = 0;
    unsigned m_rememberedVersion = 0;

    State m_state = State::BeforeFirst;
    NodeRef m_pCurrent;
};

// The list that childNodes gives. It is live: it shows the children as they are at each call.
class ChildList final : public DomObject<IXMLDOMNodeList> {
  public:
    explicit ChildList(Node& parent) noexcept : m_cursor(parent, parent.Children()) {}

    HRESULT STDMETHODCALLTYPE get_item(long index, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE get_length(long* pLength) override;
    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE reset() override;
    HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown** ppEnumerator) override;

  private:
    ChainCursor m_cursor;
};

// A list of nodes that were found once: what selectNodes and getElementsByTagName give. It keeps the nodes
// and does not follow later changes of the tree. Reading by index moves the place from which nextNode goes
// on.
class SelectedList final : public DomObject<IXMLDOMNodeList> {
  public:
    explicit SelectedList(std::vector<NodeRef> nodes) noexcept : m_nodes(std::move(nodes)) {}

    HRESULT STDMETHODCALLTYPE get_item(long index, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE get_length(long* pLength) override;
    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE reset() override;
    HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown** ppEnumerator) override;

  private:
    std::vector<NodeRef> m_nodes;
    std::size_t m_next = 0;
};

// The attributes of an element, namespace declarations included, in document order. It is live.
class NamedNodeMap final : public DomObject<IXMLDOMNamedNodeMap> {
  public:
    // The owner must have attributes.
    explicit NamedNodeMap(Node& owner) noexcept : m_cursor(owner, owner.Attributes()) {}

    HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode** ppNode) override;
    // Takes the place of the attribute of the same name; gives out the new attribute.
    HRESULT STDMETHODCALLTYPE setNamedItem(IXMLDOMNode* pNew, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE removeNamedItem(BSTR name, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE get_item(long index, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE get_length(long* pLength) override;
    HRESULT STDMETHODCALLTYPE getQualifiedItem(BSTR baseName, BSTR uri, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE removeQualifiedItem(BSTR baseName, BSTR uri, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE reset() override;
    HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown** ppEnumerator) override;

  private:
    [[nodiscard]] Node* Find(BSTR name) const noexcept;
    [[nodiscard]] Node* Find(BSTR baseName, BSTR uri) const noexcept;

    ChainCursor m_cursor;
};

}  // namespace devkit::msxml
