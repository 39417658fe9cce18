#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "devkit/common/storage.h"

namespace devkit::common {

// Bytes that something is to hold, in memory or wherever their source has them. They never change; copies
// share them.
class Content {
  public:
    Content(std::string bytes) : Content(std::make_shared<const std::string>(std::move(bytes))) {}
    Content(const char* pText) : Content(std::string(pText)) {}
    Content(std::shared_ptr<const std::string> bytes)
        : m_source(std::make_shared<MemorySource>(std::move(bytes))) {}
    explicit Content(std::shared_ptr<ByteSource> source) : m_source(std::move(source)) {}

    [[nodiscard]] std::uint64_t Size() const { return m_source->Size(); }
    [[nodiscard]] ByteSource& Source() const noexcept { return *m_source; }
    // Throws StorageError when the source cannot be read.
    [[nodiscard]] std::string Read() const;

  private:
    std::shared_ptr<ByteSource> m_source;
};

}  // namespace devkit::common
