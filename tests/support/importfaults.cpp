#include "importfaults.h"

#include <winspool.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <mutex>
#include <set>
#include <stdexcept>
#include <utility>

#include "devkit/common/caller.h"
#include "devkit/common/fnvhash.h"
#include "devkit/common/importtable.h"
#include "platform/gdiplus.h"
#include "platform/msxml6.h"
#include "platform/prntvpt.h"

namespace tests {
namespace {

namespace flat = Gdiplus::DllExports;
using devkit::common::ImportReplacement;
using devkit::common::ImportReplacements;
using devkit::common::ReplaceWith;

constexpr std::size_t kImports = static_cast<std::size_t>(Import::Count);
constexpr std::array<const char*, kImports> kNames = {"operator new",
                                                      "CoTaskMemAlloc",
                                                      "SysAllocStringLen",
                                                      "VariantChangeTypeEx",
                                                      "GetLocaleInfoW",
                                                      "GetPrinterDriverW",
                                                      "SetThreadToken",
                                                      "SetThreadToken to none",
                                                      "CoInitializeEx",
                                                      "CoCreateInstance",
                                                      "CoFileTimeNow",
                                                      "CreateStreamOnHGlobal",
                                                      "PTOpenProvider",
                                                      "PTMergeAndValidatePrintTicket",
                                                      "PTGetPrintCapabilities",
                                                      "PTCloseProvider",
                                                      "GdiplusStartup",
                                                      "GdipCreateMatrix",
                                                      "GdipGetMatrixElements",
                                                      "GdipSetMatrixElements",
                                                      "GdipRotateMatrix",
                                                      "GdipScaleMatrix",
                                                      "GdipTransformMatrixPoints",
                                                      "calls of the DOM",
                                                      "calls of the SAX reader"};

enum class Resource {
    HeapBlock,
    Bstr,
    Matrix,
    GdiplusSession,
    ApartmentEntry,
    ProviderHandle,
    Stream,
    SaxReader,
    Count
};
constexpr std::array<const char*, static_cast<std::size_t>(Resource::Count)> kResourceNames = {
    "heap blocks",
    "BSTRs",
    "GDI+ matrices",
    "GDI+ sessions",
    "entries into an apartment",
    "provider handles",
    "streams over memory",
    "SAX readers"};

// The system's own functions, as the module's import table had them. Linking to them would load libraries
// that the program chooses to load itself.
struct System {
    decltype(&std::malloc) malloc = nullptr;
    decltype(&std::free) free = nullptr;
    decltype(&CoTaskMemAlloc) taskMemAlloc = nullptr;
    decltype(&SysAllocStringLen) allocStringLen = nullptr;
    decltype(&SysFreeString) freeString = nullptr;
    decltype(&VariantClear) clearVariant = nullptr;
    decltype(&VariantChangeTypeEx) changeVariant = nullptr;
    decltype(&GetLocaleInfoW) getLocaleInfo = nullptr;
    decltype(&GetPrinterDriverW) getPrinterDriver = nullptr;
    decltype(&SetThreadToken) setThreadToken = nullptr;
    decltype(&CoInitializeEx) initialize = nullptr;
    decltype(&CoUninitialize) uninitialize = nullptr;
    decltype(&CoCreateInstance) createInstance = nullptr;
    decltype(&CoFileTimeNow) fileTimeNow = nullptr;
    decltype(&CreateStreamOnHGlobal) createStream = nullptr;
    decltype(&PTOpenProvider) openProvider = nullptr;
    decltype(&PTCloseProvider) closeProvider = nullptr;
    decltype(&PTMergeAndValidatePrintTicket) merge = nullptr;
    decltype(&PTGetPrintCapabilities) getCapabilities = nullptr;
    decltype(&Gdiplus::GdiplusStartup) startGdiplus = nullptr;
    decltype(&Gdiplus::GdiplusShutdown) shutDownGdiplus = nullptr;
    decltype(&flat::GdipCreateMatrix) createMatrix = nullptr;
    decltype(&flat::GdipDeleteMatrix) deleteMatrix = nullptr;
    decltype(&flat::GdipGetMatrixElements) getElements = nullptr;
    decltype(&flat::GdipSetMatrixElements) setElements = nullptr;
    decltype(&flat::GdipRotateMatrix) rotate = nullptr;
    decltype(&flat::GdipScaleMatrix) scale = nullptr;
    decltype(&flat::GdipTransformMatrixPoints) transformPoints = nullptr;
};
System g_system;

// What the replacements share. The lock is never held while the system's own function runs.
struct State {
    std::mutex lock;
    std::uintptr_t base = 0;
    std::uintptr_t size = 0;
    std::array<unsigned, kImports> calls{};
    Import failing = Import::Count;
    unsigned nth = 0;
    bool onwards = false;
    std::function<void()> whenStruck;
    unsigned seen = 0;
    std::vector<std::uintptr_t> failedPath;
    std::string failedCall;
    void* pOperatorNew = nullptr;  // where it has called malloc
    std::size_t recordedPlaces = 0;
    Import recorded = Import::Count;
    std::vector<std::uint64_t> paths;
    std::array<std::multiset<std::uintptr_t>, static_cast<std::size_t>(Resource::Count)> held;
};
State* g_pState = nullptr;

// The places of the module on the calling thread's stack, the innermost first.
std::vector<std::uintptr_t> PathOfCaller(const State& state) {
    std::array<void*, 48> frames{};
    const WORD count = RtlCaptureStackBackTrace(1, static_cast<DWORD>(frames.size()), frames.data(), nullptr);
    std::vector<std::uintptr_t> path;
    for (WORD i = 0; i < count; ++i) {
        const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(frames[i]) - state.base;
        if (offset < state.size) path.push_back(offset);
    }
    return path;
}

std::uint64_t NumberOf(const std::vector<std::uintptr_t>& path, std::size_t places) {
    devkit::common::FnvHash number;
    for (std::size_t i = 0; i < std::min(places, path.size()); ++i) number.Take(path[i]);
    return number.Value();
}

// Counts a call; true when it is to fail.
bool Strikes(Import import) {
    State& state = *g_pState;
    const std::scoped_lock lock(state.lock);
    ++state.calls[static_cast<std::size_t>(import)];
    if (import == state.recorded) state.paths.push_back(NumberOf(PathOfCaller(state), state.recordedPlaces));
    if (import != state.failing) return false;
    ++state.seen;
    if (state.seen == state.nth) state.failedPath = PathOfCaller(state);
    const bool isStruck = state.seen == state.nth || (state.onwards && state.seen > state.nth);
    if (isStruck && state.whenStruck) state.whenStruck();
    return isStruck;
}

template <typename Key>
std::uintptr_t KeyOf(Key key) {
    if constexpr (std::is_pointer_v<Key>) {
        return reinterpret_cast<std::uintptr_t>(key);
    } else {
        return static_cast<std::uintptr_t>(key);
    }
}

template <typename Key>
void Take(Resource resource, Key key) {
    const std::scoped_lock lock(g_pState->lock);
    g_pState->held[static_cast<std::size_t>(resource)].insert(KeyOf(key));
}

// What the module did not take itself is somebody else's account.
template <typename Key>
void GiveBack(Resource resource, Key key) {
    const std::scoped_lock lock(g_pState->lock);
    auto& held = g_pState->held[static_cast<std::size_t>(resource)];
    if (const auto found = held.find(KeyOf(key)); found != held.end()) held.erase(found);
}

// Sees the release that ends an object of the system which the module has made: stands in the virtual table
// of its class.
template <Resource resource>
class LastReleases {
  public:
    static void Watch(IUnknown* pObject) {
        constexpr std::size_t kRelease = 2;
        Take(resource, pObject);
        if (s_pSlot != nullptr) return;
        s_pSlot = *reinterpret_cast<void***>(pObject) + kRelease;
        s_pRelease = reinterpret_cast<Function*>(*s_pSlot);
        Store(reinterpret_cast<void*>(&Release));
    }
    static void Forget() {
        if (s_pSlot != nullptr) Store(reinterpret_cast<void*>(s_pRelease));
        s_pSlot = nullptr;
    }

  private:
    using Function = ULONG STDMETHODCALLTYPE(void*);

    static ULONG STDMETHODCALLTYPE Release(void* pObject) {
        const ULONG left = s_pRelease(pObject);
        if (left == 0) GiveBack(resource, pObject);
        return left;
    }
    static void Store(void* pFunction) {
        DWORD before = 0;
        if (!VirtualProtect(s_pSlot, sizeof(void*), PAGE_READWRITE, &before)) std::abort();
        *s_pSlot = pFunction;
        VirtualProtect(s_pSlot, sizeof(void*), before, &before);
    }

    static inline void** s_pSlot = nullptr;
    static inline Function* s_pRelease = nullptr;
};

bool IsOperatorNew(void* pCaller) {
    const std::scoped_lock lock(g_pState->lock);
    if (g_pState->pOperatorNew == nullptr) g_pState->pOperatorNew = pCaller;
    return g_pState->pOperatorNew == pCaller;
}

void* Malloc(std::size_t size) {
    if (!IsOperatorNew(DEVKIT_CALLER)) return g_system.malloc(size);
    if (Strikes(Import::OperatorNew)) return nullptr;
    void* const pBlock = g_system.malloc(size);
    if (pBlock != nullptr) Take(Resource::HeapBlock, pBlock);
    return pBlock;
}
void Free(void* pBlock) {
    GiveBack(Resource::HeapBlock, pBlock);
    g_system.free(pBlock);
}

void* WINAPI TaskMemAlloc(SIZE_T size) {
    return Strikes(Import::CoTaskMemAlloc) ? nullptr : g_system.taskMemAlloc(size);
}
BSTR WINAPI AllocStringLen(const OLECHAR* text, UINT length) {
    if (Strikes(Import::SysAllocStringLen)) return nullptr;
    const BSTR copy = g_system.allocStringLen(text, length);
    if (copy != nullptr) Take(Resource::Bstr, copy);
    return copy;
}
void WINAPI FreeString(BSTR text) {
    GiveBack(Resource::Bstr, text);
    g_system.freeString(text);
}
HRESULT WINAPI ClearVariant(VARIANT* pVariant) {
    if (pVariant->vt == VT_BSTR) GiveBack(Resource::Bstr, pVariant->bstrVal);
    return g_system.clearVariant(pVariant);
}

HRESULT WINAPI ChangeVariant(VARIANT* pTarget, VARIANT* pSource, LCID locale, USHORT flags, VARTYPE type) {
    return Strikes(Import::VariantChangeTypeEx)
               ? E_OUTOFMEMORY
               : g_system.changeVariant(pTarget, pSource, locale, flags, type);
}
int WINAPI LocaleInfo(LCID locale, LCTYPE type, wchar_t* text, int length) {
    return Strikes(Import::GetLocaleInfoW) ? 0 : g_system.getLocaleInfo(locale, type, text, length);
}
BOOL WINAPI PrinterDriver(HANDLE printer, wchar_t* environment, DWORD level, BYTE* pFacts, DWORD size,
                          DWORD* pNeeded) {
    if (!Strikes(Import::GetPrinterDriverW))
        return g_system.getPrinterDriver(printer, environment, level, pFacts, size, pNeeded);
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

BOOL WINAPI TakeThreadToken(HANDLE* pThread, HANDLE token) {
    if (!Strikes(token == nullptr ? Import::SetThreadTokenGiveBack : Import::SetThreadTokenTake)) {
        return g_system.setThreadToken(pThread, token);
    }
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}
HRESULT WINAPI Initialize(void* pReserved, DWORD mode) {
    if (Strikes(Import::CoInitializeEx)) return kImportFailure;
    const HRESULT hr = g_system.initialize(pReserved, mode);
    if (SUCCEEDED(hr)) Take(Resource::ApartmentEntry, GetCurrentThreadId());
    return hr;
}
void WINAPI Uninitialize() {
    GiveBack(Resource::ApartmentEntry, GetCurrentThreadId());
    g_system.uninitialize();
}
HRESULT WINAPI CreateInstance(REFCLSID clsid, IUnknown* pOuter, DWORD context, REFIID iid, void** ppObject) {
    *ppObject = nullptr;
    if (Strikes(Import::CoCreateInstance)) return kImportFailure;
    const HRESULT hr = g_system.createInstance(clsid, pOuter, context, iid, ppObject);
    if (SUCCEEDED(hr) && IsEqualIID(iid, __uuidof(ISAXXMLReader)))
        LastReleases<Resource::SaxReader>::Watch(static_cast<ISAXXMLReader*>(*ppObject));
    return hr;
}
HRESULT WINAPI FileTimeNow(FILETIME* pTime) {
    return Strikes(Import::CoFileTimeNow) ? kImportFailure : g_system.fileTimeNow(pTime);
}
HRESULT WINAPI CreateStream(HGLOBAL memory, BOOL isFreed, IStream** ppStream) {
    *ppStream = nullptr;
    if (Strikes(Import::CreateStreamOnHGlobal)) return kImportFailure;
    const HRESULT hr = g_system.createStream(memory, isFreed, ppStream);
    if (SUCCEEDED(hr)) LastReleases<Resource::Stream>::Watch(*ppStream);
    return hr;
}

HRESULT WINAPI OpenProvider(const wchar_t* printer, DWORD version, HPTPROVIDER* pProvider) {
    if (Strikes(Import::PTOpenProvider)) return kImportFailure;
    const HRESULT hr = g_system.openProvider(printer, version, pProvider);
    if (SUCCEEDED(hr)) Take(Resource::ProviderHandle, *pProvider);
    return hr;
}
HRESULT WINAPI CloseProvider(HPTPROVIDER provider) {
    GiveBack(Resource::ProviderHandle, provider);
    const HRESULT hr = g_system.closeProvider(provider);
    return Strikes(Import::PTCloseProvider) ? kImportFailure : hr;
}
HRESULT WINAPI Merge(HPTPROVIDER provider, IStream* pBase, IStream* pDelta, EPrintTicketScope scope,
                     IStream* pResult, BSTR* pError) {
    return Strikes(Import::PTMergeAndValidatePrintTicket)
               ? kImportFailure
               : g_system.merge(provider, pBase, pDelta, scope, pResult, pError);
}
HRESULT WINAPI GetCapabilities(HPTPROVIDER provider, IStream* pTicket, IStream* pCapabilities, BSTR* pError) {
    return Strikes(Import::PTGetPrintCapabilities)
               ? kImportFailure
               : g_system.getCapabilities(provider, pTicket, pCapabilities, pError);
}

Gdiplus::Status WINAPI StartGdiplus(ULONG_PTR* pToken, const Gdiplus::GdiplusStartupInput* pInput,
                                    Gdiplus::GdiplusStartupOutput* pOutput) {
    if (Strikes(Import::GdiplusStartup)) return Gdiplus::OutOfMemory;
    const Gdiplus::Status status = g_system.startGdiplus(pToken, pInput, pOutput);
    if (status == Gdiplus::Ok) Take(Resource::GdiplusSession, *pToken);
    return status;
}
void WINAPI ShutDownGdiplus(ULONG_PTR token) {
    GiveBack(Resource::GdiplusSession, token);
    g_system.shutDownGdiplus(token);
}
Gdiplus::Status WINGDIPAPI CreateMatrix(Gdiplus::GpMatrix** ppMatrix) {
    if (Strikes(Import::GdipCreateMatrix)) return Gdiplus::OutOfMemory;
    const Gdiplus::Status status = g_system.createMatrix(ppMatrix);
    if (status == Gdiplus::Ok) Take(Resource::Matrix, *ppMatrix);
    return status;
}
Gdiplus::Status WINGDIPAPI DeleteMatrix(Gdiplus::GpMatrix* pMatrix) {
    GiveBack(Resource::Matrix, pMatrix);
    return g_system.deleteMatrix(pMatrix);
}
// An operation on a matrix.
template <Import Which, auto Function, typename... Arguments>
Gdiplus::Status WINGDIPAPI UseMatrix(Arguments... arguments) {
    return Strikes(Which) ? Gdiplus::OutOfMemory : (g_system.*Function)(arguments...);
}

template <Import Which, auto Function, typename... Arguments>
ImportReplacement ReplaceMatrixUse(Gdiplus::Status(WINGDIPAPI*& pSystem)(Arguments...)) {
    return ReplaceWith(&UseMatrix<Which, Function, Arguments...>, pSystem);
}

const ImportReplacements& Replacements() {
    static const ImportReplacements replacements = {
        {"malloc", ReplaceWith(&Malloc, g_system.malloc)},
        {"free", ReplaceWith(&Free, g_system.free)},
        {"CoTaskMemAlloc", ReplaceWith(&TaskMemAlloc, g_system.taskMemAlloc)},
        {"SysAllocStringLen", ReplaceWith(&AllocStringLen, g_system.allocStringLen)},
        {"SysFreeString", ReplaceWith(&FreeString, g_system.freeString)},
        {"VariantClear", ReplaceWith(&ClearVariant, g_system.clearVariant)},
        {"VariantChangeTypeEx", ReplaceWith(&ChangeVariant, g_system.changeVariant)},
        {"GetLocaleInfoW", ReplaceWith(&LocaleInfo, g_system.getLocaleInfo)},
        {"GetPrinterDriverW", ReplaceWith(&PrinterDriver, g_system.getPrinterDriver)},
        {"SetThreadToken", ReplaceWith(&TakeThreadToken, g_system.setThreadToken)},
        {"CoInitializeEx", ReplaceWith(&Initialize, g_system.initialize)},
        {"CoUninitialize", ReplaceWith(&Uninitialize, g_system.uninitialize)},
        {"CoCreateInstance", ReplaceWith(&CreateInstance, g_system.createInstance)},
        {"CoFileTimeNow", ReplaceWith(&FileTimeNow, g_system.fileTimeNow)},
        {"CreateStreamOnHGlobal", ReplaceWith(&CreateStream, g_system.createStream)},
        {"PTOpenProvider", ReplaceWith(&OpenProvider, g_system.openProvider)},
        {"PTCloseProvider", ReplaceWith(&CloseProvider, g_system.closeProvider)},
        {"PTMergeAndValidatePrintTicket", ReplaceWith(&Merge, g_system.merge)},
        {"PTGetPrintCapabilities", ReplaceWith(&GetCapabilities, g_system.getCapabilities)},
        {"GdiplusStartup", ReplaceWith(&StartGdiplus, g_system.startGdiplus)},
        {"GdiplusShutdown", ReplaceWith(&ShutDownGdiplus, g_system.shutDownGdiplus)},
        {"GdipCreateMatrix", ReplaceWith(&CreateMatrix, g_system.createMatrix)},
        {"GdipDeleteMatrix", ReplaceWith(&DeleteMatrix, g_system.deleteMatrix)},
        {"GdipGetMatrixElements",
         ReplaceMatrixUse<Import::GdipGetMatrixElements, &System::getElements>(g_system.getElements)},
        {"GdipSetMatrixElements",
         ReplaceMatrixUse<Import::GdipSetMatrixElements, &System::setElements>(g_system.setElements)},
        {"GdipRotateMatrix", ReplaceMatrixUse<Import::GdipRotateMatrix, &System::rotate>(g_system.rotate)},
        {"GdipScaleMatrix", ReplaceMatrixUse<Import::GdipScaleMatrix, &System::scale>(g_system.scale)},
        {"GdipTransformMatrixPoints",
         ReplaceMatrixUse<Import::GdipTransformMatrixPoints, &System::transformPoints>(
             g_system.transformPoints)},
    };
    return replacements;
}

}  // namespace

const char* NameOf(Import import) { return kNames.at(static_cast<std::size_t>(import)); }

ImportFaults::ImportFaults(HMODULE module) {
    g_pState = new State;
    g_pState->base = reinterpret_cast<std::uintptr_t>(module);
    g_pState->size = devkit::common::SizeOfImage(module);
    if (devkit::common::ReplaceImports(module, Replacements()) == 0) {
        delete std::exchange(g_pState, nullptr);
        throw std::logic_error("the module imports nothing that can fail");
    }
}

ImportFaults::~ImportFaults() {
    LastReleases<Resource::Stream>::Forget();
    LastReleases<Resource::SaxReader>::Forget();
    delete std::exchange(g_pState, nullptr);
}

void ImportFaults::Fail(Import import, unsigned nth, bool onwards, std::function<void()> whenStruck) {
    const std::scoped_lock lock(g_pState->lock);
    g_pState->failing = import;
    g_pState->nth = nth;
    g_pState->onwards = onwards;
    g_pState->whenStruck = std::move(whenStruck);
    g_pState->seen = 0;
    g_pState->failedPath.clear();
    g_pState->failedCall.clear();
}

bool ImportFaults::HasFailed() const {
    const std::scoped_lock lock(g_pState->lock);
    return g_pState->nth != 0 && g_pState->seen >= g_pState->nth;
}

void ImportFaults::RecordPaths(Import import, std::size_t places) {
    const std::scoped_lock lock(g_pState->lock);
    g_pState->recordedPlaces = places;
    g_pState->recorded = import;
    g_pState->paths.clear();
}

std::vector<std::uint64_t> ImportFaults::Paths() const {
    const std::scoped_lock lock(g_pState->lock);
    return g_pState->paths;
}

std::vector<std::uintptr_t> ImportFaults::FailedPath() const {
    const std::scoped_lock lock(g_pState->lock);
    return g_pState->failedPath;
}

bool ImportFaults::StrikesCallOf(Import import, const char* name, const void* pCaller) {
    if (g_pState == nullptr) return false;
    if (reinterpret_cast<std::uintptr_t>(pCaller) - g_pState->base >= g_pState->size) return false;
    if (!Strikes(import)) return false;
    const std::scoped_lock lock(g_pState->lock);
    if (g_pState->failedCall.empty()) g_pState->failedCall = name;
    return true;
}

std::string ImportFaults::FailedCall() const {
    const std::scoped_lock lock(g_pState->lock);
    return g_pState->failedCall;
}

unsigned ImportFaults::Calls(Import import) const {
    const std::scoped_lock lock(g_pState->lock);
    return g_pState->calls.at(static_cast<std::size_t>(import));
}

bool ImportFaults::Replaces(const std::string& function) { return Replacements().contains(function); }

std::vector<std::string> ImportFaults::LeftOver() const {
    const std::scoped_lock lock(g_pState->lock);
    std::vector<std::string> left;
    for (std::size_t i = 0; i < kResourceNames.size(); ++i) {
        const std::size_t count = g_pState->held[i].size();
        if (count != 0) left.push_back(std::to_string(count) + " " + kResourceNames[i]);
    }
    return left;
}

}  // namespace tests
