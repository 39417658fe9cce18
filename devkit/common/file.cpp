#include "devkit/common/file.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "devkit/common/error.h"

namespace devkit::common {

namespace {

// Small reads and writes of the file come and go in blocks of this size.
constexpr std::size_t kBlock = std::size_t{1} << 18;

// One call moves at most this much, so that a size never exceeds what a DWORD holds.
constexpr std::size_t kMostPerCall = std::size_t{1} << 26;

std::string Reason(const std::error_code& code) {
    std::string text = code.message();
    text.erase(text.find_last_not_of("\r\n. ") + 1);
    return text;
}

std::string Reason(std::string_view what, DWORD code) {
    return std::string(what) + ": " + Reason(std::error_code(static_cast<int>(code), std::system_category()));
}

OVERLAPPED At(std::uint64_t offset) {
    OVERLAPPED position{};
    position.Offset = static_cast<DWORD>(offset);
    position.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return position;
}

std::size_t ReadFrom(HANDLE file, std::uint64_t offset, char* pBuffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        OVERLAPPED position = At(offset + done);
        DWORD count = 0;
        const auto wanted = static_cast<DWORD>(std::min(size - done, kMostPerCall));
        if (!ReadFile(file, pBuffer + done, wanted, &count, &position)) {
            const DWORD code = GetLastError();
            if (code == ERROR_HANDLE_EOF) break;
            throw std::runtime_error(Reason("cannot be read", code));
        }
        if (count == 0) break;
        done += count;
    }
    return done;
}

// Whether the system is to delete the file when it is closed, by whomever.
bool SetDoomed(HANDLE file, bool isDoomed) noexcept {
    FILE_DISPOSITION_INFO disposition{static_cast<BOOLEAN>(isDoomed)};
    return SetFileInformationByHandle(file, FileDispositionInfo, &disposition, sizeof(disposition)) != FALSE;
}

}  // namespace

std::string PathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

void FileHandle::Close() noexcept {
    if (IsOpen()) CloseHandle(std::exchange(m_handle, INVALID_HANDLE_VALUE));
}

void FileHandle::WriteAt(std::uint64_t offset, std::string_view bytes) const {
    std::size_t done = 0;
    while (done < bytes.size()) {
        OVERLAPPED position = At(offset + done);
        DWORD count = 0;
        const auto wanted = static_cast<DWORD>(std::min(bytes.size() - done, kMostPerCall));
        if (!WriteFile(m_handle, bytes.data() + done, wanted, &count, &position))
            throw std::runtime_error(Reason("cannot be written", GetLastError()));
        if (count == 0) throw std::runtime_error("cannot be written: nothing is taken");
        done += count;
    }
}

FileSource::FileSource(const std::filesystem::path& path)
    : m_file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {
    LARGE_INTEGER size{};
    if (!m_file.IsOpen() || !GetFileSizeEx(m_file.Get(), &size))
        throw Error(Reason("cannot be opened", GetLastError()), PathText(path));
    m_size = static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t FileSource::ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size) {
    if (offset >= m_size) return 0;
    char* const pBytes = static_cast<char*>(pBuffer);
    if (size >= kBlock) return ReadFrom(m_file.Get(), offset, pBytes, size);
    size = static_cast<std::size_t>(std::min<std::uint64_t>(size, m_size - offset));
    if (offset < m_blockStart || offset + size > m_blockStart + m_block.size()) {
        // What is in the block when the reading fails is nothing.
        m_blockStart = m_size;
        m_block.resize(kBlock);
        m_block.resize(ReadFrom(m_file.Get(), offset, m_block.data(), kBlock));
        m_blockStart = offset;
    }
    return m_block.copy(pBytes, size, static_cast<std::size_t>(offset - m_blockStart));
}

TemporaryFile::TemporaryFile() {
    static std::atomic<unsigned> s_number = 0;
    std::error_code failure;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
    if (failure) throw StorageError("there is no folder for temporary files: " + Reason(failure));
    const std::string name = "filterhost-" + std::to_string(GetCurrentProcessId()) + "-";
    m_path = folder / (name + std::to_string(++s_number) + ".tmp");
    // One that a process of the same number left behind in a crash of the system may be there.
    m_file.Reset(CreateFileW(m_path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_DELETE, nullptr,
                             CREATE_ALWAYS, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!m_file.IsOpen()) throw StorageError(Reason("cannot be made", GetLastError()), PathText(m_path));
}

std::size_t TemporaryFile::ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size) {
    char* const pBytes = static_cast<char*>(pBuffer);
    std::size_t done = 0;
    if (offset < m_written) {
        done = static_cast<std::size_t>(std::min<std::uint64_t>(size, m_written - offset));
        if (ReadFrom(m_file.Get(), offset, pBytes, done) != done)
            throw StorageError("is cut off", PathText(m_path));
    }
    const std::uint64_t place = offset + done - m_written;
    if (done == size || place >= m_block.size()) return done;
    return done + m_block.copy(pBytes + done, size - done, static_cast<std::size_t>(place));
}

void TemporaryFile::Append(const void* pBytes, std::size_t size) try {
    if (m_block.size() + size > kBlock) {
        m_file.WriteAt(m_written, m_block);
        m_written += m_block.size();
        m_block.clear();
    }
    if (size <= kBlock) {
        m_block.append(static_cast<const char*>(pBytes), size);
        return;
    }
    m_file.WriteAt(m_written, {static_cast<const char*>(pBytes), size});
    m_written += size;
} catch (const std::runtime_error& failure) {
    throw StorageError(failure.what(), PathText(m_path));
}

OutputFile::OutputFile(const std::filesystem::path& path) : m_path(std::filesystem::absolute(path)) {
    static std::atomic<unsigned> s_number = 0;
    DWORD code = ERROR_FILE_EXISTS;
    for (int attempt = 0; attempt < 100 && code == ERROR_FILE_EXISTS; ++attempt) {
        std::filesystem::path temporary = m_path;
        temporary += "." + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++s_number) + ".tmp";
        m_file.Reset(CreateFileW(temporary.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                 FILE_ATTRIBUTE_NORMAL, nullptr));
        if (m_file.IsOpen() && SetDoomed(m_file.Get(), true)) return;
        code = GetLastError();
        if (!m_file.IsOpen()) continue;
        m_file.Close();
        DeleteFileW(temporary.c_str());
    }
    throw Error(Reason("cannot be written", code), PathText(path));
}

void OutputFile::WriteAt(std::uint64_t offset, const void* pBytes, std::size_t size) try {
    const char* const pText = static_cast<const char*>(pBytes);
    const bool joins = offset >= m_blockStart && offset <= m_blockStart + m_block.size();
    if (!joins || offset - m_blockStart + size > kBlock) Flush();
    if (size > kBlock) {
        m_file.WriteAt(offset, {pText, size});
        return;
    }
    if (m_block.empty()) m_blockStart = offset;
    const auto place = static_cast<std::size_t>(offset - m_blockStart);
    m_block.replace(place, std::min(size, m_block.size() - place), pText, size);
} catch (const std::runtime_error& failure) {
    throw StorageError(failure.what(), PathText(m_path));
}

void OutputFile::Flush() {
    m_file.WriteAt(m_blockStart, m_block);
    m_block.clear();
}

void OutputFile::Commit() {
    try {
        Flush();
    } catch (const std::runtime_error& failure) {
        throw StorageError(failure.what(), PathText(m_path));
    }
    const bool isKept = SetDoomed(m_file.Get(), false) && Rename();
    const DWORD code = GetLastError();
    if (!isKept) SetDoomed(m_file.Get(), true);
    m_file.Close();
    if (!isKept) throw Error(Reason("cannot be written", code), PathText(m_path));
}

bool OutputFile::Rename() const {
    const std::wstring& name = m_path.native();
    // The name follows the structure's last member, which has room for its first character.
    std::vector<char> memory(sizeof(FILE_RENAME_INFO) + name.size() * sizeof(wchar_t));
    auto* const pInfo = reinterpret_cast<FILE_RENAME_INFO*>(memory.data());
    pInfo->ReplaceIfExists = TRUE;
    pInfo->FileNameLength = static_cast<DWORD>(name.size() * sizeof(wchar_t));
    name.copy(pInfo->FileName, name.size());
    return SetFileInformationByHandle(m_file.Get(), FileRenameInfo, pInfo,
                                      static_cast<DWORD>(memory.size())) != FALSE;
}

void SaveFile(const std::filesystem::path& path, std::string_view bytes) {
    OutputFile file(path);
    file.WriteAt(0, bytes.data(), bytes.size());
    file.Commit();
}

}  // namespace devkit::common
