#include "devkit/pipeline/loadproblem.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <stdexcept>
#include <vector>

#include "devkit/common/error.h"
#include "devkit/common/file.h"
#include "devkit/common/hresult.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

using Path = std::filesystem::path;

// A file that is no PE file, or ends before what its headers say.
class NoImage : public std::runtime_error {
  public:
    NoImage() : std::runtime_error("no PE file") {}
};

// What the headers of a PE file of either word size say of the DLLs that it needs. Throws NoImage and
// common::Error.
class Image {
  public:
    explicit Image(const Path& file) {
        common::FileSource source(file);
        m_bytes.resize(static_cast<std::size_t>(source.Size()));
        source.ReadAt(0, m_bytes.data(), m_bytes.size());
        const auto dos = At<IMAGE_DOS_HEADER>(0);
        const auto start = static_cast<std::size_t>(dos.e_lfanew);
        if (dos.e_magic != IMAGE_DOS_SIGNATURE || At<DWORD>(start) != IMAGE_NT_SIGNATURE) throw NoImage();
        m_header = At<IMAGE_FILE_HEADER>(start + sizeof(DWORD));
        const std::size_t optional = start + sizeof(DWORD) + sizeof(IMAGE_FILE_HEADER);
        if (m_header.SizeOfOptionalHeader == sizeof(IMAGE_OPTIONAL_HEADER64)) {
            m_imports = At<IMAGE_OPTIONAL_HEADER64>(optional).DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        } else {
            m_imports = At<IMAGE_OPTIONAL_HEADER32>(optional).DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        }
        for (std::size_t i = 0; i < m_header.NumberOfSections; ++i) {
            m_sections.push_back(At<IMAGE_SECTION_HEADER>(optional + m_header.SizeOfOptionalHeader +
                                                          i * sizeof(IMAGE_SECTION_HEADER)));
        }
    }

    [[nodiscard]] WORD Machine() const noexcept { return m_header.Machine; }
    [[nodiscard]] bool IsDll() const noexcept { return (m_header.Characteristics & IMAGE_FILE_DLL) != 0; }

    [[nodiscard]] std::vector<std::string> Needed() const {
        std::vector<std::string> names;
        if (m_imports.VirtualAddress == 0) return names;
        std::size_t offset = OffsetOf(m_imports.VirtualAddress);
        for (;; offset += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
            const auto descriptor = At<IMAGE_IMPORT_DESCRIPTOR>(offset);
            if (descriptor.Name == 0) return names;
            names.push_back(TextAt(OffsetOf(descriptor.Name)));
        }
    }

  private:
    template <typename Structure>
    [[nodiscard]] Structure At(std::size_t offset) const {
        Structure structure;
        if (offset > m_bytes.size() || m_bytes.size() - offset < sizeof(structure)) throw NoImage();
        std::memcpy(&structure, m_bytes.data() + offset, sizeof(structure));
        return structure;
    }
    [[nodiscard]] std::string TextAt(std::size_t offset) const {
        if (offset > m_bytes.size()) throw NoImage();
        return {m_bytes.data() + offset, strnlen(m_bytes.data() + offset, m_bytes.size() - offset)};
    }
    [[nodiscard]] std::size_t OffsetOf(DWORD address) const {
        for (const IMAGE_SECTION_HEADER& section : m_sections) {
            if (address >= section.VirtualAddress &&
                address - section.VirtualAddress < section.SizeOfRawData) {
                return address - section.VirtualAddress + section.PointerToRawData;
            }
        }
        throw NoImage();
    }

    std::vector<char> m_bytes;
    IMAGE_FILE_HEADER m_header{};
    IMAGE_DATA_DIRECTORY m_imports{};
    std::vector<IMAGE_SECTION_HEADER> m_sections;
};

#if defined(_M_X64) || defined(__x86_64__)
constexpr WORD kMachine = IMAGE_FILE_MACHINE_AMD64;
#elif defined(_M_IX86) || defined(__i386__)
constexpr WORD kMachine = IMAGE_FILE_MACHINE_I386;
#else
constexpr WORD kMachine = IMAGE_FILE_MACHINE_ARM64;
#endif

std::string MachineName(WORD machine) {
    switch (machine) {
        case IMAGE_FILE_MACHINE_I386:
            return "32 bit x86";
        case IMAGE_FILE_MACHINE_AMD64:
            return "64 bit x86";
        case IMAGE_FILE_MACHINE_ARM64:
            return "64 bit ARM";
        default:
            return "another machine (" + common::HexOf(machine) + ")";
    }
}

// The file that a DLL of the name would come from, as for a DLL in the folder; nothing when there is none.
std::optional<Path> Find(const std::string& name, const Path& folder) {
    const std::wstring wide = platform::ToUtf16(name);
    if (std::filesystem::is_regular_file(folder / wide)) return folder / wide;
    std::wstring found(32768, L'\0');
    found.resize(
        SearchPathW(nullptr, wide.c_str(), nullptr, static_cast<DWORD>(found.size()), found.data(), nullptr));
    // The system has DLLs under names that are no files (API sets).
    if (found.empty() && GetModuleHandleW(wide.c_str()) != nullptr) return Path(wide);
    return found.empty() ? std::nullopt : std::optional<Path>(found);
}

// The chain of names to a DLL that is missing: "b.dll, which needs c.dll". Those of the system are taken for
// whole.
std::string MissingBelow(const Path& dll, std::set<std::string>& seen) {
    for (const std::string& name : Image(dll).Needed()) {
        if (!seen.insert(name).second || name.starts_with("api-ms-") || name.starts_with("ext-ms-")) continue;
        const std::optional<Path> file = Find(name, dll.parent_path());
        if (!file) return name;
        if (file->parent_path() != dll.parent_path()) continue;
        if (const std::string below = MissingBelow(*file, seen); !below.empty())
            return name + ", which needs " + below;
    }
    return {};
}

}  // namespace

std::string LoadProblem(const Path& dll, DWORD error) {
    try {
        const Image image(dll);
        if (image.Machine() != kMachine) {
            return "is for " + MachineName(image.Machine()) + ", this program for " + MachineName(kMachine);
        }
        if (!image.IsDll()) return "is a program and no DLL";
        std::set<std::string> seen;
        if (const std::string missing = MissingBelow(dll, seen); !missing.empty()) {
            return "needs " + missing + ", which is missing";
        }
    } catch (const NoImage&) {
        return "is no DLL";
    } catch (const common::Error& failure) {
        return std::string("cannot be loaded: ") + failure.what();
    }
    if (error == ERROR_PROC_NOT_FOUND) return "needs a function that a DLL on this system does not have";
    if (error == ERROR_DLL_INIT_FAILED) return "does not want to be loaded: its DllMain answers FALSE";
    return "cannot be loaded: " + common::Describe(HRESULT_FROM_WIN32(error));
}

}  // namespace devkit::pipeline
