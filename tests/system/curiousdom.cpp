#include "curiousdom.h"

#include <mutex>
#include <optional>

#include "domslots.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

namespace systemtest {
namespace {

using Load = HRESULT STDMETHODCALLTYPE(void*, VARIANT, VARIANT_BOOL*);
using Save = HRESULT STDMETHODCALLTYPE(void*, VARIANT);

std::optional<tests::VtablePatches> g_patches;
Load* g_load = nullptr;
Save* g_save = nullptr;
std::mutex g_lock;
std::set<std::wstring> g_names;

// S_OK when there is no stream, or one without a name.
HRESULT AskForName(const VARIANT& place) {
    const bool isObject = V_VT(&place) == VT_UNKNOWN || V_VT(&place) == VT_DISPATCH;
    platform::ComPtr<IStream> stream;
    if (!isObject || FAILED(V_UNKNOWN(&place)->QueryInterface(__uuidof(IStream), stream.PutVoid())))
        return S_OK;
    STATSTG facts = {};
    const HRESULT hr = stream->Stat(&facts, STATFLAG_DEFAULT);
    if (FAILED(hr) || facts.pwcsName == nullptr) return hr;
    const std::scoped_lock lock(g_lock);
    g_names.emplace(facts.pwcsName);
    CoTaskMemFree(facts.pwcsName);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE LoadNamed(void* self, VARIANT source, VARIANT_BOOL* pIsLoaded) {
    const HRESULT hr = AskForName(source);
    if (SUCCEEDED(hr)) return g_load(self, source, pIsLoaded);
    if (pIsLoaded != nullptr) *pIsLoaded = VARIANT_FALSE;
    return hr;
}

HRESULT STDMETHODCALLTYPE SaveNamed(void* self, VARIANT target) {
    const HRESULT hr = AskForName(target);
    return SUCCEEDED(hr) ? g_save(self, target) : hr;
}

}  // namespace

CuriousDom::CuriousDom() {
    const tests::DomObjects objects;
    g_names.clear();
    g_patches.emplace();
    g_load = g_patches->Replace(objects.pDocument.Get(), tests::DocumentLoad, &LoadNamed);
    g_save = g_patches->Replace(objects.pDocument.Get(), tests::DocumentSave, &SaveNamed);
}

CuriousDom::~CuriousDom() { g_patches.reset(); }

std::set<std::wstring> CuriousDom::Names() const {
    const std::scoped_lock lock(g_lock);
    return g_names;
}

}  // namespace systemtest
