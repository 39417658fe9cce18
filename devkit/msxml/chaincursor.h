#pragma once

#include <cstddef>

#include "devkit/msxml/node.h"

namespace devkit::msxml {

// Reads the children or the attributes of a node: by index, with the last place remembered, so that a walk by
// index costs no more than a walk by links; and one by one for nextNode.
class ChainCursor {
  public:
    // Keeps the owner. The chain must be one of the owner's.
    ChainCursor(Node& owner, const NodeChain& chain) noexcept : m_pOwner(&owner), m_chain(chain) {}

    [[nodiscard]] Node& Owner() const noexcept { return *m_pOwner.Get(); }
    [[nodiscard]] std::size_t Count() const noexcept { return m_chain.count; }
    // Null when there is no node of that index.
    [[nodiscard]] Node* At(long index) noexcept;

    // The first node, then each one's follower; null behind the last and from then on until Reset. Null as
    // well once the node that was given last has left its place.
    [[nodiscard]] Node* Next() noexcept;
    void Reset() noexcept;

  private:
    enum class State { BeforeFirst, AtNode, AtEnd };

    void Start(std::size_t index) noexcept;

    NodeRef m_pOwner;
    const NodeChain& m_chain;

    // The remembered place, good while the chain has this version.
    Node* m_pRemembered = nullptr;
    std::size_t m_rememberedIndex = 0;
    unsigned m_rememberedVersion = 0;

    State m_state = State::BeforeFirst;
    NodeRef m_pCurrent;
};

}  // namespace devkit::msxml
