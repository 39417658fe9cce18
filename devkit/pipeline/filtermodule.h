#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// A filter that cannot be loaded or made.
class FilterError : public std::runtime_error {
  public:
    FilterError(const std::string& message, HRESULT hr) : std::runtime_error(message), m_hr(hr) {}
    [[nodiscard]] HRESULT GetHresult() const noexcept { return m_hr; }

  private:
    HRESULT m_hr;
};

// Where filters come from.
class FilterSource {
  public:
    virtual ~FilterSource() = default;
    // A new filter. Throws FilterError.
    [[nodiscard]] virtual platform::ComPtr<IPrintPipelineFilter> CreateFilter() = 0;
    // Whether the module may be unloaded: what its DllCanUnloadNow answers.
    [[nodiscard]] virtual HRESULT CanUnloadNow() = 0;
    // How many threads of the filters' own are still at work in the module. Waits a moment for those that are
    // about to end; when there are any then, the module stays loaded for good.
    [[nodiscard]] virtual std::size_t ThreadsLeft() { return 0; }
};

// A filter DLL, loaded by its full path. Filters are made through DllGetClassObject, IClassFactory and
// IPrintPipelineFilter; a module whose DllGetClassObject gives out the filter itself, as old ones do, is
// taken as well. The DLL is unloaded when the object is destroyed, which must be after the last release of
// all that it made.
class FilterModule final : public FilterSource {
  public:
    // Throws FilterError when the DLL cannot be loaded or lacks an export.
    FilterModule(const std::filesystem::path& dll, const CLSID& clsid);

    [[nodiscard]] platform::ComPtr<IPrintPipelineFilter> CreateFilter() override;
    [[nodiscard]] HRESULT CanUnloadNow() override;
    [[nodiscard]] std::size_t ThreadsLeft() override;
    // What the module's DllGetClassObject answers.
    [[nodiscard]] HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** ppObject) const {
        return m_getClassObject(clsid, iid, ppObject);
    }

  private:
    struct Unload {
        void operator()(HMODULE module) const noexcept { FreeLibrary(module); }
    };
    using ClassObjectGetter = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    using CanUnload = HRESULT(STDAPICALLTYPE*)();

    std::string m_name;
    CLSID m_clsid;
    std::unique_ptr<std::remove_pointer_t<HMODULE>, Unload> m_module;
    ClassObjectGetter m_getClassObject = nullptr;
    CanUnload m_canUnload = nullptr;
};

}  // namespace devkit::pipeline
