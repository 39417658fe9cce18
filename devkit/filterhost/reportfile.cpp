#include "devkit/filterhost/reportfile.h"

#include "platform/windows.h"

#include <system_error>
#include <utility>

#include "devkit/filterhost/exitstatus.h"

namespace devkit::filterhost {
namespace {

[[noreturn]] void ThrowUnwritable(const std::string& option, const std::filesystem::path& path) {
    throw UsageError(option + ": " + common::PathText(path) + " cannot be written: " +
                     std::system_category().message(static_cast<int>(GetLastError())));
}

}  // namespace

ReportFile::ReportFile(std::filesystem::path path, std::string option, std::string_view head,
                       std::string_view end)
    : m_path(std::move(path)),
      m_option(std::move(option)),
      m_end(end),
      m_file(CreateFileW(m_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr)) {
    if (!m_file.IsOpen()) ThrowUnwritable(m_option, m_path);
    Write(FILE_BEGIN, 0, std::string(head) + m_end);
}

void ReportFile::Add(std::string_view text) {
    Write(FILE_END, -static_cast<LONGLONG>(m_end.size()), std::string(text) + m_end);
}

void ReportFile::ReplaceHead(std::string_view head) { Write(FILE_BEGIN, 0, head); }

void ReportFile::Write(DWORD from, LONGLONG offset, std::string_view text) {
    LARGE_INTEGER place;
    place.QuadPart = offset;
    DWORD written = 0;
    if (SetFilePointerEx(m_file.Get(), place, nullptr, from) &&
        WriteFile(m_file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) {
        return;
    }
    ThrowUnwritable(m_option, m_path);
}

}  // namespace devkit::filterhost
