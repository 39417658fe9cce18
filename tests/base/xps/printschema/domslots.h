#pragma once

#include "platform/windows.h"

#include <stdexcept>
#include <vector>

#include "base/xml/xmlutility.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

// Functions in the virtual tables of a DOM's classes.
namespace tests {

// IUnknown has 3 and IDispatch 4, then come an interface's own methods in the order of their declaration.
enum DomSlot : std::size_t {
    QueryInterface = 0,
    FirstOwn = 7,
    GetNodeName = FirstOwn,
    GetNodeValue,
    PutNodeValue,
    GetNodeType,
    GetParentNode,
    GetChildNodes,
    GetFirstChild,
    GetLastChild,
    GetPreviousSibling,
    GetNextSibling,
    GetAttributes,
    InsertBefore,
    ReplaceChild,
    RemoveChild,
    AppendChild,
    HasChildNodes,
    GetOwnerDocument,
    CloneNode,
    GetNodeTypeString,
    GetText,
    PutText,
    GetSpecified,
    GetDefinition,
    GetNodeTypedValue,
    PutNodeTypedValue,
    GetDataType,
    PutDataType,
    GetXml,
    TransformNode,
    SelectNodes,
    SelectSingleNode,
    GetParsed,
    GetNamespaceUri,
    GetPrefix,
    GetBaseName,
    TransformNodeToObject,
    FirstOfNodesHeir,
    ElementGetAttribute = FirstOfNodesHeir + 1,
    ElementSetAttribute,
    ElementRemoveAttribute,
    ElementGetAttributeNode,
    ElementSetAttributeNode,
    AttributeGetValue = FirstOfNodesHeir + 1,
    AttributePutValue,
    DocumentGetDocumentElement = FirstOfNodesHeir + 2,
    DocumentPutDocumentElement,
    DocumentCreateElement,
    DocumentCreateTextNode = FirstOfNodesHeir + 6,
    DocumentCreateAttribute = FirstOfNodesHeir + 10,
    DocumentCreateNode = FirstOfNodesHeir + 13,
    DocumentLoad = FirstOfNodesHeir + 15,
    DocumentPutAsync = FirstOfNodesHeir + 20,
    DocumentLoadXml = FirstOfNodesHeir + 22,
    DocumentSave,
    DocumentSetProperty = FirstOfNodesHeir + 33 + 4,
    ListGetItem = FirstOwn,
    ListGetLength,
    ListNextNode,
    ListReset,
    MapGetNamedItem = FirstOwn,
    MapSetNamedItem,
    MapRemoveNamedItem,
    MapGetItem,
    MapGetLength,
    MapGetQualifiedItem,
    MapRemoveQualifiedItem,
    MapNextNode,
    MapReset,
    StreamSeek = 5,
};

// Replaces functions for every object of a class, until it is destroyed. One at a time.
class VtablePatches {
  public:
    VtablePatches() = default;
    VtablePatches(const VtablePatches&) = delete;
    VtablePatches& operator=(const VtablePatches&) = delete;
    ~VtablePatches() {
        for (const Patch& patch : m_patches) Store(patch.pSlot, patch.original);
    }

    // The function that stood there; null, and nothing is replaced, when this slot has been replaced already,
    // because two kinds of objects share a table.
    template <typename Function>
    Function* Replace(IUnknown* pObject, std::size_t slot, Function* replacement) {
        void** const pSlot = *reinterpret_cast<void***>(pObject) + slot;
        for (const Patch& patch : m_patches) {
            if (patch.pSlot == pSlot) return nullptr;
        }
        m_patches.push_back({pSlot, *pSlot});
        Store(pSlot, reinterpret_cast<void*>(replacement));
        return reinterpret_cast<Function*>(m_patches.back().original);
    }

  private:
    struct Patch {
        void** pSlot;
        void* original;
    };

    static void Store(void** pSlot, void* function) {
        DWORD before = 0;
        if (!VirtualProtect(pSlot, sizeof(void*), PAGE_READWRITE, &before))
            throw std::runtime_error("a virtual table cannot be changed");
        *pSlot = function;
        VirtualProtect(pSlot, sizeof(void*), before, &before);
    }

    std::vector<Patch> m_patches;
};

// One object of each of a DOM's classes: the kit's or the system's, whichever CreateDom gives.
struct DomObjects {
    DomObjects() {
        using platform::Bstr;
        platform::ComPtr<IXMLDOMNode> pNode;
        const bool isComplete =
            pDocument->get_documentElement(pElement.Put()) == S_OK &&
            pElement->get_attributes(pMap.Put()) == S_OK && pMap->get_item(0, pNode.Put()) == S_OK &&
            pNode.QueryTo(pAttribute) == S_OK && pElement->get_firstChild(pText.Put()) == S_OK &&
            pDocument->selectNodes(Bstr(L"//a").Get(), pSelected.Put()) == S_OK &&
            pDocument->get_childNodes(pChildren.Put()) == S_OK && pDocument.QueryTo(pStream) == S_OK;
        if (!isComplete) throw std::runtime_error("the DOM lacks a kind of object");
    }

    platform::ComPtr<IXMLDOMDocument2> pDocument = base::xml::LoadDomFromString(L"<a b='c'>text</a>");
    platform::ComPtr<IXMLDOMElement> pElement;
    platform::ComPtr<IXMLDOMNamedNodeMap> pMap;
    platform::ComPtr<IXMLDOMAttribute> pAttribute;
    platform::ComPtr<IXMLDOMNode> pText;
    platform::ComPtr<IXMLDOMNodeList> pSelected;
    platform::ComPtr<IXMLDOMNodeList> pChildren;
    platform::ComPtr<IStream> pStream;
};

}  // namespace tests
