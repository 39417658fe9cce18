#include "devkit/filterhost/reportfile.h"

#include "platform/windows.h"

#include <stdexcept>
#include <system_error>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/filterhost/exitstatus.h"

namespace devkit::filterhost {
namespace {

// Whether the file can appear as a whole; a device, say, is only written to.
bool IsReplaceable(const std::filesystem::path& path) {
    std::error_code ignored;
    return !std::filesystem::exists(path, ignored) || std::filesystem::is_regular_file(path, ignored);
}

}  // namespace

ReportFile::ReportFile(std::filesystem::path path, std::string option, std::string_view head,
                       std::string_view end)
    : m_path(std::move(path)), m_option(std::move(option)), m_end(end) {
    const std::string text = std::string(head) + m_end;
    const bool isReplaced = IsReplaceable(m_path);
    try {
        if (isReplaced) common::SaveFile(m_path, text);
    } catch (const common::Error& failure) {
        throw UsageError(m_option + ": " + failure.what());
    }
    m_file.Reset(CreateFileW(m_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!m_file.IsOpen()) {
        const std::error_code code(static_cast<int>(GetLastError()), std::system_category());
        throw UsageError(m_option + ": cannot be written: " + code.message() + ", " +
                         common::PathText(m_path));
    }
    if (!isReplaced) Write(0, text);
    m_size = text.size();
}

void ReportFile::Add(std::string_view text) {
    Write(m_size - m_end.size(), std::string(text) + m_end);
    m_size += text.size();
}

void ReportFile::ReplaceHead(std::string_view head) { Write(0, head); }

void ReportFile::Write(std::uint64_t offset, std::string_view text) try {
    m_file.WriteAt(offset, text);
} catch (const std::runtime_error& failure) {
    PutBack();
    throw UsageError(m_option + ": " + failure.what() + ", " + common::PathText(m_path));
}

// The end to where it was, for which there is room, and nothing behind it.
void ReportFile::PutBack() noexcept {
    if (m_size < m_end.size()) return;
    LARGE_INTEGER size;
    size.QuadPart = static_cast<LONGLONG>(m_size);
    try {
        m_file.WriteAt(m_size - m_end.size(), m_end);
    } catch (const std::runtime_error&) {
        // Nothing more can be done for it.
        return;
    }
    if (SetFilePointerEx(m_file.Get(), size, nullptr, FILE_BEGIN)) SetEndOfFile(m_file.Get());
}

}  // namespace devkit::filterhost
