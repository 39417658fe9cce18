#pragma once

#include <cstddef>
#include <cstdint>

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

}  // namespace devkit::common
