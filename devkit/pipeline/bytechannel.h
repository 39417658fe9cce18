#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

#include "devkit/pipeline/streams.h"

namespace devkit::pipeline {

// Hands bytes from the write stream of one filter to the read stream of the next as they are written. Who
// writes waits while the reader is far behind, unless the reader itself waits for the end. All bytes are
// kept, because the reader may go back. Any thread may call.
class ByteChannel final : public ReadableBytes, public WritableBytes {
  public:
    explicit ByteChannel(std::uint64_t ahead = std::uint64_t{4} << 20) : m_ahead(ahead) {}

    // The end, once it is known; where the writing was cut off, what there is.
    [[nodiscard]] std::uint64_t Size() override;
    // Waits for the first byte from `offset` on.
    std::size_t ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size, bool& isEnd) override;

    void Append(const void* pBytes, std::size_t size) override;
    void Close() override;
    [[nodiscard]] bool IsClosed() const override;
    // Cuts off who waits at either end.
    void Abandon();

    // All that was written, once it is closed; null before.
    [[nodiscard]] Bytes Written() const;

  private:
    const std::uint64_t m_ahead;
    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    std::string m_bytes;
    std::uint64_t m_read = 0;  // where the reader has come to
    bool m_wantsEnd = false;   // the reader waits for the end
    bool m_closed = false;
    bool m_abandoned = false;
};

}  // namespace devkit::pipeline
