#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <map>
#include <string>

namespace devkit::common {

// A function of the program that stands in for one that a module imports, and where to put what the module
// had.
struct ImportReplacement {
    void* pFunction = nullptr;
    void** ppSystem = nullptr;
};
using ImportReplacements = std::map<std::string, ImportReplacement, std::less<>>;

template <typename Function>
[[nodiscard]] ImportReplacement ReplaceWith(Function* pFunction, Function*& pSystem) {
    return {reinterpret_cast<void*>(pFunction), reinterpret_cast<void**>(&pSystem)};
}

// Puts the functions into the import table of a loaded module, in the place of those that it imports by these
// names from whatever DLL. Gives how many it replaced; one that stands there already is not counted again.
// Throws std::logic_error when the table cannot be written.
std::size_t ReplaceImports(HMODULE module, const ImportReplacements& replacements);

// How many bytes of memory the loaded module takes.
[[nodiscard]] std::size_t SizeOfImage(HMODULE module);

// Whether the GNU linker made the module, so that it may carry the runtime of g++.
[[nodiscard]] bool IsLinkedByGnu(HMODULE module);

}  // namespace devkit::common
