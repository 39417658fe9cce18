#include "devkit/msxml/domimplementation.h"

#include "devkit/msxml/comtext.h"

namespace devkit::msxml {

namespace {

bool Equals(std::wstring_view a, std::wstring_view b) noexcept {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                                TRUE) == CSTR_EQUAL;
}

}  // namespace

HRESULT DomImplementation::hasFeature(BSTR feature, BSTR version, VARIANT_BOOL* pHas) {
    if (pHas == nullptr || feature == nullptr) return E_INVALIDARG;
    const std::wstring_view name = View(feature);
    const std::wstring_view wanted = View(version);
    const bool isOwn = Equals(name, L"MS-DOM");
    const bool isKnown = isOwn || Equals(name, L"XML") || Equals(name, L"DOM");
    const bool isVersion = wanted.empty() || wanted == L"1.0" || (isOwn && wanted == L"2.0");
    *pHas = isKnown && isVersion ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

}  // namespace devkit::msxml
