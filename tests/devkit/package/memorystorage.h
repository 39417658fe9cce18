#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "devkit/common/storage.h"

namespace devkit::package {

// Counts calls and fails the one that it is told to; shared by a source and a sink.
class CallCounter {
  public:
    // The nth call fails, counted from 1; 0 for none.
    explicit CallCounter(unsigned failing = 0) : m_failing(failing) {}

    void Count() {
        if (++m_calls == m_failing) throw std::runtime_error("the disk is gone");
    }
    [[nodiscard]] unsigned Calls() const { return m_calls; }
    [[nodiscard]] bool HasFailed() const { return m_failing != 0 && m_calls >= m_failing; }

  private:
    unsigned m_failing;
    unsigned m_calls = 0;
};

// A package in memory.
class MemorySource final : public common::ByteSource {
  public:
    explicit MemorySource(std::string bytes, std::shared_ptr<CallCounter> counter = nullptr)
        : m_bytes(std::move(bytes)), m_counter(std::move(counter)) {}

    [[nodiscard]] std::uint64_t Size() const override { return m_bytes.size(); }
    std::size_t ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size) override {
        if (m_counter) m_counter->Count();
        if (offset >= m_bytes.size()) return 0;
        const std::size_t count = std::min(size, m_bytes.size() - static_cast<std::size_t>(offset));
        std::memcpy(pBuffer, m_bytes.data() + offset, count);
        m_read += count;
        return count;
    }
    [[nodiscard]] std::uint64_t BytesRead() const { return m_read; }

  private:
    std::string m_bytes;
    std::shared_ptr<CallCounter> m_counter;
    std::uint64_t m_read = 0;
};

class MemorySink final : public common::ByteSink {
  public:
    explicit MemorySink(std::shared_ptr<CallCounter> counter = nullptr) : m_counter(std::move(counter)) {}

    void WriteAt(std::uint64_t offset, const void* pBytes, std::size_t size) override {
        if (m_counter) m_counter->Count();
        const auto start = static_cast<std::size_t>(offset);
        if (bytes.size() < start + size) bytes.resize(start + size);
        std::memcpy(bytes.data() + start, pBytes, size);
    }

    std::string bytes;

  private:
    std::shared_ptr<CallCounter> m_counter;
};

}  // namespace devkit::package
