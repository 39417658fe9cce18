#include "devkit/package/zipwriter.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <memory>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/package/deflater.h"
#include "devkit/package/zipsource.h"

namespace devkit::package {

namespace {

// 1 January 1980, so that the same input gives the same output.
constexpr zip_uint16_t kEarliestDate = (1 << 5) | 1;

class ContentReader;

// What the readers of all entries share, as libzip takes one entry after the other.
struct Turns {
    Deflater deflater;
    const ContentReader* pWhole = nullptr;  // all of it was read, and the compressor knows what came of it
    std::string failure;                    // the first one
    ZipError error;
};

// Lets libzip read what an entry is to hold, when its turn comes, compressed. There is one for each entry
// that is written, until all are.
class ContentReader {
  public:
    // `turns` outlives the archive.
    ContentReader(common::Content content, Turns& turns) : m_content(std::move(content)), m_turns(turns) {}

    static zip_int64_t Callback(void* pSelf, void* pData, zip_uint64_t length, zip_source_cmd_t command) {
        auto* const pReader = static_cast<ContentReader*>(pSelf);
        if (command != ZIP_SOURCE_FREE) return pReader->Handle(pData, length, command);
        delete pReader;
        return 0;
    }

  private:
    zip_int64_t Handle(void* pData, zip_uint64_t length, zip_source_cmd_t command) noexcept {
        switch (command) {
            case ZIP_SOURCE_SUPPORTS:
                return zip_source_make_command_bitmap(ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE,
                                                      ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR, ZIP_SOURCE_FREE, -1);
            case ZIP_SOURCE_OPEN:
                m_turns.pWhole = nullptr;
                m_turns.deflater.Begin(m_content.Source());
                return 0;
            case ZIP_SOURCE_READ:
                return Read(pData, static_cast<std::size_t>(length));
            case ZIP_SOURCE_STAT:
                Describe(*static_cast<zip_stat_t*>(pData));
                return sizeof(zip_stat_t);
            case ZIP_SOURCE_ERROR:
                return zip_error_to_data(m_turns.error.Get(), pData, length);
            default:
                return 0;
        }
    }

    // The checksum and the compressed size are known, and asked for, once all has been read.
    void Describe(zip_stat_t& stat) const noexcept {
        zip_stat_init(&stat);
        stat.valid = ZIP_STAT_SIZE | ZIP_STAT_COMP_METHOD;
        stat.size = m_content.Size();
        stat.comp_method = ZIP_CM_DEFLATE;
        if (m_turns.pWhole != this) return;
        const Deflated& result = m_turns.deflater.Result();
        stat.valid |= ZIP_STAT_CRC | ZIP_STAT_COMP_SIZE;
        stat.size = result.size;
        stat.crc = result.crc;
        stat.comp_size = result.compressedSize;
    }

    zip_int64_t Read(void* pData, std::size_t length) noexcept {
        try {
            const std::size_t count = m_turns.deflater.Read(pData, length);
            if (count == 0) m_turns.pWhole = this;
            return static_cast<zip_int64_t>(count);
        } catch (const std::exception& failure) {
            if (m_turns.failure.empty()) m_turns.failure = failure.what();
            zip_error_set(m_turns.error.Get(), ZIP_ER_READ, EIO);
            return -1;
        }
    }

    const common::Content m_content;
    Turns& m_turns;
};

class Writer {
  public:
    Writer(const ZipArchive& archive, common::ByteSink& sink)
        : m_archive(archive), m_source(archive.Source(), &sink) {
        ZipError error;
        m_zip.reset(m_source.Open(error.Get()));
        if (!m_zip) Fail(error.Get());
    }

    // The edit goes at the end of it: libzip's own list of it is needed from then on, and not both.
    void Apply(ZipEdit edit) {  // NOLINT(performance-unnecessary-value-param)
        for (const std::size_t index : edit.removed) Check(zip_delete(m_zip.get(), index));
        for (const ZipEdit::Replacement& replacement : edit.replaced) Replace(replacement);
        for (const ZipEdit::Addition& addition : edit.added) Add(addition);
    }

    void Close() {
        Check(zip_close(m_zip.get()));
        // A successful zip_close has released the archive.
        static_cast<void>(m_zip.release());
    }

  private:
    [[noreturn]] void Fail(zip_error_t* pError) {
        std::string failure = m_source.TakeFailure();
        if (failure.empty()) failure = std::exchange(m_turns.failure, {});
        if (!failure.empty()) throw common::StorageError("cannot be copied: " + failure, m_archive.Where());
        throw common::Error("cannot be copied: " + std::string(zip_error_strerror(pError)),
                            m_archive.Where());
    }
    void Check(zip_int64_t result) {
        if (result < 0) Fail(zip_get_error(m_zip.get()));
    }

    ZipSourcePtr SourceOf(const common::Content& bytes) {
        auto reader = std::make_unique<ContentReader>(bytes, m_turns);
        ZipSourcePtr source(zip_source_function(m_zip.get(), &ContentReader::Callback, reader.get()));
        if (!source) Fail(zip_get_error(m_zip.get()));
        // The source frees it.
        static_cast<void>(reader.release());
        return source;
    }

    void Replace(const ZipEdit::Replacement& replacement) {
        // libzip takes the date of a replacement from the clock unless it is set.
        zip_stat_t stat;
        Check(zip_stat_index(m_zip.get(), replacement.index, 0, &stat));
        ZipSourcePtr source = SourceOf(replacement.bytes);
        Check(zip_file_replace(m_zip.get(), replacement.index, source.get(), 0));
        static_cast<void>(source.release());
        Check(zip_file_set_mtime(m_zip.get(), replacement.index, stat.mtime, 0));
        Check(zip_set_file_compression(m_zip.get(), replacement.index, ZIP_CM_DEFLATE, 0));
        if (m_archive.Entries()[replacement.index].encrypted)
            Check(zip_file_set_encryption(m_zip.get(), replacement.index, ZIP_EM_NONE, nullptr));
        if (replacement.newName)
            Check(zip_file_rename(m_zip.get(), replacement.index, replacement.newName->c_str(),
                                  ZIP_FL_ENC_UTF_8));
    }

    void Add(const ZipEdit::Addition& addition) {
        ZipSourcePtr source = SourceOf(addition.bytes);
        const zip_int64_t index =
            zip_file_add(m_zip.get(), addition.name.c_str(), source.get(), ZIP_FL_ENC_UTF_8);
        Check(index);
        static_cast<void>(source.release());
        const auto added = static_cast<zip_uint64_t>(index);
        Check(zip_file_set_dostime(m_zip.get(), added, 0, kEarliestDate, 0));
        Check(zip_set_file_compression(m_zip.get(), added, ZIP_CM_DEFLATE, 0));
    }

    const ZipArchive& m_archive;
    ZipSource m_source;  // outlives m_zip
    Turns m_turns;
    ZipPtr m_zip;
};

void Copy(const ZipArchive& archive, common::ByteSink& sink) {
    std::array<char, 65'536> block;
    std::uint64_t offset = 0;
    while (const std::size_t count = archive.Source().ReadAt(offset, block.data(), block.size())) {
        sink.WriteAt(offset, block.data(), count);
        offset += count;
    }
}

}  // namespace

void WriteZip(const ZipArchive& archive, ZipEdit edit, common::ByteSink& sink) {
    if (edit.IsEmpty()) {
        try {
            Copy(archive, sink);
        } catch (const std::exception& failure) {
            throw common::StorageError("cannot be copied: " + std::string(failure.what()), archive.Where());
        }
        return;
    }
    // The writer has a list of its own, and two are not needed at a time.
    archive.Rest();
    Writer writer(archive, sink);
    writer.Apply(std::move(edit));
    writer.Close();
}

}  // namespace devkit::package
