#include "devkit/common/importtable.h"

#include <cstdint>
#include <stdexcept>

namespace devkit::common {
namespace {

template <typename Type>
Type* At(HMODULE module, std::uintptr_t offset) {
    return reinterpret_cast<Type*>(reinterpret_cast<std::uintptr_t>(module) + offset);
}

const IMAGE_OPTIONAL_HEADER& HeaderOf(HMODULE module) {
    const auto offset = static_cast<std::uintptr_t>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
    return At<IMAGE_NT_HEADERS>(module, offset)->OptionalHeader;
}

// False when it was there before.
bool PutIntoSlot(IMAGE_THUNK_DATA& slot, const ImportReplacement& replacement) {
    const auto function = reinterpret_cast<ULONG_PTR>(replacement.pFunction);
    if (slot.u1.Function == function) return false;
    *replacement.ppSystem = reinterpret_cast<void*>(slot.u1.Function);
    DWORD before = 0;
    if (!VirtualProtect(&slot, sizeof(slot), PAGE_READWRITE, &before))
        throw std::logic_error("the import table cannot be written");
    slot.u1.Function = function;
    VirtualProtect(&slot, sizeof(slot), before, &before);
    return true;
}

}  // namespace

std::size_t ReplaceImports(HMODULE module, const ImportReplacements& replacements) {
    const IMAGE_DATA_DIRECTORY& imports = HeaderOf(module).DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.VirtualAddress == 0) return 0;
    std::size_t replaced = 0;
    auto* pLibrary = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress);
    for (; pLibrary->Name != 0; ++pLibrary) {
        // Without names of its own a library's functions cannot be told apart.
        if (pLibrary->OriginalFirstThunk == 0) continue;
        const auto* pName = At<IMAGE_THUNK_DATA>(module, pLibrary->OriginalFirstThunk);
        auto* pSlot = At<IMAGE_THUNK_DATA>(module, pLibrary->FirstThunk);
        for (; pName->u1.AddressOfData != 0; ++pName, ++pSlot) {
            if (IMAGE_SNAP_BY_ORDINAL(pName->u1.Ordinal)) continue;
            const auto* pImport = At<IMAGE_IMPORT_BY_NAME>(module, pName->u1.AddressOfData);
            const auto found = replacements.find(reinterpret_cast<const char*>(pImport->Name));
            if (found != replacements.end() && PutIntoSlot(*pSlot, found->second)) ++replaced;
        }
    }
    return replaced;
}

std::size_t SizeOfImage(HMODULE module) { return HeaderOf(module).SizeOfImage; }

// Its versions are 2 with a fraction; other linkers count as Microsoft's does, from 14 on.
bool IsLinkedByGnu(HMODULE module) { return HeaderOf(module).MajorLinkerVersion == 2; }

}  // namespace devkit::common
