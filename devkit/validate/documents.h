#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace devkit::validate {

// A document that a filter is run over.
struct Document {
    std::string name;
    std::filesystem::path path;
};

// A folder of the system's for such, which goes with the object and all that is in it.
class TemporaryFolder {
  public:
    // Throws std::runtime_error when there can be none.
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return m_path; }

  private:
    std::filesystem::path m_path;
};

// The documents that the program carries.
inline constexpr const char* kShort = "short.xps";            // three pages, tickets at all levels
inline constexpr const char* kEverything = "everything.xps";  // all that a document can have
inline constexpr const char* kPages = "pages.xps";            // 200 pages

// Puts a carried document into the folder. Throws std::runtime_error when the program has none of the name.
[[nodiscard]] Document PutDocument(const std::string& name, const std::filesystem::path& folder);

}  // namespace devkit::validate
