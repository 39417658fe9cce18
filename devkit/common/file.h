#pragma once

#include "platform/windows.h"

#include <filesystem>
#include <string>
#include <string_view>

#include "devkit/common/storage.h"

namespace devkit::common {

// The path as UTF-8, for messages.
[[nodiscard]] std::string PathText(const std::filesystem::path& path);

// An open file; closed when it goes.
class FileHandle {
  public:
    explicit FileHandle(HANDLE handle) noexcept : m_handle(handle) {}
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() { Close(); }

    [[nodiscard]] bool IsOpen() const noexcept { return m_handle != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE Get() const noexcept { return m_handle; }
    // Takes over another handle.
    void Reset(HANDLE handle) noexcept {
        Close();
        m_handle = handle;
    }
    void Close() noexcept;
    // Writes all of it, or throws std::runtime_error with the reason.
    void WriteAt(std::uint64_t offset, std::string_view bytes) const;

  private:
    HANDLE m_handle;
};

// A file that is read; it stays open. Small reads are served from a block that is kept.
class FileSource final : public ByteSource {
  public:
    // Throws Error when the file cannot be opened.
    explicit FileSource(const std::filesystem::path& path);

    [[nodiscard]] std::uint64_t Size() const override { return m_size; }
    std::size_t ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size) override;

  private:
    FileHandle m_file;
    std::uint64_t m_size = 0;
    std::string m_block;
    std::uint64_t m_blockStart = 0;
};

// A file of the system's folder for such, which goes with the object, and with the process however that ends.
// What is written follows what was written before.
class TemporaryFile final : public ByteSource {
  public:
    // Throws StorageError when there can be none.
    TemporaryFile();

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return m_path; }
    [[nodiscard]] std::uint64_t Size() const override { return m_written + m_block.size(); }
    std::size_t ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size) override;
    // Throws StorageError; what it was called with is then not in the file.
    void Append(const void* pBytes, std::size_t size);

  private:
    std::filesystem::path m_path;
    FileHandle m_file{INVALID_HANDLE_VALUE};
    std::uint64_t m_written = 0;
    std::string m_block;  // what follows, not yet in the file
};

// A file that appears under its name only when it is whole: what is written goes to a temporary file beside
// it, which Commit renames. Without Commit the system deletes it, also when the process is ended.
class OutputFile final : public ByteSink {
  public:
    // Throws Error when there can be no file beside `path`.
    explicit OutputFile(const std::filesystem::path& path);

    // Throws StorageError.
    void WriteAt(std::uint64_t offset, const void* pBytes, std::size_t size) override;
    // Puts the file in its place, instead of one that is there. Throws Error.
    void Commit();

  private:
    void Flush();
    [[nodiscard]] bool Rename() const;

    std::filesystem::path m_path;
    FileHandle m_file{INVALID_HANDLE_VALUE};
    std::string m_block;  // not yet in the file
    std::uint64_t m_blockStart = 0;
};

// An OutputFile with these bytes, committed.
void SaveFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace devkit::common
