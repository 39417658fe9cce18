#include "domfaults.h"

#include <optional>

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

[[nodiscard]] bool IsCounted(DomCall call) noexcept { return !g_only || *g_only == call; }

// Stands in a slot of the virtual table of one kind of object.
template <Kind kind, std::size_t slot, DomCall call, typename... Arguments>
struct Thunk {
    using Function = HRESULT STDMETHODCALLTYPE(void*, Arguments...);
    static inline Function* s_pOriginal = nullptr;

    static HRESULT STDMETHODCALLTYPE Call(void* self, Arguments... arguments) {
        if (IsCounted(call) && ++g_calls == g_failing) return g_code;
        return s_pOriginal(self, arguments...);
    }

    static void Install(IUnknown* pObject) {
        if (Function* const pOriginal = g_patches->Replace(pObject, slot, &Call)) s_pOriginal = pOriginal;
    }
};

template <Kind kind>
struct Installer {
    IUnknown* pObject;

    template <std::size_t slot, typename... Arguments>
    void Any() const {
        Thunk<kind, slot, DomCall::Other, Arguments...>::Install(pObject);
    }
    template <std::size_t slot, DomCall call, typename... Arguments>
    void Named() const {
        Thunk<kind, slot, call, Arguments...>::Install(pObject);
    }

    void Node() const {
        Named<GetNodeName, DomCall::GetNodeName, BSTR*>();
        Any<GetNodeValue, VARIANT*>();
        Any<PutNodeValue, VARIANT>();
        Any<GetNodeType, DOMNodeType*>();
        Named<GetParentNode, DomCall::GetParentNode, IXMLDOMNode**>();
        Any<GetChildNodes, IXMLDOMNodeList**>();
        Any<GetFirstChild, IXMLDOMNode**>();
        Any<GetLastChild, IXMLDOMNode**>();
        Any<GetPreviousSibling, IXMLDOMNode**>();
        Any<GetNextSibling, IXMLDOMNode**>();
        Named<GetAttributes, DomCall::GetAttributes, IXMLDOMNamedNodeMap**>();
        Any<InsertBefore, IXMLDOMNode*, VARIANT, IXMLDOMNode**>();
        Any<ReplaceChild, IXMLDOMNode*, IXMLDOMNode*, IXMLDOMNode**>();
        Any<RemoveChild, IXMLDOMNode*, IXMLDOMNode**>();
        Any<AppendChild, IXMLDOMNode*, IXMLDOMNode**>();
        Any<HasChildNodes, VARIANT_BOOL*>();
        Any<GetOwnerDocument, IXMLDOMDocument**>();
        Any<CloneNode, VARIANT_BOOL, IXMLDOMNode**>();
        Named<GetText, DomCall::GetText, BSTR*>();
        Any<PutText, BSTR>();
        Named<GetNodeTypedValue, DomCall::GetNodeTypedValue, VARIANT*>();
        Any<PutNodeTypedValue, VARIANT>();
        Named<SelectNodes, DomCall::Select, BSTR, IXMLDOMNodeList**>();
        Named<SelectSingleNode, DomCall::Select, BSTR, IXMLDOMNode**>();
        Any<GetNamespaceUri, BSTR*>();
        Any<GetPrefix, BSTR*>();
        Any<GetBaseName, BSTR*>();
    }
    void List() const {
        Named<ListGetItem, DomCall::GetItem, LONG, IXMLDOMNode**>();
        Any<ListGetLength, LONG*>();
        Named<ListNextNode, DomCall::NextNode, IXMLDOMNode**>();
        Named<ListReset, DomCall::Reset>();
    }
};

void InstallInDocument(IXMLDOMDocument2* pDocument, Saves saves) {
    const Installer<Kind::Document> document{pDocument};
    document.Node();
    document.Any<DocumentGetDocumentElement, IXMLDOMElement**>();
    document.Any<DocumentPutDocumentElement, IXMLDOMElement*>();
    document.Any<DocumentCreateElement, BSTR, IXMLDOMElement**>();
    document.Any<DocumentCreateTextNode, BSTR, IXMLDOMText**>();
    document.Named<DocumentCreateAttribute, DomCall::CreateAttribute, BSTR, IXMLDOMAttribute**>();
    document.Any<DocumentCreateNode, VARIANT, BSTR, BSTR, IXMLDOMNode**>();
    document.Any<DocumentLoad, VARIANT, VARIANT_BOOL*>();
    document.Any<DocumentLoadXml, BSTR, VARIANT_BOOL*>();
    document.Any<DocumentPutAsync, VARIANT_BOOL>();
    document.Named<DocumentSetProperty, DomCall::SetProperty, BSTR, VARIANT>();
    if (saves == Saves::Counted) document.Any<DocumentSave, VARIANT>();
}

void InstallInMap(IXMLDOMNamedNodeMap* pMap) {
    const Installer<Kind::Map> map{pMap};
    map.Any<MapGetNamedItem, BSTR, IXMLDOMNode**>();
    map.Named<MapSetNamedItem, DomCall::SetNamedItem, IXMLDOMNode*, IXMLDOMNode**>();
    map.Any<MapRemoveNamedItem, BSTR, IXMLDOMNode**>();
    map.Named<MapGetItem, DomCall::GetItem, LONG, IXMLDOMNode**>();
    map.Any<MapGetLength, LONG*>();
    map.Any<MapGetQualifiedItem, BSTR, BSTR, IXMLDOMNode**>();
    map.Named<MapNextNode, DomCall::NextNode, IXMLDOMNode**>();
    map.Named<MapReset, DomCall::Reset>();
}

void InstallInDom(Saves saves) {
    const DomObjects objects;
    g_patches.emplace();
    InstallInDocument(objects.pDocument.Get(), saves);
    const Installer<Kind::Element> element{objects.pElement.Get()};
    element.Node();
    element.Any<ElementGetAttribute, BSTR, VARIANT*>();
    element.Any<ElementSetAttribute, BSTR, VARIANT>();
    element.Any<ElementGetAttributeNode, BSTR, IXMLDOMAttribute**>();
    element.Any<ElementSetAttributeNode, IXMLDOMAttribute*, IXMLDOMAttribute**>();
    const Installer<Kind::Attribute> attribute{objects.pAttribute.Get()};
    attribute.Node();
    attribute.Any<AttributeGetValue, VARIANT*>();
    attribute.Named<AttributePutValue, DomCall::PutValue, VARIANT>();
    Installer<Kind::Text>{objects.pText.Get()}.Node();
    Installer<Kind::Selected>{objects.pSelected.Get()}.List();
    Installer<Kind::Children>{objects.pChildren.Get()}.List();
    InstallInMap(objects.pMap.Get());
    Installer<Kind::Stream>{objects.pStream.Get()}.Any<StreamSeek, LARGE_INTEGER, DWORD, ULARGE_INTEGER*>();
}

void Start(std::optional<DomCall> only, std::size_t nth, HRESULT code, Saves saves) {
    InstallInDom(saves);
    g_only = only;
    g_calls = 0;
    g_failing = nth;
    g_code = code;
}

}  // namespace

DomFaults::DomFaults(std::size_t nth, HRESULT code, Saves saves) { Start(std::nullopt, nth, code, saves); }

DomFaults::DomFaults(DomCall only, std::size_t nth, HRESULT code) { Start(only, nth, code, Saves::Counted); }

DomFaults::~DomFaults() { g_patches.reset(); }

std::size_t DomFaults::Calls() const noexcept { return g_calls; }

bool DomFaults::HasFailed() const noexcept { return g_failing != 0 && g_calls >= g_failing; }

}  // namespace tests
