#pragma once

#include <zip.h>

#include <memory>

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

}  // namespace devkit::package
