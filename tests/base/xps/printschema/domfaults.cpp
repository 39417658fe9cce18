#include "domfaults.h"

#include <optional>

#include "devkit/common/caller.h"
#include "domslots.h"

namespace tests {
namespace {

// Two kinds of objects whose functions may be different ones in the same slot.
enum class Kind { Document, Element, Attribute, Text, Selected, Children, Map, Stream };

std::optional<VtablePatches> g_patches;
std::size_t g_calls = 0;
std::size_t g_failing = 0;
HRESULT g_code = S_OK;
std::optional<DomCall> g_only;
DomStrike g_strikes = nullptr;

[[nodiscard]] bool IsCounted(DomCall call) noexcept { return !g_only || *g_only == call; }

// Stands in a slot of the virtual table of one kind of object.
template <Kind kind, std::size_t slot, DomCall call, typename... Arguments>
struct Thunk {
    using Function = HRESULT STDMETHODCALLTYPE(void*, Arguments...);
    static inline Function* s_pOriginal = nullptr;
    static inline const char* s_name = "";

    static HRESULT STDMETHODCALLTYPE Call(void* self, Arguments... arguments) {
        if (g_strikes != nullptr ? g_strikes(s_name, DEVKIT_CALLER)
                                 : IsCounted(call) && ++g_calls == g_failing) {
            return g_code;
        }
        return s_pOriginal(self, arguments...);
    }

    static void Install(IUnknown* pObject, const char* name) {
        s_name = name;
        if (Function* const pOriginal = g_patches->Replace(pObject, slot, &Call)) s_pOriginal = pOriginal;
    }
};

template <Kind kind>
struct Installer {
    IUnknown* pObject;

    template <std::size_t slot, typename... Arguments>
    void Any(const char* name) const {
        Thunk<kind, slot, DomCall::Other, Arguments...>::Install(pObject, name);
    }
    template <std::size_t slot, DomCall call, typename... Arguments>
    void Named(const char* name) const {
        Thunk<kind, slot, call, Arguments...>::Install(pObject, name);
    }

    void Node() const {
        Named<GetNodeName, DomCall::GetNodeName, BSTR*>("get_nodeName");
        Any<GetNodeValue, VARIANT*>("get_nodeValue");
        Any<PutNodeValue, VARIANT>("put_nodeValue");
        Any<GetNodeType, DOMNodeType*>("get_nodeType");
        Named<GetParentNode, DomCall::GetParentNode, IXMLDOMNode**>("get_parentNode");
        Any<GetChildNodes, IXMLDOMNodeList**>("get_childNodes");
        Any<GetFirstChild, IXMLDOMNode**>("get_firstChild");
        Any<GetLastChild, IXMLDOMNode**>("get_lastChild");
        Any<GetPreviousSibling, IXMLDOMNode**>("get_previousSibling");
        Any<GetNextSibling, IXMLDOMNode**>("get_nextSibling");
        Named<GetAttributes, DomCall::GetAttributes, IXMLDOMNamedNodeMap**>("get_attributes");
        Any<InsertBefore, IXMLDOMNode*, VARIANT, IXMLDOMNode**>("insertBefore");
        Any<ReplaceChild, IXMLDOMNode*, IXMLDOMNode*, IXMLDOMNode**>("replaceChild");
        Any<RemoveChild, IXMLDOMNode*, IXMLDOMNode**>("removeChild");
        Any<AppendChild, IXMLDOMNode*, IXMLDOMNode**>("appendChild");
        Any<HasChildNodes, VARIANT_BOOL*>("hasChildNodes");
        Any<GetOwnerDocument, IXMLDOMDocument**>("get_ownerDocument");
        Any<CloneNode, VARIANT_BOOL, IXMLDOMNode**>("cloneNode");
        Named<GetText, DomCall::GetText, BSTR*>("get_text");
        Any<PutText, BSTR>("put_text");
        Named<GetNodeTypedValue, DomCall::GetNodeTypedValue, VARIANT*>("get_nodeTypedValue");
        Any<PutNodeTypedValue, VARIANT>("put_nodeTypedValue");
        Named<SelectNodes, DomCall::Select, BSTR, IXMLDOMNodeList**>("selectNodes");
        Named<SelectSingleNode, DomCall::Select, BSTR, IXMLDOMNode**>("selectSingleNode");
        Any<GetNamespaceUri, BSTR*>("get_namespaceURI");
        Any<GetPrefix, BSTR*>("get_prefix");
        Any<GetBaseName, BSTR*>("get_baseName");
    }
    void List() const {
        Named<ListGetItem, DomCall::GetItem, LONG, IXMLDOMNode**>("IXMLDOMNodeList::get_item");
        Any<ListGetLength, LONG*>("IXMLDOMNodeList::get_length");
        Named<ListNextNode, DomCall::NextNode, IXMLDOMNode**>("IXMLDOMNodeList::nextNode");
        Named<ListReset, DomCall::Reset>("IXMLDOMNodeList::reset");
    }
};

void InstallInDocument(IXMLDOMDocument2* pDocument, Saves saves) {
    const Installer<Kind::Document> document{pDocument};
    document.Node();
    document.Any<DocumentGetDocumentElement, IXMLDOMElement**>("get_documentElement");
    document.Any<DocumentPutDocumentElement, IXMLDOMElement*>("put_documentElement");
    document.Any<DocumentCreateElement, BSTR, IXMLDOMElement**>("createElement");
    document.Any<DocumentCreateTextNode, BSTR, IXMLDOMText**>("createTextNode");
    document.Named<DocumentCreateAttribute, DomCall::CreateAttribute, BSTR, IXMLDOMAttribute**>(
        "createAttribute");
    document.Any<DocumentCreateNode, VARIANT, BSTR, BSTR, IXMLDOMNode**>("createNode");
    document.Any<DocumentLoad, VARIANT, VARIANT_BOOL*>("load");
    document.Any<DocumentLoadXml, BSTR, VARIANT_BOOL*>("loadXML");
    document.Any<DocumentPutAsync, VARIANT_BOOL>("put_async");
    document.Named<DocumentSetProperty, DomCall::SetProperty, BSTR, VARIANT>("setProperty");
    if (saves == Saves::Counted) document.Any<DocumentSave, VARIANT>("save");
}

void InstallInMap(IXMLDOMNamedNodeMap* pMap) {
    const Installer<Kind::Map> map{pMap};
    map.Any<MapGetNamedItem, BSTR, IXMLDOMNode**>("getNamedItem");
    map.Named<MapSetNamedItem, DomCall::SetNamedItem, IXMLDOMNode*, IXMLDOMNode**>("setNamedItem");
    map.Any<MapRemoveNamedItem, BSTR, IXMLDOMNode**>("removeNamedItem");
    map.Named<MapGetItem, DomCall::GetItem, LONG, IXMLDOMNode**>("IXMLDOMNamedNodeMap::get_item");
    map.Any<MapGetLength, LONG*>("IXMLDOMNamedNodeMap::get_length");
    map.Any<MapGetQualifiedItem, BSTR, BSTR, IXMLDOMNode**>("getQualifiedItem");
    map.Named<MapNextNode, DomCall::NextNode, IXMLDOMNode**>("IXMLDOMNamedNodeMap::nextNode");
    map.Named<MapReset, DomCall::Reset>("IXMLDOMNamedNodeMap::reset");
}

void InstallInDom(const DomObjects& objects, Saves saves) {
    g_patches.emplace();
    InstallInDocument(objects.pDocument.Get(), saves);
    const Installer<Kind::Element> element{objects.pElement.Get()};
    element.Node();
    element.Any<ElementGetAttribute, BSTR, VARIANT*>("getAttribute");
    element.Any<ElementSetAttribute, BSTR, VARIANT>("setAttribute");
    element.Any<ElementGetAttributeNode, BSTR, IXMLDOMAttribute**>("getAttributeNode");
    element.Any<ElementSetAttributeNode, IXMLDOMAttribute*, IXMLDOMAttribute**>("setAttributeNode");
    const Installer<Kind::Attribute> attribute{objects.pAttribute.Get()};
    attribute.Node();
    attribute.Any<AttributeGetValue, VARIANT*>("get_value");
    attribute.Named<AttributePutValue, DomCall::PutValue, VARIANT>("put_value");
    Installer<Kind::Text>{objects.pText.Get()}.Node();
    Installer<Kind::Selected>{objects.pSelected.Get()}.List();
    Installer<Kind::Children>{objects.pChildren.Get()}.List();
    InstallInMap(objects.pMap.Get());
    Installer<Kind::Stream>{objects.pStream.Get()}.Any<StreamSeek, LARGE_INTEGER, DWORD, ULARGE_INTEGER*>(
        "IStream::Seek");
}

template <Kind kind>
void InstallQuery(IUnknown* pObject) {
    Installer<kind>{pObject}.template Any<QueryInterface, REFIID, void**>("QueryInterface");
}

void InstallQueries(const DomObjects& objects) {
    InstallQuery<Kind::Document>(objects.pDocument.Get());
    InstallQuery<Kind::Element>(objects.pElement.Get());
    InstallQuery<Kind::Attribute>(objects.pAttribute.Get());
    InstallQuery<Kind::Text>(objects.pText.Get());
    InstallQuery<Kind::Selected>(objects.pSelected.Get());
    InstallQuery<Kind::Children>(objects.pChildren.Get());
    InstallQuery<Kind::Map>(objects.pMap.Get());
    InstallQuery<Kind::Stream>(objects.pStream.Get());
}

void Start(std::optional<DomCall> only, std::size_t nth, HRESULT code, Saves saves) {
    InstallInDom(DomObjects(), saves);
    g_only = only;
    g_strikes = nullptr;
    g_calls = 0;
    g_failing = nth;
    g_code = code;
}

}  // namespace

DomFaults::DomFaults(std::size_t nth, HRESULT code, Saves saves) { Start(std::nullopt, nth, code, saves); }

DomFaults::DomFaults(DomCall only, std::size_t nth, HRESULT code) { Start(only, nth, code, Saves::Counted); }

DomFaults::DomFaults(DomStrike strikes, HRESULT code) {
    const DomObjects objects;
    InstallInDom(objects, Saves::Counted);
    InstallQueries(objects);
    g_strikes = strikes;
    g_code = code;
}

DomFaults::~DomFaults() { g_patches.reset(); }

std::size_t DomFaults::Calls() const noexcept { return g_calls; }

bool DomFaults::HasFailed() const noexcept { return g_failing != 0 && g_calls >= g_failing; }

}  // namespace tests
