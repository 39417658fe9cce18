#include "devkit/pipeline/graveyard.h"

#include "platform/windows.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <utility>

namespace devkit::pipeline {
namespace {

// As much as this many objects; some hundred pages' worth.
constexpr std::size_t kMostGraves = 2048;

struct Grave {
    std::size_t size = 0;
    std::string description;
    TellBreach tell;
};

struct Graveyard {
    std::mutex lock;
    std::map<const void*, Grave> dying;   // named, but not yet buried, by an address in the memory
    std::map<const void*, Grave> graves;  // by the start of the memory
    std::deque<void*> order;
};

// Never destroyed, because objects may be released until the process ends.
Graveyard& TheGraveyard() {
    static Graveyard& s_graveyard = *new Graveyard;
    return s_graveyard;
}

const char* MethodName(std::size_t index) {
    constexpr std::array<const char*, 3> kNames{"QueryInterface", "AddRef", "Release"};
    return index < kNames.size() ? kNames[index] : "a method";
}

// What a call through any pointer into the object comes to.
void CallOnTheDead(const void* pInterface, std::size_t index) noexcept {
    std::string text;
    TellBreach tell;
    {
        Graveyard& graveyard = TheGraveyard();
        const std::lock_guard guard(graveyard.lock);
        auto grave = graveyard.graves.upper_bound(pInterface);
        if (grave == graveyard.graves.begin()) return;
        grave = std::prev(grave);
        text = std::string(MethodName(index)) + " of " + grave->second.description +
               " came after its last Release";
        tell = grave->second.tell;
    }
    if (tell) tell(std::move(text));
#if defined(_M_IX86) || defined(__i386__)
    // How many arguments the caller has pushed, and wants to have popped, is not known here.
    TerminateProcess(GetCurrentProcess(), 1);
#endif
}

template <std::size_t Index>
HRESULT STDMETHODCALLTYPE DeadMethod(void* pInterface) noexcept {
    CallOnTheDead(pInterface, Index);
    // No references are left for AddRef and Release.
    return Index == 1 || Index == 2 ? 0 : E_UNEXPECTED;
}

using Method = HRESULT(STDMETHODCALLTYPE*)(void*) noexcept;

// More than any interface of the pipeline has.
constexpr std::size_t kMethods = 64;

template <std::size_t... Index>
constexpr std::array<Method, sizeof...(Index)> MakeTable(std::index_sequence<Index...>) {
    return {&DeadMethod<Index>...};
}
constexpr std::array<Method, kMethods> kTable = MakeTable(std::make_index_sequence<kMethods>());

}  // namespace

void* TakeObjectMemory(std::size_t size) { return ::operator new(size); }

void NameTheDead(const void* pInside, std::string description, TellBreach tell) noexcept {
    try {
        Graveyard& graveyard = TheGraveyard();
        const std::lock_guard guard(graveyard.lock);
        graveyard.dying.insert_or_assign(pInside, Grave{0, std::move(description), std::move(tell)});
    } catch (const std::bad_alloc&) {
        // It is buried without a name.
    }
}

void BuryObjectMemory(void* pMemory, std::size_t size) noexcept {
    // An interface of the object can begin anywhere in it, so everything looks like the table of one.
    const Method* const pTable = kTable.data();
    auto* const pSlots = static_cast<const Method**>(pMemory);
    std::fill(pSlots, pSlots + size / sizeof(pTable), pTable);
    const void* const pEnd = static_cast<const char*>(pMemory) + size;
    void* pOldest = nullptr;
    try {
        Graveyard& graveyard = TheGraveyard();
        const std::lock_guard guard(graveyard.lock);
        graveyard.order.push_back(pMemory);
        Grave& grave = graveyard.graves[pMemory];
        const auto named = graveyard.dying.lower_bound(pMemory);
        if (named != graveyard.dying.end() && std::less<>()(named->first, pEnd)) {
            grave = std::move(named->second);
            graveyard.dying.erase(named);
        }
        grave.size = size;
        if (graveyard.order.size() > kMostGraves) {
            pOldest = graveyard.order.front();
            graveyard.order.pop_front();
            graveyard.graves.erase(pOldest);
        }
    } catch (const std::bad_alloc&) {
        // The memory stays where it is, without a name.
    }
    ::operator delete(pOldest);
}

}  // namespace devkit::pipeline
