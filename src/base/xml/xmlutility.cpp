#include "base/xml/xmlutility.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "base/logging/check.h"
#include "platform/bstr.h"
#include "platform/utf.h"
#include "platform/variant.h"

namespace base::xml {

using logging::ThrowHresult;
using logging::ThrowIfFailed;
using logging::ThrowIfNull;
using platform::ComPtr;

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

// A load that fails to parse is a success code with the flag false; either shows it.
[[nodiscard]] bool IsLoaded(HRESULT loaded, VARIANT_BOOL wellFormed) noexcept {
    return loaded == S_OK && wellFormed == VARIANT_TRUE;
}

[[nodiscard]] std::string ReadFromStart(IStream* pStream) {
    STATSTG facts = {};
    ThrowIfFailed(pStream->Stat(&facts, STATFLAG_NONAME));
    ThrowIfFailed(pStream->Seek({}, STREAM_SEEK_SET, nullptr));
    if (facts.cbSize.HighPart != 0) ThrowHresult(E_OUTOFMEMORY);
    std::string bytes(facts.cbSize.LowPart, '\0');
    ULONG read = 0;
    ThrowIfFailed(pStream->Read(bytes.data(), facts.cbSize.LowPart, &read));
    bytes.resize(read);
    return bytes;
}

[[nodiscard]] std::wstring WidenUtf16(std::string_view bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

[[nodiscard]] std::wstring Widen(std::string_view bytes) {
    if (bytes.starts_with(kUtf16Mark)) return WidenUtf16(bytes.substr(kUtf16Mark.size()));
    if (bytes.starts_with(kUtf8Mark)) return platform::ToUtf16(bytes.substr(kUtf8Mark.size()));
    const bool isUtf16WithoutMark = bytes.size() >= 2 && bytes[0] == '<' && bytes[1] == '\0';
    return isUtf16WithoutMark ? WidenUtf16(bytes) : platform::ToUtf16(bytes);
}

}  // namespace

ComPtr<IXMLDOMDocument2> CreateDom() {
    ComPtr<IXMLDOMDocument2> pDom;
    ThrowIfFailed(CoCreateInstance(platform::CLSID_DomDocument60, nullptr, CLSCTX_INPROC_SERVER,
                                   __uuidof(IXMLDOMDocument2), pDom.PutVoid()));
    ThrowIfFailed(pDom->put_async(VARIANT_FALSE));
    return pDom;
}

ComPtr<IXMLDOMDocument2> LoadDom(const VARIANT& source) {
    ComPtr<IXMLDOMDocument2> pDom = CreateDom();
    VARIANT_BOOL wellFormed = VARIANT_FALSE;
    const HRESULT loaded = pDom->load(source, &wellFormed);
    ThrowIfFailed(loaded);
    if (!IsLoaded(loaded, wellFormed)) ThrowHresult(E_FAIL);
    return pDom;
}

ComPtr<IXMLDOMDocument2> LoadDomFromString(std::wstring_view text) {
    ComPtr<IXMLDOMDocument2> pDom = CreateDom();
    const platform::Bstr xml(text);
    VARIANT_BOOL wellFormed = VARIANT_FALSE;
    const HRESULT loaded = pDom->loadXML(xml.Get(), &wellFormed);
    ThrowIfFailed(loaded);
    if (!IsLoaded(loaded, wellFormed)) ThrowHresult(E_FAIL);
    return pDom;
}

std::wstring DomToString(IXMLDOMDocument2* pDom) {
    ThrowIfNull(pDom, "pDom is null.");
    ComPtr<IStream> pStream;
    ThrowIfFailed(CreateStreamOnHGlobal(nullptr, TRUE, pStream.Put()));
    const platform::Variant target(static_cast<IUnknown*>(pStream.Get()));
    ThrowIfFailed(pDom->save(target.Get()));
    return Widen(ReadFromStart(pStream.Get()));
}

}  // namespace base::xml
