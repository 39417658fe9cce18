#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "devkit/common/file.h"

namespace devkit::validate {

// A document that a filter is run over.
struct Document {
    std::string name;
    std::filesystem::path path;
};

// A folder beside the system's temporary files, which goes with the object and all that is in it. What a
// process that was ended has left of such goes with the next one that is made.
class TemporaryFolder {
  public:
    // Throws std::runtime_error when there can be none.
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return m_path; }

  private:
    // Of the folder's name; the system takes it with the process.
    common::TemporaryFile m_owner;
    std::filesystem::path m_path;
};

// The documents that the program carries.
inline constexpr const char* kShort = "short.xps";            // three pages, tickets at all levels
inline constexpr const char* kEverything = "everything.xps";  // all that a document can have
inline constexpr const char* kPages = "pages.xps";            // 200 pages

// Puts a carried document into the folder. Throws std::runtime_error when the program has none of the name.
[[nodiscard]] Document PutDocument(const std::string& name, const std::filesystem::path& folder);

}  // namespace devkit::validate
