#pragma once

#include <zip.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "devkit/common/storage.h"

namespace devkit::package {

// An archive that is given up, not written, when its owner goes.
struct ZipDiscard {
    void operator()(zip_t* pZip) const noexcept { zip_discard(pZip); }
};
using ZipPtr = std::unique_ptr<zip_t, ZipDiscard>;

struct ZipFileClose {
    void operator()(zip_file_t* pFile) const noexcept { zip_fclose(pFile); }
};
using ZipFilePtr = std::unique_ptr<zip_file_t, ZipFileClose>;

struct ZipSourceFree {
    void operator()(zip_source_t* pSource) const noexcept { zip_source_free(pSource); }
};
using ZipSourcePtr = std::unique_ptr<zip_source_t, ZipSourceFree>;

// An error record of libzip, released when it goes.
class ZipError {
  public:
    ZipError() noexcept { zip_error_init(&m_error); }
    ZipError(const ZipError&) = delete;
    ZipError& operator=(const ZipError&) = delete;
    ~ZipError() { zip_error_fini(&m_error); }

    [[nodiscard]] zip_error_t* Get() noexcept { return &m_error; }

  private:
    zip_error_t m_error{};
};

// Lets libzip read from a common::ByteSource and, with a sink, write the changed archive there instead of
// over what it read. Exceptions of the storage are kept from libzip's C code; TakeFailure() tells of the
// first one. It must outlive every zip_t that uses it.
class ZipSource {
  public:
    // Both are borrowed; the sink may be null.
    ZipSource(common::ByteSource& source, common::ByteSink* pSink) noexcept
        : m_source(source), m_pSink(pSink) {}
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

    common::ByteSource& m_source;
    common::ByteSink* m_pSink;
    std::uint64_t m_readPosition = 0;
    std::uint64_t m_writePosition = 0;
    std::uint64_t m_written = 0;
    std::optional<std::uint64_t> m_readable;
    bool m_limitReached = false;
    std::string m_failure;
    zip_error_t m_error{};
};

}  // namespace devkit::package
