#include "devkit/edges/edgetable.h"

// Linked into a module whose code g++ compiles with -fsanitize-coverage=trace-pc, and itself compiled
// without.
#ifdef __GNUC__

#include <windows.h>

#include <array>
#include <cstdint>

// Where the linker lets the module begin.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace devkit::edges {
namespace {

// Some five times as many bytes as the product has blocks.
constexpr int kIndexBits = 17;
std::array<unsigned char, std::size_t{1} << kIndexBits> g_edges;

// The same for a block wherever the module was loaded, and spread over the table.
std::uint32_t NumberOf(const void* block) noexcept {
    const auto offset = static_cast<std::uint32_t>(static_cast<const char*>(block) -
                                                   reinterpret_cast<const char*>(&__ImageBase));
    return offset * 0x9E3779B1U >> (32 - kIndexBits);
}

}  // namespace

extern "C" {

__declspec(dllexport) unsigned char* EdgesOfModule(std::size_t* pSize) {
    *pSize = g_edges.size();
    return g_edges.data();
}

// What each block calls first. It may run before and after all else of the module, on any thread and between
// a failure and the question for its code, so it neither takes memory nor calls the system. The block before
// is kept where the system leaves each thread a place; it may be one of another module.
void __sanitizer_cov_trace_pc() {
    void*& pBefore = reinterpret_cast<NT_TIB*>(NtCurrentTeb())->ArbitraryUserPointer;
    const std::uint32_t here = NumberOf(__builtin_return_address(0));
    const auto before = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pBefore));
    g_edges[(here ^ before) % g_edges.size()] = 1;
    // So that there and back are two edges, and a block that follows itself has one of its own.
    pBefore = reinterpret_cast<void*>(static_cast<std::uintptr_t>(here >> 1));
}
}

}  // namespace devkit::edges

#endif
