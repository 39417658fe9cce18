#include "devkit/pipeline/filtermodule.h"

#include <utility>

#include "devkit/common/hresult.h"
#include "devkit/pipeline/loadproblem.h"
#include "devkit/pipeline/threadsinside.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

// A function of the module by its name. The detour keeps the conversion out of reach of the warning that two
// function types differ, which is what every exported function does from FARPROC.
template <typename Function>
Function Exported(HMODULE module, const char* name, const std::string& moduleName) {
    void* address = reinterpret_cast<void*>(GetProcAddress(module, name));
    if (address == nullptr) {
        throw FilterError(moduleName + " does not export " + name, HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND));
    }
    return reinterpret_cast<Function>(address);
}

}  // namespace

FilterModule::FilterModule(const std::filesystem::path& dll, const CLSID& clsid)
    : m_name(platform::ToUtf8(dll.filename().wstring())), m_clsid(clsid) {
    const std::wstring path = std::filesystem::absolute(dll).wstring();
    // The DLL's own folder is searched for what it needs, as the pipeline's host does.
    m_module.reset(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (m_module == nullptr) {
        const DWORD error = GetLastError();
        throw FilterError(platform::ToUtf8(path) + " " + LoadProblem(path, error), HRESULT_FROM_WIN32(error));
    }
    m_getClassObject = Exported<ClassObjectGetter>(m_module.get(), "DllGetClassObject", m_name);
    m_canUnload = Exported<CanUnload>(m_module.get(), "DllCanUnloadNow", m_name);
}

ComPtr<IPrintPipelineFilter> FilterModule::CreateFilter() {
    ComPtr<IUnknown> classObject;
    HRESULT hr = m_getClassObject(m_clsid, __uuidof(IClassFactory), classObject.PutVoid());
    if (FAILED(hr)) hr = m_getClassObject(m_clsid, __uuidof(IPrintPipelineFilter), classObject.PutVoid());
    if (FAILED(hr) || !classObject) {
        throw FilterError(m_name + ": DllGetClassObject answers " + common::Describe(hr),
                          FAILED(hr) ? hr : E_POINTER);
    }
    ComPtr<IPrintPipelineFilter> filter;
    ComPtr<IClassFactory> factory;
    if (SUCCEEDED(classObject.QueryTo(factory))) {
        hr = factory->CreateInstance(nullptr, __uuidof(IPrintPipelineFilter), filter.PutVoid());
    } else {
        hr = classObject.QueryTo(filter);
    }
    if (FAILED(hr) || !filter) {
        throw FilterError(m_name + ": the filter cannot be created: " + common::Describe(hr),
                          FAILED(hr) ? hr : E_POINTER);
    }
    return filter;
}

HRESULT FilterModule::CanUnloadNow() { return m_canUnload(); }

std::size_t FilterModule::ThreadsLeft() {
    constexpr int kLooks = 20;
    constexpr DWORD kBetween = 25;  // ms
    std::size_t count = CountThreadsInside(m_module.get());
    for (int look = 1; count != 0 && look < kLooks; ++look) {
        Sleep(kBetween);
        count = CountThreadsInside(m_module.get());
    }
    if (count == 0) return 0;
    HMODULE pinned = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(m_module.get()), &pinned);
    return count;
}

}  // namespace devkit::pipeline
