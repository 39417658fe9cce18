#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace devkit::common {

// Where bytes are read from. Failures are exceptions of any std kind; their text ends up in an Error.
class ByteSource {
  public:
    virtual ~ByteSource() = default;
    [[nodiscard]] virtual std::uint64_t Size() const = 0;
    // Reads up to `size` bytes from `offset`; fewer only at the end. Returns how many.
    virtual std::size_t ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size) = 0;
};

// Where bytes are written to. What was written may be overwritten; there are no gaps.
class ByteSink {
  public:
    virtual ~ByteSink() = default;
    virtual void WriteAt(std::uint64_t offset, const void* pBytes, std::size_t size) = 0;
};

// Bytes in memory as a source, and a sink into memory.
class MemorySource final : public ByteSource {
  public:
    explicit MemorySource(std::shared_ptr<const std::string> bytes) : m_bytes(std::move(bytes)) {}

    [[nodiscard]] std::uint64_t Size() const override { return m_bytes->size(); }
    std::size_t ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size) override {
        if (offset >= m_bytes->size()) return 0;
        return m_bytes->copy(static_cast<char*>(pBuffer), size, static_cast<std::size_t>(offset));
    }

  private:
    const std::shared_ptr<const std::string> m_bytes;
};

class MemorySink final : public ByteSink {
  public:
    void WriteAt(std::uint64_t offset, const void* pBytes, std::size_t size) override {
        const auto start = static_cast<std::size_t>(offset);
        if (m_bytes.size() < start + size) m_bytes.resize(start + size);
        m_bytes.replace(start, size, static_cast<const char*>(pBytes), size);
    }
    [[nodiscard]] std::string Take() noexcept { return std::move(m_bytes); }

  private:
    std::string m_bytes;
};

}  // namespace devkit::common
