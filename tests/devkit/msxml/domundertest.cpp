#include "devkit/msxml/domundertest.h"

#include <array>
#include <regex>

#include "devkit/msxml/com/domdocument.h"
#include "devkit/msxml/com/domregistration.h"
#include "devkit/msxml/com/facade.h"

namespace devkit::msxml::tests {

namespace {

// The text that a getter of the node gives.
template <typename Getter>
std::wstring TextFrom(IXMLDOMNode* pNode, Getter getter) {
    EXPECT_NE(nullptr, pNode);
    if (pNode == nullptr) return L"<null>";
    Bstr text;
    const HRESULT result = (pNode->*getter)(text.Put());
    EXPECT_TRUE(result == S_OK || (result == S_FALSE && text.Get() == nullptr)) << std::hex << result;
    return result == S_OK ? std::wstring(text.View()) : L"<none>";
}

template <typename NodesPtr>
std::vector<std::wstring> WalkedNames(const NodesPtr& pNodes) {
    std::vector<std::wstring> names;
    NodePtr pNode;
    HRESULT result = pNodes->nextNode(pNode.Put());
    for (; result == S_OK; result = pNodes->nextNode(pNode.Put())) names.push_back(NameOf(pNode.Get()));
    EXPECT_EQ(S_FALSE, result);
    EXPECT_FALSE(pNode);
    return names;
}

}  // namespace

void PrintTo(Maker maker, std::ostream* pOut) { *pOut << (maker == Maker::Kit ? "Kit" : "System"); }

DocumentPtr NewDocument(Maker maker) {
    DocumentPtr pDocument;
    const HRESULT result =
        maker == Maker::Kit ? CreateDomDocument(__uuidof(IXMLDOMDocument2), pDocument.PutVoid())
                            : CoCreateInstance(platform::CLSID_DomDocument60, nullptr, CLSCTX_INPROC_SERVER,
                                               __uuidof(IXMLDOMDocument2), pDocument.PutVoid());
    EXPECT_EQ(S_OK, result);
    EXPECT_EQ(S_OK, pDocument->put_async(VARIANT_FALSE));
    return pDocument;
}

DocumentPtr Parsed(Maker maker, std::wstring_view text) {
    DocumentPtr pDocument = NewDocument(maker);
    EXPECT_EQ(S_OK, LoadText(pDocument, text));
    return pDocument;
}

bool SystemHasGaps() {
    static const bool hasGaps = [] {
        if (!SystemDomConforms()) return true;
        const DocumentPtr pDocument = NewDocument(Maker::System);
        VARIANT_BOOL flag = VARIANT_FALSE;
        ComPtr<IXMLDOMDocument> pOwner;
        Variant value;
        const bool isWhole =
            pDocument->get_validateOnParse(&flag) == S_OK && flag == VARIANT_TRUE &&
            pDocument->get_ownerDocument(pOwner.Put()) == S_FALSE &&
            pDocument->getProperty(Bstr(L"MaxElementDepth").Get(), value.Put()) == S_OK &&
            pDocument->load(Variant().Get(), &flag) == E_INVALIDARG &&
            LoadText(pDocument, L"<?xml version=\"1.0\" encoding=\"utf-16\"?><a/>") == S_OK &&
            Saved(pDocument).substr(0, 2) == "\xFF\xFE";
        return !isWhole;
    }();
    return hasGaps;
}

std::string MakerName(const testing::TestParamInfo<Maker>& info) {
    return testing::PrintToString(info.param);
}

HRESULT LoadText(const DocumentPtr& pDocument, std::wstring_view text) {
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    const HRESULT result = pDocument->loadXML(Bstr(text).Get(), &isLoaded);
    EXPECT_EQ(result == S_OK ? VARIANT_TRUE : VARIANT_FALSE, isLoaded);
    return result;
}

HRESULT LoadObject(const DocumentPtr& pDocument, IUnknown* pSource) {
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    const HRESULT result = pDocument->load(Variant(pSource).Get(), &isLoaded);
    EXPECT_EQ(result == S_OK ? VARIANT_TRUE : VARIANT_FALSE, isLoaded);
    return result;
}

HRESULT ErrorCode(const DocumentPtr& pDocument) {
    ComPtr<IXMLDOMParseError> pError;
    EXPECT_EQ(S_OK, pDocument->get_parseError(pError.Put()));
    long code = 0;
    const HRESULT result = pError->get_errorCode(&code);
    EXPECT_EQ(code == 0 ? S_FALSE : S_OK, result);
    return code;
}

ElementPtr RootOf(const DocumentPtr& pDocument) {
    ElementPtr pRoot;
    const HRESULT result = pDocument->get_documentElement(pRoot.Put());
    EXPECT_EQ(pRoot ? S_OK : S_FALSE, result);
    return pRoot;
}

MapPtr AttributesOf(IXMLDOMNode* pNode) {
    MapPtr pMap;
    EXPECT_EQ(S_OK, pNode->get_attributes(pMap.Put()));
    return pMap;
}

ListPtr ChildrenOf(IXMLDOMNode* pNode) {
    ListPtr pList;
    EXPECT_EQ(S_OK, pNode->get_childNodes(pList.Put()));
    return pList;
}

NodePtr ChildAt(IXMLDOMNode* pNode, long index) {
    NodePtr pChild;
    EXPECT_EQ(S_OK, ChildrenOf(pNode)->get_item(index, pChild.Put()));
    return pChild;
}

NodePtr AttributeOf(IXMLDOMNode* pNode, std::wstring_view name) {
    NodePtr pAttribute;
    EXPECT_EQ(S_OK, AttributesOf(pNode)->getNamedItem(Bstr(name).Get(), pAttribute.Put()));
    return pAttribute;
}

std::vector<std::wstring> NamesByNextNode(const MapPtr& pMap) { return WalkedNames(pMap); }

std::vector<std::wstring> NamesByNextNode(const ListPtr& pList) { return WalkedNames(pList); }

std::wstring NameOf(IXMLDOMNode* pNode) { return TextFrom(pNode, &IXMLDOMNode::get_nodeName); }

std::wstring TextOf(IXMLDOMNode* pNode) { return TextFrom(pNode, &IXMLDOMNode::get_text); }

std::wstring XmlOf(IXMLDOMNode* pNode) {
    const std::wstring xml = TextFrom(pNode, &IXMLDOMNode::get_xml);
    return NodeOf(pNode) ? xml : std::regex_replace(xml, std::wregex(L">\\s+(<|$)"), L">$1");
}

std::wstring PrefixOf(IXMLDOMNode* pNode) { return TextFrom(pNode, &IXMLDOMNode::get_prefix); }

std::wstring BaseNameOf(IXMLDOMNode* pNode) { return TextFrom(pNode, &IXMLDOMNode::get_baseName); }

std::wstring UriOf(IXMLDOMNode* pNode) { return TextFrom(pNode, &IXMLDOMNode::get_namespaceURI); }

std::wstring ValueOf(IXMLDOMNode* pNode) {
    Variant value;
    const HRESULT result = pNode->get_nodeValue(value.Put());
    EXPECT_TRUE((result == S_OK && value.Type() == VT_BSTR) ||
                (result == S_FALSE && value.Type() == VT_NULL));
    return result == S_OK ? std::wstring(value.Text(), SysStringLen(value.Text())) : L"<none>";
}

NodePtr MakeNode(const DocumentPtr& pDocument, DOMNodeType type, std::wstring_view name,
                 std::wstring_view uri) {
    NodePtr pNode;
    EXPECT_EQ(S_OK, pDocument->createNode(Variant(static_cast<LONG>(type)).Get(), Bstr(name).Get(),
                                          Bstr(uri).Get(), pNode.Put()));
    return pNode;
}

void BindPrefixes(const DocumentPtr& pDocument, std::wstring_view declarations) {
    EXPECT_EQ(S_OK, pDocument->setProperty(Bstr(L"SelectionNamespaces").Get(), Variant(declarations).Get()));
}

NodePtr Find(IXMLDOMNode* pNode, std::wstring_view query) {
    NodePtr pFound;
    const HRESULT result = pNode->selectSingleNode(Bstr(query).Get(), pFound.Put());
    EXPECT_EQ(pFound ? S_OK : S_FALSE, result);
    return pFound;
}

std::vector<std::wstring> FindNames(IXMLDOMNode* pNode, std::wstring_view query) {
    ListPtr pList;
    EXPECT_EQ(S_OK, pNode->selectNodes(Bstr(query).Get(), pList.Put()));
    std::vector<std::wstring> names;
    if (!pList) return names;
    long length = 0;
    EXPECT_EQ(S_OK, pList->get_length(&length));
    for (long i = 0; i < length; ++i) {
        NodePtr pFound;
        EXPECT_EQ(S_OK, pList->get_item(i, pFound.Put()));
        names.push_back(NameOf(pFound.Get()));
    }
    return names;
}

ComPtr<IStream> StreamOf(std::string_view bytes) {
    ComPtr<IStream> pStream;
    EXPECT_EQ(S_OK, CreateStreamOnHGlobal(nullptr, TRUE, pStream.Put()));
    ULONG written = 0;
    EXPECT_EQ(S_OK, pStream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written));
    EXPECT_EQ(S_OK, pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
    return pStream;
}

std::string BytesOf(IStream* pStream) {
    EXPECT_EQ(S_OK, pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
    std::string bytes;
    std::array<char, 4096> block;
    for (;;) {
        ULONG count = 0;
        const HRESULT result = pStream->Read(block.data(), static_cast<ULONG>(block.size()), &count);
        EXPECT_TRUE(SUCCEEDED(result));
        if (FAILED(result) || count == 0) return bytes;
        bytes.append(block.data(), count);
    }
}

std::string Saved(const DocumentPtr& pDocument) {
    const ComPtr<IStream> pStream = StreamOf({});
    EXPECT_EQ(S_OK, pDocument->save(Variant(pStream.Get()).Get()));
    return BytesOf(pStream.Get());
}

}  // namespace devkit::msxml::tests
