#include "devkit/package/ziparchive.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/package/zipsource.h"

namespace devkit::package {

namespace {

// libzip's words as part of a sentence.
std::string Lowered(const char* text) {
    std::string words = text;
    if (!words.empty()) words[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(words[0])));
    return words;
}

[[noreturn]] void FailToOpen(ZipSource& source, zip_error_t* pError, const std::string& where) {
    if (source.LimitWasReached()) throw common::Error("the list of its entries is too large", where);
    const std::string failure = source.TakeFailure();
    if (!failure.empty()) throw common::StorageError(failure, where);
    if (zip_error_code_zip(pError) == ZIP_ER_NOZIP) throw common::Error("is not a zip archive", where);
    throw common::Error("is a broken zip archive (" + Lowered(zip_error_strerror(pError)) + ")", where);
}

std::string Explain(zip_error_t* pError) {
    switch (zip_error_code_zip(pError)) {
        case ZIP_ER_CRC:
            return "its checksum is wrong";
        case ZIP_ER_INCONS:
        case ZIP_ER_EOF:
            return "its data is not as long as the archive says";
        case ZIP_ER_ZLIB:
        case ZIP_ER_COMPRESSED_DATA:
            return "its compressed data is broken";
        default:
            return "cannot be read (" + Lowered(zip_error_strerror(pError)) + ")";
    }
}

[[noreturn]] void FailToRead(ZipSource& source, zip_error_t* pError, const std::string& entry) {
    const std::string failure = source.TakeFailure();
    if (!failure.empty()) throw common::StorageError(failure, entry);
    throw common::Error(Explain(pError), entry);
}

// How long the entry's data can really be, whatever the archive says: deflate shortens to a 1,032nd at most.
std::uint64_t MostInflated(const ZipEntry& entry) {
    return std::min(entry.size, entry.compressedSize * 1'032 + 1'032);
}

ZipEntry Describe(zip_t* pZip, std::size_t index, const std::string& where) {
    zip_stat_t stat;
    if (zip_stat_index(pZip, index, ZIP_FL_ENC_GUESS, &stat) != 0)
        throw common::Error("entry " + std::to_string(index) + " cannot be read", where);
    ZipEntry entry;
    entry.size = stat.size;
    entry.compressedSize = stat.comp_size;
    entry.encrypted = stat.encryption_method != ZIP_EM_NONE;
    entry.deflated = stat.comp_method == ZIP_CM_DEFLATE;
    entry.readable = !entry.encrypted && (entry.deflated || stat.comp_method == ZIP_CM_STORE);
    return entry;
}

}  // namespace

struct ZipArchive::Reader {
    explicit Reader(common::ByteSource& bytes) : source(bytes, nullptr) {}

    ZipSource source;  // outlives `zip`
    ZipPtr zip;
};

ZipArchive::ZipArchive(std::shared_ptr<common::ByteSource> source, std::string where,
                       const common::Limits& limits)
    : m_source(std::move(source)), m_where(std::move(where)), m_limits(limits) {
    // To libzip an empty file is an archive without entries.
    if (m_source->Size() == 0) throw common::Error("is not a zip archive", m_where);
    zip_t* const pZip = Awake().zip.get();
    const zip_int64_t count = zip_get_num_entries(pZip, 0);
    if (static_cast<std::uint64_t>(count) > limits.maxEntries)
        throw common::Error("has more than " + std::to_string(limits.maxEntries) + " entries", m_where);
    m_entries.reserve(static_cast<std::size_t>(count));
    std::uint64_t compressed = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        m_entries.push_back(Describe(pZip, i, m_where));
        const std::uint64_t size = m_entries.back().compressedSize;
        // The entries cannot fill more than the file unless they share bytes: a bomb without nesting.
        if (size > m_source->Size() - compressed)
            throw common::Error("its entries overlap or are cut off", m_where);
        compressed += size;
    }
}

ZipArchive::~ZipArchive() = default;

ZipArchive::Reader& ZipArchive::Awake() const {
    if (m_reader != nullptr) return *m_reader;
    auto reader = std::make_unique<Reader>(*m_source);
    ZipError error;
    reader->source.LimitReading(m_limits.maxDirectoryBytes);
    reader->zip.reset(reader->source.Open(error.Get()));
    if (!reader->zip) FailToOpen(reader->source, error.Get(), m_where);
    reader->source.LimitReading({});
    m_reader = std::move(reader);
    return *m_reader;
}

void ZipArchive::Rest() const noexcept { m_reader.reset(); }

std::string ZipArchive::NameOf(std::size_t index) const {
    const char* const pName = zip_get_name(Awake().zip.get(), index, ZIP_FL_ENC_GUESS);
    return pName == nullptr ? "entry " + std::to_string(index) : pName;
}

void ZipArchive::Read(std::size_t index, std::uint64_t most, std::string& bytes) const {
    const ZipEntry& entry = m_entries.at(index);
    if (entry.encrypted) throw common::Error("is encrypted", NameOf(index));
    if (!entry.readable)
        throw common::Error("is compressed in a way that packages do not use", NameOf(index));
    if (entry.size > most)
        throw common::Error("is larger than " + std::to_string(most) + " bytes", NameOf(index));

    Reader& reader = Awake();
    const ZipFilePtr file(zip_fopen_index(reader.zip.get(), index, 0));
    if (!file) FailToRead(reader.source, zip_get_error(reader.zip.get()), NameOf(index));
    const std::size_t before = bytes.size();
    bytes.reserve(before + static_cast<std::size_t>(MostInflated(entry)));
    std::array<char, 65'536> block;
    for (;;) {
        const zip_int64_t count = zip_fread(file.get(), block.data(), block.size());
        if (count < 0) FailToRead(reader.source, zip_file_get_error(file.get()), NameOf(index));
        if (count == 0) break;
        if (bytes.size() - before + static_cast<std::uint64_t>(count) > entry.size)
            throw common::Error("its data is longer than the archive says", NameOf(index));
        bytes.append(block.data(), static_cast<std::size_t>(count));
    }
    if (bytes.size() - before != entry.size)
        throw common::Error("its data is shorter than the archive says", NameOf(index));
}

}  // namespace devkit::package
