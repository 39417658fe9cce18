#include "saxfaults.h"

#include <optional>
#include <stdexcept>

#include "base/xps/fixedpagesaxhandlerbase.h"
#include "devkit/common/caller.h"
#include "domslots.h"
#include "platform/bstr.h"
#include "platform/comobject.h"
#include "platform/msxml6.h"
#include "platform/variant.h"

namespace systemtest {
namespace {

using platform::ComPtr;

std::optional<tests::VtablePatches> g_readerPatches;
SaxStrike g_strikes = nullptr;
HRESULT g_code = S_OK;

// IUnknown has 3, then come an interface's own methods in the order of their declaration.
enum SaxSlot : std::size_t {
    ReaderPutContentHandler = 10,
    ReaderParse = 19,
    AttributesGetLength = 3,
    AttributesGetName = 7,
    AttributesGetValue = 13,
};

template <typename Interface, std::size_t slot, typename... Arguments>
struct Thunk {
    using Function = HRESULT STDMETHODCALLTYPE(void*, Arguments...);
    static inline Function* s_pOriginal = nullptr;
    static inline const char* s_name = "";

    static HRESULT STDMETHODCALLTYPE Call(void* self, Arguments... arguments) {
        return g_strikes(s_name, DEVKIT_CALLER) ? g_code : s_pOriginal(self, arguments...);
    }

    static void Install(Interface* pObject, const char* name) {
        s_name = name;
        if (Function* const pOriginal = g_readerPatches->Replace(pObject, slot, &Call))
            s_pOriginal = pOriginal;
    }
};

void InstallInAttributes(ISAXAttributes* pAttributes) {
    Thunk<ISAXAttributes, AttributesGetLength, int*>::Install(pAttributes, "getLength");
    Thunk<ISAXAttributes, AttributesGetName, int, const wchar_t**, int*, const wchar_t**, int*,
          const wchar_t**, int*>::Install(pAttributes, "getName");
    Thunk<ISAXAttributes, AttributesGetValue, int, const wchar_t**, int*>::Install(pAttributes, "getValue");
}

// The attributes live as long as the call.
class AttributesHandler final : public base::xps::FixedPageSaxHandlerBase {
  public:
    HRESULT STDMETHODCALLTYPE startElement(const wchar_t*, int, const wchar_t*, int, const wchar_t*, int,
                                           ISAXAttributes* pAttributes) override {
        InstallInAttributes(pAttributes);
        wasCalled = true;
        return S_OK;
    }

    bool wasCalled = false;
};

}  // namespace

SaxFaults::SaxFaults(SaxStrike strikes, HRESULT code) {
    g_strikes = strikes;
    g_code = code;
    g_readerPatches.emplace();
    ComPtr<ISAXXMLReader> pReader;
    const auto pHandler = platform::MakeObject<AttributesHandler>();
    const platform::Variant markup(std::wstring_view(L"<a b='c'/>"));
    const bool isRead = SUCCEEDED(CoCreateInstance(platform::CLSID_SaxXmlReader60, nullptr, CLSCTX_ALL,
                                                   __uuidof(ISAXXMLReader), pReader.PutVoid())) &&
                        SUCCEEDED(pReader->putContentHandler(pHandler.Get())) &&
                        SUCCEEDED(pReader->parse(markup.Get())) && pHandler->wasCalled;
    if (!isRead) throw std::runtime_error("the SAX reader reads nothing");
    static_cast<void>(pReader->putContentHandler(nullptr));
    Thunk<ISAXXMLReader, ReaderPutContentHandler, ISAXContentHandler*>::Install(pReader.Get(),
                                                                                "putContentHandler");
    Thunk<ISAXXMLReader, ReaderParse, VARIANT>::Install(pReader.Get(), "parse");
}

SaxFaults::~SaxFaults() { g_readerPatches.reset(); }

}  // namespace systemtest
