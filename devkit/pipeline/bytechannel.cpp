#include "devkit/pipeline/bytechannel.h"

#include <algorithm>

namespace devkit::pipeline {

std::uint64_t ByteChannel::Size() {
    std::unique_lock guard(m_lock);
    m_wantsEnd = true;
    m_changed.notify_all();
    m_changed.wait(guard, [this] { return m_closed || m_abandoned; });
    return m_bytes.size();
}

std::size_t ByteChannel::ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size, bool& isEnd) {
    std::unique_lock guard(m_lock);
    m_read = std::max(m_read, offset);
    m_changed.notify_all();
    m_changed.wait(guard, [&] { return m_bytes.size() > offset || m_closed || m_abandoned; });
    const std::uint64_t left = offset < m_bytes.size() ? m_bytes.size() - offset : 0;
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
    if (count != 0) m_bytes.copy(static_cast<char*>(pBuffer), count, static_cast<std::size_t>(offset));
    m_read = std::max(m_read, offset + count);
    isEnd = (m_closed || m_abandoned) && offset + count >= m_bytes.size();
    m_changed.notify_all();
    return count;
}

void ByteChannel::Append(const void* pBytes, std::size_t size) {
    std::unique_lock guard(m_lock);
    m_changed.wait(
        guard, [this] { return m_bytes.size() < m_read + m_ahead || m_wantsEnd || m_closed || m_abandoned; });
    if (m_closed || m_abandoned) return;
    m_bytes.append(static_cast<const char*>(pBytes), size);
    m_changed.notify_all();
}

void ByteChannel::Close() {
    const std::lock_guard guard(m_lock);
    m_closed = true;
    m_changed.notify_all();
}

bool ByteChannel::IsClosed() const {
    const std::lock_guard guard(m_lock);
    return m_closed;
}

void ByteChannel::Abandon() {
    const std::lock_guard guard(m_lock);
    m_abandoned = true;
    m_changed.notify_all();
}

Bytes ByteChannel::Written() const {
    const std::lock_guard guard(m_lock);
    return m_closed ? std::make_shared<const std::string>(m_bytes) : nullptr;
}

}  // namespace devkit::pipeline
