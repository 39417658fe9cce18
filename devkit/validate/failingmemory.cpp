#include "devkit/validate/failingmemory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "devkit/common/caller.h"
#include "devkit/common/fnvhash.h"
#include "devkit/common/importtable.h"
#include "devkit/filterhost/crashreport.h"

namespace devkit::validate {
namespace {

using common::ReplaceWith;

// How many places of the modules tell two ways apart.
constexpr std::size_t kPlacesOfAWay = 4;

struct Module {
    std::uintptr_t base = 0;
    std::uintptr_t size = 0;
    bool isGnu = false;
};

// What the replacements share. The lock is never held while the system's own function runs.
struct State {
    std::vector<Module> modules;
    std::mutex lock;
    std::atomic<bool> isRecording = false;
    std::vector<Allocation> recorded;
    std::set<std::uint64_t> knownWays;
    bool isFailing = false;
    std::uint64_t way = 0;
    bool isForGood = false;
    Sites sites;
    std::atomic<bool> hasFailed = false;
    std::function<void()> onBadAlloc;
    std::map<const void*, std::uint64_t> blocks;  // the site of each that is held
};
// Null when there is no FailingMemory: a module that is still loaded then is let through.
std::shared_ptr<State> g_state;
std::mutex g_stateLock;

std::shared_ptr<State> Current() {
    const std::lock_guard guard(g_stateLock);
    return g_state;
}

// The system's own functions, as the modules' import tables had them.
struct System {
    decltype(&std::malloc) malloc = nullptr;
    decltype(&std::calloc) calloc = nullptr;
    decltype(&std::realloc) realloc = nullptr;
    decltype(&std::free) free = nullptr;
    decltype(&HeapAlloc) heapAlloc = nullptr;
    decltype(&HeapReAlloc) heapReAlloc = nullptr;
    decltype(&HeapFree) heapFree = nullptr;
    decltype(&LocalAlloc) localAlloc = nullptr;
    decltype(&LocalFree) localFree = nullptr;
    decltype(&GlobalAlloc) globalAlloc = nullptr;
    decltype(&GlobalFree) globalFree = nullptr;
    decltype(&CoTaskMemAlloc) taskMemAlloc = nullptr;
    decltype(&SysAllocString) allocString = nullptr;
    decltype(&SysAllocStringLen) allocStringLen = nullptr;
    decltype(&SysAllocStringByteLen) allocStringByteLen = nullptr;
};
System g_system;

// A place in one of the modules; nothing for one elsewhere.
std::uint64_t PlaceOf(const State& state, const void* pCode) {
    for (std::size_t i = 0; i < state.modules.size(); ++i) {
        const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(pCode) - state.modules[i].base;
        if (offset < state.modules[i].size) return (static_cast<std::uint64_t>(i + 1) << 48) | offset;
    }
    return 0;
}

std::uint64_t WayOf(const State& state, std::uint64_t site) {
    std::array<void*, 32> frames{};
    const WORD count = RtlCaptureStackBackTrace(1, static_cast<DWORD>(frames.size()), frames.data(), nullptr);
    common::FnvHash way;
    way.Take(site);
    std::size_t places = 0;
    for (WORD i = 0; i < count && places < kPlacesOfAWay; ++i) {
        const std::uint64_t place = PlaceOf(state, frames[i]);
        if (place == 0) continue;
        way.Take(place);
        ++places;
    }
    return way.Value();
}

// The runtime of g++ makes its account of threads with malloc, calloc and realloc, and ends the process when
// it gets nothing.
bool MayBeRuntime(const State& state, const void* pCaller) {
    const std::uint64_t site = PlaceOf(state, pCaller);
    return site != 0 && state.modules[NumberOfModule(site)].isGnu;
}

// Whether the allocation that `pCaller` asks for fails.
bool Strikes(State& state, const void* pCaller, bool isMalloc = false) {
    const std::uint64_t site = PlaceOf(state, pCaller);
    const std::lock_guard guard(state.lock);
    if (state.isRecording) {
        const std::uint64_t way = WayOf(state, site);
        if (state.knownWays.insert(way).second)
            state.recorded.push_back({site, way, isMalloc && MayBeRuntime(state, pCaller)});
    }
    if (!state.isFailing || !state.sites.contains(site)) return false;
    if (state.hasFailed) return state.isForGood;
    if (WayOf(state, site) == state.way) state.hasFailed = true;
    return state.hasFailed;
}

void Take(State& state, const void* pBlock, const void* pCaller) {
    if (pBlock == nullptr) return;
    const std::lock_guard guard(state.lock);
    state.blocks[pBlock] = PlaceOf(state, pCaller);
}

void GiveBack(State& state, const void* pBlock) {
    const std::lock_guard guard(state.lock);
    state.blocks.erase(pBlock);
}

// Asks for a block that the module is to give back.
template <typename Ask>
auto Acquire(const void* pCaller, Ask&& ask, bool isMalloc = false) -> decltype(ask()) {
    const std::shared_ptr<State> state = Current();
    if (state == nullptr) return ask();
    if (Strikes(*state, pCaller, isMalloc)) return nullptr;
    const auto pBlock = ask();
    Take(*state, pBlock, pCaller);
    return pBlock;
}

// Asks for what others may give back.
template <typename Ask>
auto AcquireForOthers(const void* pCaller, Ask&& ask) -> decltype(ask()) {
    const std::shared_ptr<State> state = Current();
    return state != nullptr && Strikes(*state, pCaller) ? nullptr : ask();
}

// Asks for another size; the block stays what it was when that fails.
template <typename Ask>
void* Resize(const void* pCaller, const void* pBlock, Ask&& ask) {
    const std::shared_ptr<State> state = Current();
    if (state == nullptr) return ask();
    if (!MayBeRuntime(*state, pCaller) && Strikes(*state, pCaller)) return nullptr;
    void* const pResized = ask();
    if (pResized == nullptr) return nullptr;
    GiveBack(*state, pBlock);
    Take(*state, pResized, pCaller);
    return pResized;
}

template <typename Free>
auto Release(const void* pBlock, Free&& free) -> decltype(free()) {
    // Before it is freed: another thread may be given the same block at once.
    if (const std::shared_ptr<State> state = Current()) GiveBack(*state, pBlock);
    return free();
}

void* Malloc(std::size_t size) {
    constexpr bool kIsMalloc = true;
    return Acquire(
        DEVKIT_CALLER, [&] { return g_system.malloc(size); }, kIsMalloc);
}
void* Calloc(std::size_t count, std::size_t size) {
    const void* const pCaller = DEVKIT_CALLER;
    const std::shared_ptr<State> state = Current();
    const auto ask = [&] { return g_system.calloc(count, size); };
    return state != nullptr && MayBeRuntime(*state, pCaller) ? ask() : Acquire(pCaller, ask);
}
void* Realloc(void* pBlock, std::size_t size) {
    return Resize(DEVKIT_CALLER, pBlock, [&] { return g_system.realloc(pBlock, size); });
}
void Free(void* pBlock) {
    Release(pBlock, [&] { g_system.free(pBlock); });
}
void* WINAPI AllocateOfHeap(HANDLE heap, DWORD flags, SIZE_T size) {
    return Acquire(DEVKIT_CALLER, [&] { return g_system.heapAlloc(heap, flags, size); });
}
void* WINAPI ReallocateOfHeap(HANDLE heap, DWORD flags, void* pBlock, SIZE_T size) {
    return Resize(DEVKIT_CALLER, pBlock, [&] { return g_system.heapReAlloc(heap, flags, pBlock, size); });
}
BOOL WINAPI FreeOfHeap(HANDLE heap, DWORD flags, void* pBlock) {
    return Release(pBlock, [&] { return g_system.heapFree(heap, flags, pBlock); });
}
HLOCAL WINAPI AllocateLocal(UINT flags, SIZE_T size) {
    return Acquire(DEVKIT_CALLER, [&] { return g_system.localAlloc(flags, size); });
}
HLOCAL WINAPI FreeLocal(HLOCAL block) {
    return Release(block, [&] { return g_system.localFree(block); });
}
HGLOBAL WINAPI AllocateGlobal(UINT flags, SIZE_T size) {
    return AcquireForOthers(DEVKIT_CALLER, [&] { return g_system.globalAlloc(flags, size); });
}
void* WINAPI AllocateTaskMemory(SIZE_T size) {
    return AcquireForOthers(DEVKIT_CALLER, [&] { return g_system.taskMemAlloc(size); });
}
BSTR WINAPI AllocateString(const OLECHAR* text) {
    return AcquireForOthers(DEVKIT_CALLER, [&] { return g_system.allocString(text); });
}
BSTR WINAPI AllocateStringLen(const OLECHAR* text, UINT length) {
    return AcquireForOthers(DEVKIT_CALLER, [&] { return g_system.allocStringLen(text, length); });
}
BSTR WINAPI AllocateStringByteLen(const char* text, UINT length) {
    return AcquireForOthers(DEVKIT_CALLER, [&] { return g_system.allocStringByteLen(text, length); });
}

// Those that give memory, and those that take it back.
std::size_t ReplaceFor(HMODULE module) {
    static const common::ImportReplacements kGiving = {
        {"malloc", ReplaceWith(&Malloc, g_system.malloc)},
        {"calloc", ReplaceWith(&Calloc, g_system.calloc)},
        {"realloc", ReplaceWith(&Realloc, g_system.realloc)},
        {"HeapAlloc", ReplaceWith(&AllocateOfHeap, g_system.heapAlloc)},
        {"HeapReAlloc", ReplaceWith(&ReallocateOfHeap, g_system.heapReAlloc)},
        {"LocalAlloc", ReplaceWith(&AllocateLocal, g_system.localAlloc)},
        {"GlobalAlloc", ReplaceWith(&AllocateGlobal, g_system.globalAlloc)},
        {"CoTaskMemAlloc", ReplaceWith(&AllocateTaskMemory, g_system.taskMemAlloc)},
        {"SysAllocString", ReplaceWith(&AllocateString, g_system.allocString)},
        {"SysAllocStringLen", ReplaceWith(&AllocateStringLen, g_system.allocStringLen)},
        {"SysAllocStringByteLen", ReplaceWith(&AllocateStringByteLen, g_system.allocStringByteLen)},
    };
    static const common::ImportReplacements kTaking = {
        {"free", ReplaceWith(&Free, g_system.free)},
        {"HeapFree", ReplaceWith(&FreeOfHeap, g_system.heapFree)},
        {"LocalFree", ReplaceWith(&FreeLocal, g_system.localFree)},
    };
    common::ReplaceImports(module, kTaking);
    return common::ReplaceImports(module, kGiving);
}

LONG CALLBACK OnException(EXCEPTION_POINTERS* pException) {
    const std::shared_ptr<State> state = Current();
    if (state == nullptr || !state->hasFailed || !state->onBadAlloc) return EXCEPTION_CONTINUE_SEARCH;
    const char* const pType = filterhost::TypeOfThrown(*pException->ExceptionRecord);
    if (pType != nullptr && std::strstr(pType, "bad_alloc") != nullptr) state->onBadAlloc();
    return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

FailingMemory::FailingMemory(const std::vector<HMODULE>& modules, std::function<void()> onBadAlloc) {
    auto state = std::make_shared<State>();
    state->onBadAlloc = std::move(onBadAlloc);
    for (HMODULE module : modules) {
        state->modules.push_back({reinterpret_cast<std::uintptr_t>(module), common::SizeOfImage(module),
                                  common::IsLinkedByGnu(module)});
    }
    for (HMODULE module : modules) m_replaced += ReplaceFor(module);
    const std::lock_guard guard(g_stateLock);
    g_state = std::move(state);
    m_pVectored = AddVectoredExceptionHandler(1, &OnException);
}

FailingMemory::~FailingMemory() {
    RemoveVectoredExceptionHandler(m_pVectored);
    const std::lock_guard guard(g_stateLock);
    g_state.reset();
}

void FailingMemory::Record() {
    const std::shared_ptr<State> state = Current();
    const std::lock_guard guard(state->lock);
    state->isRecording = true;
}

std::vector<Allocation> FailingMemory::Recorded() const {
    const std::shared_ptr<State> state = Current();
    const std::lock_guard guard(state->lock);
    return state->recorded;
}

void FailingMemory::Fail(std::uint64_t way, bool isForGood, Sites sites) {
    const std::shared_ptr<State> state = Current();
    const std::lock_guard guard(state->lock);
    state->isFailing = true;
    state->hasFailed = false;
    state->way = way;
    state->isForGood = isForGood;
    state->sites = std::move(sites);
}

void FailingMemory::Stop() {
    const std::shared_ptr<State> state = Current();
    const std::lock_guard guard(state->lock);
    state->isFailing = false;
    state->isRecording = false;
}

bool FailingMemory::HasFailed() const {
    const std::shared_ptr<State> state = Current();
    const std::lock_guard guard(state->lock);
    return state->hasFailed;
}

std::size_t FailingMemory::BlocksOf(const Sites& sites) const {
    const std::shared_ptr<State> state = Current();
    const std::lock_guard guard(state->lock);
    return static_cast<std::size_t>(std::ranges::count_if(
        state->blocks, [&](const auto& block) { return sites.contains(block.second); }));
}

}  // namespace devkit::validate
