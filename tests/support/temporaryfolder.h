#pragma once

#include "platform/windows.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace tests {

// A folder of the test's own; it goes with all that it holds.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        static unsigned number = 0;
        m_path = std::filesystem::temp_directory_path() /
                 ("kit-test-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++number));
        std::filesystem::create_directories(m_path);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& name) const {
        return m_path / name;
    }

    // The names of what is in it.
    [[nodiscard]] std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& each : std::filesystem::directory_iterator(m_path))
            names.insert(each.path().filename().string());
        return names;
    }

  private:
    std::filesystem::path m_path;
};

[[nodiscard]] inline std::string ReadFileBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteFileBytes(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace tests
