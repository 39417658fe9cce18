#include "devkit/msxml/chaincursor.h"

namespace devkit::msxml {

// Puts the remembered place to whichever of the first node, the last and the old place is nearest to the
// index.
void ChainCursor::Start(std::size_t index) noexcept {
    const std::size_t last = m_chain.count - 1;
    std::size_t distance = index < last - index ? index : last - index;
    if (m_pRemembered != nullptr && m_rememberedVersion == m_chain.version) {
        const std::size_t fromOld =
            index > m_rememberedIndex ? index - m_rememberedIndex : m_rememberedIndex - index;
        if (fromOld <= distance) return;
    }
    const bool fromFirst = index == distance;
    m_pRemembered = fromFirst ? m_chain.pFirst : m_chain.pLast;
    m_rememberedIndex = fromFirst ? 0 : last;
    m_rememberedVersion = m_chain.version;
}

Node* ChainCursor::At(long index) noexcept {
    if (index < 0 || static_cast<std::size_t>(index) >= m_chain.count) return nullptr;
    const auto wanted = static_cast<std::size_t>(index);
    Start(wanted);
    for (; m_rememberedIndex < wanted; ++m_rememberedIndex) m_pRemembered = m_pRemembered->Next();
    for (; m_rememberedIndex > wanted; --m_rememberedIndex) m_pRemembered = m_pRemembered->Previous();
    return m_pRemembered;
}

Node* ChainCursor::Next() noexcept {
    Node* pNext = nullptr;
    if (m_state == State::BeforeFirst) {
        pNext = m_chain.pFirst;
    } else if (m_state == State::AtNode && m_pCurrent->Parent() == m_pOwner.Get()) {
        pNext = m_pCurrent->Next();
    }
    m_state = pNext != nullptr ? State::AtNode : State::AtEnd;
    m_pCurrent = NodeRef(pNext);
    return pNext;
}

void ChainCursor::Reset() noexcept {
    m_state = State::BeforeFirst;
    m_pCurrent.Reset();
}

}  // namespace devkit::msxml
