#include "base/xps/filterpipeline/driverpropertybag.h"

#include "platform/variant.h"

namespace base::xps::filterpipeline {

using platform::Bstr;

DriverPropertyBag::DriverPropertyBag(IPrintPipelinePropertyBag* pPipelineBag) {
    platform::Variant value;
    if (FAILED(pPipelineBag->GetProperty(L"DriverPropertyBag", value.Put()))) return;
    // The interface itself, because an object's identity pointer need not be it.
    if (FAILED(platform::ComPtr<IUnknown>(value.Unknown()).QueryTo(m_pBag))) m_pBag.Reset();
}

std::optional<LONG> DriverPropertyBag::ReadInt32(const wchar_t* name) const {
    LONG value = 0;
    if (!m_pBag || FAILED(m_pBag->GetInt32(Bstr(name).Get(), &value))) return std::nullopt;
    return value;
}

Bstr DriverPropertyBag::ReadString(const wchar_t* name) const {
    Bstr value;
    if (!m_pBag || FAILED(m_pBag->GetString(Bstr(name).Get(), value.Put()))) return Bstr();
    return value;
}

}  // namespace base::xps::filterpipeline
