#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"
#include "platform/variant.h"

namespace devkit::msxml::tests {

using platform::Bstr;
using platform::ComPtr;
using platform::Variant;

using DocumentPtr = ComPtr<IXMLDOMDocument2>;
using NodePtr = ComPtr<IXMLDOMNode>;
using ElementPtr = ComPtr<IXMLDOMElement>;
using MapPtr = ComPtr<IXMLDOMNamedNodeMap>;
using ListPtr = ComPtr<IXMLDOMNodeList>;

// Whose document a test looks at.
enum class Maker { Kit, System };
void PrintTo(Maker maker, std::ostream* pOut);

// A new document with async off. Fails the test when there is none.
[[nodiscard]] DocumentPtr NewDocument(Maker maker);
// A new document that has loaded the text.
[[nodiscard]] DocumentPtr Parsed(Maker maker, std::wstring_view text);

// Whether the system's document lacks something of what each of a few probes looks for. It is then not the
// one that the tests describe, and those that would meet another known gap skip.
[[nodiscard]] bool SystemHasGaps();

// A test that states what is documented, run for the kit's document and for the system's own.
class Conformance : public testing::TestWithParam<Maker> {
  protected:
    [[nodiscard]] DocumentPtr New() const { return NewDocument(GetParam()); }
    [[nodiscard]] DocumentPtr From(std::wstring_view text) const { return Parsed(GetParam(), text); }
    // A test that meets a known gap of a system's document skips there, and says which.
    [[nodiscard]] bool HasGaps() const { return GetParam() == Maker::System && SystemHasGaps(); }
};

// A test of what only the kit's document promises.
class KitDom : public testing::Test {
  protected:
    [[nodiscard]] static DocumentPtr New() { return NewDocument(Maker::Kit); }
    [[nodiscard]] static DocumentPtr From(std::wstring_view text) { return Parsed(Maker::Kit, text); }
};

[[nodiscard]] std::string MakerName(const testing::TestParamInfo<Maker>& info);

[[nodiscard]] HRESULT LoadText(const DocumentPtr& pDocument, std::wstring_view text);
[[nodiscard]] HRESULT LoadObject(const DocumentPtr& pDocument, IUnknown* pSource);
// The code in parseError.
[[nodiscard]] HRESULT ErrorCode(const DocumentPtr& pDocument);

// Null where the document has no element.
[[nodiscard]] ElementPtr RootOf(const DocumentPtr& pDocument);
[[nodiscard]] MapPtr AttributesOf(IXMLDOMNode* pNode);
[[nodiscard]] ListPtr ChildrenOf(IXMLDOMNode* pNode);
[[nodiscard]] NodePtr ChildAt(IXMLDOMNode* pNode, long index);
[[nodiscard]] NodePtr AttributeOf(IXMLDOMNode* pNode, std::wstring_view name);
// From where the walk stands to its end.
[[nodiscard]] std::vector<std::wstring> NamesByNextNode(const MapPtr& pMap);
[[nodiscard]] std::vector<std::wstring> NamesByNextNode(const ListPtr& pList);

// Texts of properties; "<none>" for S_FALSE with null. The xml of another library's node is without the white
// space between tags, by which some indent what has none.
[[nodiscard]] std::wstring NameOf(IXMLDOMNode* pNode);
[[nodiscard]] std::wstring TextOf(IXMLDOMNode* pNode);
[[nodiscard]] std::wstring XmlOf(IXMLDOMNode* pNode);
[[nodiscard]] std::wstring PrefixOf(IXMLDOMNode* pNode);
[[nodiscard]] std::wstring BaseNameOf(IXMLDOMNode* pNode);
[[nodiscard]] std::wstring UriOf(IXMLDOMNode* pNode);
[[nodiscard]] std::wstring ValueOf(IXMLDOMNode* pNode);

[[nodiscard]] NodePtr MakeNode(const DocumentPtr& pDocument, DOMNodeType type, std::wstring_view name,
                               std::wstring_view uri = {});
// Sets SelectionNamespaces.
void BindPrefixes(const DocumentPtr& pDocument, std::wstring_view declarations);
// The first match; null for S_FALSE. Any other status fails the test.
[[nodiscard]] NodePtr Find(IXMLDOMNode* pNode, std::wstring_view query);
// The names of all matches.
[[nodiscard]] std::vector<std::wstring> FindNames(IXMLDOMNode* pNode, std::wstring_view query);

// A stream with the bytes, standing at its start.
[[nodiscard]] ComPtr<IStream> StreamOf(std::string_view bytes);
// The whole content of a memory stream.
[[nodiscard]] std::string BytesOf(IStream* pStream);
// What save writes into a stream.
[[nodiscard]] std::string Saved(const DocumentPtr& pDocument);

}  // namespace devkit::msxml::tests

// Runs the tests of a suite derived from Conformance for both makers.
#define RUN_FOR_BOTH_MAKERS(suite) \
    INSTANTIATE_TEST_SUITE_P(Dom, suite, testing::Values(Maker::Kit, Maker::System), MakerName)
