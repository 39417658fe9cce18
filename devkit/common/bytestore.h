#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

#include "devkit/common/content.h"
#include "devkit/common/file.h"

namespace devkit::common {

// Keeps bytes for later: so much of them in memory, the rest in a temporary file. What it gives lives without
// it. Any thread may use it.
class ByteStore {
  public:
    static constexpr std::size_t kInMemory = std::size_t{4} << 20;

    explicit ByteStore(std::size_t inMemory = kInMemory) : m_inMemory(inMemory) {}

    // Throws StorageError when the temporary file cannot be written.
    [[nodiscard]] Content Keep(const std::shared_ptr<const std::string>& bytes);

  private:
    struct File;

    std::mutex m_lock;
    std::size_t m_inMemory;  // that may still be kept there
    std::shared_ptr<File> m_file;
};

}  // namespace devkit::common
