#pragma once

#include <zip.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "devkit/package/storage.h"

namespace devkit::package {

// Lets libzip read from a ByteSource and, with a sink, write the changed archive there instead of over what
// it read. Exceptions of the storage are kept from libzip's C code; TakeFailure() tells of the first one. It
// must outlive every zip_t that uses it.
class ZipSource {
  public:
    // Both are borrowed; the sink may be null.
    ZipSource(ByteSource& source, ByteSink* pSink) noexcept : m_source(source), m_pSink(pSink) {}
    ZipSource(const ZipSource&) = delete;
    ZipSource& operator=(const ZipSource&) = delete;
    ~ZipSource();

    // Opens the archive; null on failure, with libzip's reason in *pError.
    [[nodiscard]] zip_t* Open(zip_error_t* pError);

    // From now on reading fails once this much was read; unset lifts the limit.
    void LimitReading(std::optional<std::uint64_t> bytes) noexcept { m_readable = bytes; }
    [[nodiscard]] bool LimitWasReached() const noexcept { return m_limitReached; }
    // What the storage said when it failed since the last call; empty when it did not.
    [[nodiscard]] std::string TakeFailure() noexcept { return std::exchange(m_failure, {}); }

  private:
    static zip_int64_t Callback(void* pSelf, void* pData, zip_uint64_t length, zip_source_cmd_t command);
    zip_int64_t Handle(void* pData, zip_uint64_t length, zip_source_cmd_t command);
    zip_int64_t Read(void* pData, zip_uint64_t length);
    zip_int64_t Write(const void* pData, zip_uint64_t length);
    zip_int64_t Seek(std::uint64_t& position, std::uint64_t size, void* pData, zip_uint64_t length);
    zip_int64_t Stat(void* pData);

    ByteSource& m_source;
    ByteSink* m_pSink;
    std::uint64_t m_readPosition = 0;
    std::uint64_t m_writePosition = 0;
    std::uint64_t m_written = 0;
    std::optional<std::uint64_t> m_readable;
    bool m_limitReached = false;
    std::string m_failure;
    zip_error_t m_error{};
};

}  // namespace devkit::package
