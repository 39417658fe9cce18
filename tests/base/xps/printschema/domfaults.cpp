#include "domfaults.h"

#include <stdexcept>
#include <vector>

#include "base/xml/xmlutility.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

namespace tests {
namespace {

using platform::Bstr;
using platform::ComPtr;

// Slots of the virtual tables: IUnknown has 3 and IDispatch 4, then come an interface's own methods in the
// order of their declaration.
enum Slot : std::size_t {
    FirstOwn = 7,
    StreamSeek = 5,
    GetNodeName = FirstOwn,
    GetNodeValue = FirstOwn + 1,
    GetParentNode = FirstOwn + 4,
    GetChildNodes = FirstOwn + 5,
    GetAttributes = FirstOwn + 10,
    RemoveChild = FirstOwn + 13,
    AppendChild = FirstOwn + 14,
    HasChildNodes = FirstOwn + 15,
    CloneNode = FirstOwn + 17,
    GetText = FirstOwn + 19,
    PutText = FirstOwn + 20,
    GetNodeTypedValue = FirstOwn + 23,
    SelectNodes = FirstOwn + 29,
    SelectSingleNode = FirstOwn + 30,
    FirstOfNodesHeir = FirstOwn + 36,
    ElementSetAttributeNode = FirstOfNodesHeir + 5,
    AttributePutValue = FirstOfNodesHeir + 2,
    DocumentGetDocumentElement = FirstOfNodesHeir + 2,
    DocumentCreateAttribute = FirstOfNodesHeir + 10,
    DocumentCreateNode = FirstOfNodesHeir + 13,
    DocumentLoad = FirstOfNodesHeir + 15,
    DocumentPutAsync = FirstOfNodesHeir + 20,
    DocumentSave = FirstOfNodesHeir + 23,
    DocumentSetProperty = FirstOfNodesHeir + 33 + 4,
    ListGetItem = FirstOwn,
    ListGetLength = FirstOwn + 1,
    MapGetNamedItem = FirstOwn,
    MapSetNamedItem = FirstOwn + 1,
    MapNextNode = FirstOwn + 7,
    MapReset = FirstOwn + 8,
};

enum class Kind { Document, Element, Attribute, List, ChildList, Map, Stream };

struct Patch {
    void** pSlot;
    void* original;
};

std::vector<Patch> s_patches;
std::size_t s_calls = 0;
std::size_t s_failing = 0;
HRESULT s_code = S_OK;

void Store(void** pSlot, void* function) {
    DWORD before = 0;
    if (!VirtualProtect(pSlot, sizeof(void*), PAGE_READWRITE, &before))
        throw std::runtime_error("a virtual table cannot be changed");
    *pSlot = function;
    VirtualProtect(pSlot, sizeof(void*), before, &before);
}

// Stands in a slot of the virtual table of one kind of object.
template <Kind kind, std::size_t slot, typename... Arguments>
struct Thunk {
    using Function = HRESULT STDMETHODCALLTYPE(void*, Arguments...);
    static inline Function* s_pOriginal = nullptr;

    static HRESULT STDMETHODCALLTYPE Call(void* self, Arguments... arguments) {
        if (++s_calls == s_failing) return s_code;
        return s_pOriginal(self, arguments...);
    }

    static void Install(IUnknown* pObject) {
        void** const pSlot = *reinterpret_cast<void***>(pObject) + slot;
        s_pOriginal = reinterpret_cast<Function*>(*pSlot);
        s_patches.push_back({pSlot, *pSlot});
        Store(pSlot, reinterpret_cast<void*>(&Call));
    }
};

template <Kind kind>
void InstallInNode(IXMLDOMNode* pNode) {
    Thunk<kind, GetNodeName, BSTR*>::Install(pNode);
    Thunk<kind, GetNodeValue, VARIANT*>::Install(pNode);
    Thunk<kind, GetParentNode, IXMLDOMNode**>::Install(pNode);
    Thunk<kind, GetChildNodes, IXMLDOMNodeList**>::Install(pNode);
    Thunk<kind, GetAttributes, IXMLDOMNamedNodeMap**>::Install(pNode);
    Thunk<kind, RemoveChild, IXMLDOMNode*, IXMLDOMNode**>::Install(pNode);
    Thunk<kind, AppendChild, IXMLDOMNode*, IXMLDOMNode**>::Install(pNode);
    Thunk<kind, HasChildNodes, VARIANT_BOOL*>::Install(pNode);
    Thunk<kind, CloneNode, VARIANT_BOOL, IXMLDOMNode**>::Install(pNode);
    Thunk<kind, GetText, BSTR*>::Install(pNode);
    Thunk<kind, PutText, BSTR>::Install(pNode);
    Thunk<kind, GetNodeTypedValue, VARIANT*>::Install(pNode);
    Thunk<kind, SelectNodes, BSTR, IXMLDOMNodeList**>::Install(pNode);
    Thunk<kind, SelectSingleNode, BSTR, IXMLDOMNode**>::Install(pNode);
}

template <Kind kind>
void InstallInList(IXMLDOMNodeList* pList) {
    Thunk<kind, ListGetItem, LONG, IXMLDOMNode**>::Install(pList);
    Thunk<kind, ListGetLength, LONG*>::Install(pList);
}

[[nodiscard]] bool ShareTable(IUnknown* pFirst, IUnknown* pSecond) {
    return *reinterpret_cast<void***>(pFirst) == *reinterpret_cast<void***>(pSecond);
}

void InstallInDom(Saves saves) {
    const ComPtr<IXMLDOMDocument2> pDocument = base::xml::LoadDomFromString(L"<a b='c'/>");
    ComPtr<IXMLDOMElement> pElement;
    ComPtr<IXMLDOMNamedNodeMap> pMap;
    ComPtr<IXMLDOMNode> pNode;
    ComPtr<IXMLDOMAttribute> pAttribute;
    ComPtr<IXMLDOMNodeList> pList;
    ComPtr<IXMLDOMNodeList> pChildren;
    ComPtr<IStream> pStream;
    const bool isComplete = pDocument->get_documentElement(pElement.Put()) == S_OK &&
                            pElement->get_attributes(pMap.Put()) == S_OK &&
                            pMap->get_item(0, pNode.Put()) == S_OK && pNode.QueryTo(pAttribute) == S_OK &&
                            pDocument->selectNodes(Bstr(L"//a").Get(), pList.Put()) == S_OK &&
                            pDocument->get_childNodes(pChildren.Put()) == S_OK &&
                            pDocument.QueryTo(pStream) == S_OK;
    if (!isComplete) throw std::runtime_error("the DOM lacks a kind of object");

    InstallInNode<Kind::Document>(pDocument.Get());
    Thunk<Kind::Document, DocumentGetDocumentElement, IXMLDOMElement**>::Install(pDocument.Get());
    Thunk<Kind::Document, DocumentCreateAttribute, BSTR, IXMLDOMAttribute**>::Install(pDocument.Get());
    Thunk<Kind::Document, DocumentCreateNode, VARIANT, BSTR, BSTR, IXMLDOMNode**>::Install(pDocument.Get());
    Thunk<Kind::Document, DocumentLoad, VARIANT, VARIANT_BOOL*>::Install(pDocument.Get());
    Thunk<Kind::Document, DocumentPutAsync, VARIANT_BOOL>::Install(pDocument.Get());
    if (saves == Saves::Counted) Thunk<Kind::Document, DocumentSave, VARIANT>::Install(pDocument.Get());
    Thunk<Kind::Document, DocumentSetProperty, BSTR, VARIANT>::Install(pDocument.Get());
    InstallInNode<Kind::Element>(pElement.Get());
    Thunk<Kind::Element, ElementSetAttributeNode, IXMLDOMAttribute*, IXMLDOMAttribute**>::Install(
        pElement.Get());
    InstallInNode<Kind::Attribute>(pAttribute.Get());
    Thunk<Kind::Attribute, AttributePutValue, VARIANT>::Install(pAttribute.Get());
    Thunk<Kind::Stream, StreamSeek, LARGE_INTEGER, DWORD, ULARGE_INTEGER*>::Install(pStream.Get());
    InstallInList<Kind::List>(pList.Get());
    if (!ShareTable(pChildren.Get(), pList.Get())) InstallInList<Kind::ChildList>(pChildren.Get());
    Thunk<Kind::Map, MapGetNamedItem, BSTR, IXMLDOMNode**>::Install(pMap.Get());
    Thunk<Kind::Map, MapSetNamedItem, IXMLDOMNode*, IXMLDOMNode**>::Install(pMap.Get());
    Thunk<Kind::Map, MapNextNode, IXMLDOMNode**>::Install(pMap.Get());
    Thunk<Kind::Map, MapReset>::Install(pMap.Get());
}

}  // namespace

DomFaults::DomFaults(std::size_t nth, HRESULT code, Saves saves) {
    InstallInDom(saves);
    s_calls = 0;
    s_failing = nth;
    s_code = code;
}

DomFaults::~DomFaults() {
    for (const Patch& patch : s_patches) Store(patch.pSlot, patch.original);
    s_patches.clear();
}

bool DomFaults::HasFailed() const noexcept { return s_failing != 0 && s_calls >= s_failing; }

}  // namespace tests
