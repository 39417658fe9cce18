#include "devkit/package/zipsource.h"

#include <algorithm>
#include <cerrno>
#include <exception>

namespace devkit::package {

ZipSource::~ZipSource() { zip_error_fini(&m_error); }

zip_t* ZipSource::Open(zip_error_t* pError) {
    zip_source_t* const pSource = zip_source_function_create(&Callback, this, pError);
    if (pSource == nullptr) return nullptr;
    zip_t* const pZip = zip_open_from_source(pSource, 0, pError);
    if (pZip == nullptr) zip_source_free(pSource);
    return pZip;
}

zip_int64_t ZipSource::Callback(void* pSelf, void* pData, zip_uint64_t length, zip_source_cmd_t command) {
    auto& self = *static_cast<ZipSource*>(pSelf);
    try {
        return self.Handle(pData, length, command);
    } catch (const std::exception& failure) {
        if (self.m_failure.empty()) self.m_failure = failure.what();
        const bool writing = command == ZIP_SOURCE_WRITE;
        zip_error_set(&self.m_error, writing ? ZIP_ER_WRITE : ZIP_ER_READ, EIO);
        return -1;
    }
}

zip_int64_t ZipSource::Handle(void* pData, zip_uint64_t length, zip_source_cmd_t command) {
    switch (command) {
        case ZIP_SOURCE_SUPPORTS:
            return m_pSink == nullptr ? ZIP_SOURCE_SUPPORTS_SEEKABLE : ZIP_SOURCE_SUPPORTS_WRITABLE;
        case ZIP_SOURCE_OPEN:
            m_readPosition = 0;
            return 0;
        case ZIP_SOURCE_READ:
            return Read(pData, length);
        case ZIP_SOURCE_SEEK:
            return Seek(m_readPosition, m_source.Size(), pData, length);
        case ZIP_SOURCE_TELL:
            return static_cast<zip_int64_t>(m_readPosition);
        case ZIP_SOURCE_STAT:
            return Stat(pData);
        case ZIP_SOURCE_ERROR:
            return zip_error_to_data(&m_error, pData, length);
        case ZIP_SOURCE_WRITE:
            return Write(pData, length);
        case ZIP_SOURCE_SEEK_WRITE:
            return Seek(m_writePosition, m_written, pData, length);
        case ZIP_SOURCE_TELL_WRITE:
            return static_cast<zip_int64_t>(m_writePosition);
        case ZIP_SOURCE_CLOSE:
        case ZIP_SOURCE_FREE:
        case ZIP_SOURCE_BEGIN_WRITE:
        case ZIP_SOURCE_COMMIT_WRITE:
        case ZIP_SOURCE_ROLLBACK_WRITE:
        case ZIP_SOURCE_REMOVE:
            return 0;
        default:
            zip_error_set(&m_error, ZIP_ER_OPNOTSUPP, 0);
            return -1;
    }
}

zip_int64_t ZipSource::Read(void* pData, zip_uint64_t length) {
    if (m_readable) {
        if (length > *m_readable) {
            m_limitReached = true;
            zip_error_set(&m_error, ZIP_ER_READ, EFBIG);
            return -1;
        }
        *m_readable -= length;
    }
    const std::size_t count = m_source.ReadAt(m_readPosition, pData, static_cast<std::size_t>(length));
    m_readPosition += count;
    return static_cast<zip_int64_t>(count);
}

zip_int64_t ZipSource::Write(const void* pData, zip_uint64_t length) {
    m_pSink->WriteAt(m_writePosition, pData, static_cast<std::size_t>(length));
    m_writePosition += length;
    m_written = std::max(m_written, m_writePosition);
    return static_cast<zip_int64_t>(length);
}

zip_int64_t ZipSource::Seek(std::uint64_t& position, std::uint64_t size, void* pData, zip_uint64_t length) {
    const zip_int64_t target = zip_source_seek_compute_offset(position, size, pData, length, &m_error);
    if (target < 0) return -1;
    position = static_cast<std::uint64_t>(target);
    return 0;
}

zip_int64_t ZipSource::Stat(void* pData) {
    auto& stat = *static_cast<zip_stat_t*>(pData);
    zip_stat_init(&stat);
    stat.valid = ZIP_STAT_SIZE;
    stat.size = m_source.Size();
    return sizeof(stat);
}

}  // namespace devkit::package
