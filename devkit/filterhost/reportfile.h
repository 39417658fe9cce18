#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "devkit/common/file.h"

namespace devkit::filterhost {

// A file that grows before its end and is whole after every addition, so that an end by force leaves what
// there was, and so does an addition that cannot be written. That throws UsageError, which begins with the
// option.
class ReportFile {
  public:
    // Replaces a file that is there. What is added comes between the two texts.
    ReportFile(std::filesystem::path path, std::string option, std::string_view head, std::string_view end);

    // Over the end of what is there, and with its own end in one piece.
    void Add(std::string_view text);
    // By one of the same length.
    void ReplaceHead(std::string_view head);

  private:
    void Write(std::uint64_t offset, std::string_view text);
    void PutBack() noexcept;

    const std::filesystem::path m_path;
    const std::string m_option;
    const std::string m_end;
    common::FileHandle m_file{INVALID_HANDLE_VALUE};
    std::uint64_t m_size = 0;
};

}  // namespace devkit::filterhost
