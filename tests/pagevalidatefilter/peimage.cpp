#include "pagevalidatefilter/peimage.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace pagevalidatefilter {
namespace {

std::vector<char> BytesOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace

PeImage::PeImage(const std::filesystem::path& file) : m_bytes(BytesOf(file)) {
    const auto dos = At<IMAGE_DOS_HEADER>(0);
    if (dos.e_magic != IMAGE_DOS_SIGNATURE) throw std::runtime_error("no DOS header");
    std::size_t offset = static_cast<std::size_t>(dos.e_lfanew);
    if (At<DWORD>(offset) != IMAGE_NT_SIGNATURE) throw std::runtime_error("no PE header");
    offset += sizeof(DWORD);
    m_fileHeader = At<IMAGE_FILE_HEADER>(offset);
    offset += sizeof(IMAGE_FILE_HEADER);

    const auto read = [&](const auto& header) {
        m_dllCharacteristics = header.DllCharacteristics;
        m_directories.assign(header.DataDirectory, header.DataDirectory + IMAGE_NUMBEROF_DIRECTORY_ENTRIES);
    };
    m_is64Bit = At<WORD>(offset) == IMAGE_NT_OPTIONAL_HDR64_MAGIC;
    if (m_is64Bit) {
        read(At<IMAGE_OPTIONAL_HEADER64>(offset));
    } else {
        read(At<IMAGE_OPTIONAL_HEADER32>(offset));
    }
    offset += m_fileHeader.SizeOfOptionalHeader;
    for (int section = 0; section < m_fileHeader.NumberOfSections; ++section) {
        m_sections.push_back(At<IMAGE_SECTION_HEADER>(offset));
        offset += sizeof(IMAGE_SECTION_HEADER);
    }
}

bool PeImage::HasRelocations() const noexcept {
    return m_directories[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size != 0;
}

std::vector<std::string> PeImage::ExportNames() const {
    const auto directory =
        At<IMAGE_EXPORT_DIRECTORY>(OffsetOf(m_directories[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress));
    std::vector<std::string> names;
    for (DWORD name = 0; name < directory.NumberOfNames; ++name) {
        names.push_back(TextAt(At<DWORD>(OffsetOf(directory.AddressOfNames) + name * sizeof(DWORD))));
    }
    return names;
}

std::uint32_t PeImage::ExportCount() const {
    return At<IMAGE_EXPORT_DIRECTORY>(OffsetOf(m_directories[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress))
        .NumberOfFunctions;
}

std::map<std::string, std::set<std::string>> PeImage::Imports() const {
    std::map<std::string, std::set<std::string>> imports;
    std::size_t offset = OffsetOf(m_directories[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    for (;; offset += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
        const auto descriptor = At<IMAGE_IMPORT_DESCRIPTOR>(offset);
        if (descriptor.Name == 0) return imports;
        std::string library = TextAt(descriptor.Name);
        std::ranges::transform(library, library.begin(), [](unsigned char c) { return std::tolower(c); });
        imports[library].merge(ImportedFunctions(
            descriptor.OriginalFirstThunk != 0 ? descriptor.OriginalFirstThunk : descriptor.FirstThunk));
    }
}

std::set<std::string> PeImage::ImportedFunctions(std::uint32_t table) const {
    std::set<std::string> functions;
    const std::size_t size = m_is64Bit ? sizeof(ULONGLONG) : sizeof(DWORD);
    const ULONGLONG byNumber = m_is64Bit ? IMAGE_ORDINAL_FLAG64 : IMAGE_ORDINAL_FLAG32;
    for (std::size_t offset = OffsetOf(table);; offset += size) {
        const ULONGLONG entry = m_is64Bit ? At<ULONGLONG>(offset) : At<DWORD>(offset);
        if (entry == 0) return functions;
        if ((entry & byNumber) != 0) {
            functions.insert(std::string("#").append(std::to_string(entry & 0xFFFF)));
        } else {
            functions.insert(TextAt(static_cast<std::uint32_t>(entry) + sizeof(WORD)));
        }
    }
}

VS_FIXEDFILEINFO PeImage::Version() const {
    constexpr std::uint32_t kAny = 0;
    constexpr std::uint32_t kVersionType = 16;
    const std::size_t root = OffsetOf(m_directories[IMAGE_DIRECTORY_ENTRY_RESOURCE].VirtualAddress);
    std::uint32_t entry = FirstEntry(root, 0, kVersionType);
    while ((entry & IMAGE_RESOURCE_DATA_IS_DIRECTORY) != 0) {
        entry = FirstEntry(root, entry & ~IMAGE_RESOURCE_DATA_IS_DIRECTORY, kAny);
    }
    const auto data = At<IMAGE_RESOURCE_DATA_ENTRY>(root + entry);
    // Three numbers and the key "VS_VERSION_INFO" stand in front of it, filled up to a multiple of four.
    const auto info = At<VS_FIXEDFILEINFO>(OffsetOf(data.OffsetToData) + 40);
    if (info.dwSignature != 0xFEEF04BD) throw std::runtime_error("no version resource");
    return info;
}

// What the resource directory holds for an identifier, or its first entry for 0.
std::uint32_t PeImage::FirstEntry(std::size_t root, std::uint32_t entry, std::uint32_t id) const {
    const auto directory = At<IMAGE_RESOURCE_DIRECTORY>(root + entry);
    std::size_t offset = root + entry + sizeof(directory);
    for (int left = directory.NumberOfNamedEntries + directory.NumberOfIdEntries; left > 0; --left) {
        // Identifier and offset, the highest bit of which tells a directory from data.
        const auto found = At<std::array<DWORD, 2>>(offset);
        if (id == 0 || found[0] == id) return found[1];
        offset += sizeof(found);
    }
    throw std::runtime_error("no such resource");
}

std::size_t PeImage::OffsetOf(std::uint32_t rva) const {
    for (const IMAGE_SECTION_HEADER& section : m_sections) {
        if (rva >= section.VirtualAddress && rva - section.VirtualAddress < section.SizeOfRawData) {
            return rva - section.VirtualAddress + section.PointerToRawData;
        }
    }
    throw std::runtime_error("an address outside every section");
}

template <typename Structure>
Structure PeImage::At(std::size_t offset) const {
    if (offset > m_bytes.size() || m_bytes.size() - offset < sizeof(Structure)) {
        throw std::runtime_error("the file is cut off");
    }
    Structure structure;
    std::memcpy(&structure, m_bytes.data() + offset, sizeof(structure));
    return structure;
}

std::string PeImage::TextAt(std::uint32_t rva) const {
    const auto start = m_bytes.begin() + static_cast<std::ptrdiff_t>(OffsetOf(rva));
    return {start, std::find(start, m_bytes.end(), '\0')};
}

}  // namespace pagevalidatefilter
