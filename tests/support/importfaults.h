#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tests {

// One imported function of a module, or a family of them, or of calls that it makes of objects, that can be
// made to fail.
enum class Import {
    OperatorNew,             // the module's own, by the malloc under it: no memory
    CoTaskMemAlloc,          // no memory
    SysAllocStringLen,       // no memory
    VariantChangeTypeEx,     // no memory
    GetLocaleInfoW,          // no answer
    GetPrinterDriverW,       // ERROR_ACCESS_DENIED
    SetThreadTokenTake,      // with a token: ERROR_ACCESS_DENIED
    SetThreadTokenGiveBack,  // without one: the same
    CoInitializeEx,          // kImportFailure, as for all that follow
    CoCreateInstance,
    CoFileTimeNow,
    CreateStreamOnHGlobal,
    PTOpenProvider,
    PTMergeAndValidatePrintTicket,
    PTGetPrintCapabilities,
    PTCloseProvider,  // after it has closed
    GdiplusStartup,   // OutOfMemory, as for all that follow
    GdipCreateMatrix,
    GdipGetMatrixElements,
    GdipSetMatrixElements,
    GdipRotateMatrix,
    GdipScaleMatrix,
    GdipTransformMatrixPoints,
    Dom,  // kImportFailure, as for the last; calls of objects, see StrikesCallOf
    Sax,
    Count
};

// "operator new" and so on.
[[nodiscard]] const char* NameOf(Import import);

// What a function answers that was made to fail and that gives an HRESULT. No system gives it by itself.
inline constexpr HRESULT kImportFailure = static_cast<HRESULT>(0x8007001FL);

// Stands between a loaded module and the system, in the module's import table: counts what the module calls,
// fails what is wanted, and keeps account of what the module has not given back. Made when the module has
// just been loaded and has not been called yet: its first malloc is taken for that of operator new. What else
// calls malloc in it, the runtime's bookkeeping of threads, neither fails nor counts, as that runtime ends
// the process when it has no memory. The module is to be unloaded while the object lives, after which
// LeftOver tells the whole truth. One at a time in a process. The module may call from any thread.
class ImportFaults {
  public:
    // std::logic_error when the module imports none of the functions.
    explicit ImportFaults(HMODULE module);
    ImportFaults(const ImportFaults&) = delete;
    ImportFaults& operator=(const ImportFaults&) = delete;
    ~ImportFaults();

    // The nth call of the function from now on fails, counted from 1; with `onwards` all later ones as well.
    // `whenStruck` is called for each that fails, on its thread; it may call neither the module nor this.
    void Fail(Import import, unsigned nth, bool onwards, std::function<void()> whenStruck = {});
    // Whether the call that was to fail was made.
    [[nodiscard]] bool HasFailed() const;
    // Notes for each call of the function from which places of the module it came, so many at most.
    void RecordPaths(Import import, std::size_t places);
    // One number for each call: equal where two calls came through the same places.
    [[nodiscard]] std::vector<std::uint64_t> Paths() const;
    // The places through which the call came that failed, the innermost first, as offsets in the module.
    [[nodiscard]] std::vector<std::uintptr_t> FailedPath() const;

    // Counts a call of an object that comes from the place, when that is one of the module's; true when it is
    // to fail. For whoever stands between the module and the object. False when there are no ImportFaults.
    [[nodiscard]] static bool StrikesCallOf(Import import, const char* name, const void* pCaller);
    // The name that was given for the call that failed first.
    [[nodiscard]] std::string FailedCall() const;

    [[nodiscard]] unsigned Calls(Import import) const;
    // Whether there is a replacement for the function of that name.
    [[nodiscard]] static bool Replaces(const std::string& function);
    // What the module acquired and has not given back, "2 heap blocks", streams over memory and SAX readers
    // among it; what it gave away to be freed by others is not counted.
    [[nodiscard]] std::vector<std::string> LeftOver() const;
};

}  // namespace tests
