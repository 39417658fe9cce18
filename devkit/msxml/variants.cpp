#include "devkit/msxml/variants.h"

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/comtext.h"

namespace devkit::msxml {

namespace {

// OLE Automation only reads its sources, whatever some of its declarations say.
VARIANT* Source(const VARIANT& value) noexcept { return const_cast<VARIANT*>(&value); }

}  // namespace

void Convert(const VARIANT& value, VARTYPE type, platform::Variant& target) {
    ThrowIfFailed(VariantChangeTypeEx(target.Put(), Source(value), LOCALE_INVARIANT, 0, type));
}

void CopyDirect(const VARIANT& value, platform::Variant& target) {
    ThrowIfFailed(VariantCopyInd(target.Put(), Source(value)));
}

std::wstring TextOf(const VARIANT& value) {
    if (value.vt == VT_BSTR) return std::wstring(View(value.bstrVal));
    platform::Variant text;
    Convert(value, VT_BSTR, text);
    return std::wstring(View(text.Text()));
}

}  // namespace devkit::msxml
