#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace pagevalidatefilter {

// The headers of a PE file of either word size, as far as the tests look at them. std::runtime_error for a
// file that does not hold what its headers say.
class PeImage {
  public:
    explicit PeImage(const std::filesystem::path& file);

    [[nodiscard]] bool Is64Bit() const noexcept { return m_is64Bit; }
    [[nodiscard]] std::uint16_t Machine() const noexcept { return m_fileHeader.Machine; }
    [[nodiscard]] std::uint16_t Characteristics() const noexcept { return m_fileHeader.Characteristics; }
    [[nodiscard]] std::uint16_t DllCharacteristics() const noexcept { return m_dllCharacteristics; }
    [[nodiscard]] bool HasRelocations() const noexcept;
    [[nodiscard]] std::vector<std::string> ExportNames() const;
    // How many entries the export table has, those without a name included.
    [[nodiscard]] std::uint32_t ExportCount() const;
    // The functions by library, names in lower case; one that is imported by number is "#N".
    [[nodiscard]] std::map<std::string, std::set<std::string>> Imports() const;
    // The fixed part of the version resource.
    [[nodiscard]] VS_FIXEDFILEINFO Version() const;

  private:
    [[nodiscard]] std::size_t OffsetOf(std::uint32_t rva) const;
    template <typename Structure>
    [[nodiscard]] Structure At(std::size_t offset) const;
    [[nodiscard]] std::string TextAt(std::uint32_t rva) const;
    [[nodiscard]] std::set<std::string> ImportedFunctions(std::uint32_t table) const;
    [[nodiscard]] std::uint32_t FirstEntry(std::size_t root, std::uint32_t entry, std::uint32_t id) const;

    std::vector<char> m_bytes;
    IMAGE_FILE_HEADER m_fileHeader{};
    bool m_is64Bit = false;
    std::uint16_t m_dllCharacteristics = 0;
    std::vector<IMAGE_DATA_DIRECTORY> m_directories;
    std::vector<IMAGE_SECTION_HEADER> m_sections;
};

}  // namespace pagevalidatefilter
