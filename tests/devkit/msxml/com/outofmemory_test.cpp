#include <functional>

#include "devkit/msxml/com/domdocument.h"
#include "devkit/msxml/domundertest.h"
#include "failingallocation.h"

namespace devkit::msxml::tests {
namespace {

constexpr const wchar_t* kText =
    L"<?xml version=\"1.0\" encoding=\"utf-8\"?><p:a xmlns:p=\"urn:a rather long namespace\" name=\"a rather "
    L"long value\">"
    L"<b>text that is long enough</b><!--a comment of some length--><?target and its data, "
    L"too?><![CDATA[<and this>]]></p:a>";

// Fails each allocation of the call in turn, until it works with none failing. A call may end with S_OK or
// E_OUTOFMEMORY, and what it leaves must be sound.
void FailEachAllocation(const std::function<HRESULT()>& call, const std::function<void(HRESULT)>& check) {
    for (long nth = 1;; ++nth) {
        ASSERT_LT(nth, 10'000);
        const long before = LiveObjectCount();
        HRESULT result = S_OK;
        bool hasFailed = false;
        {
            const ::tests::FailingAllocation failing(nth);
            result = call();
            hasFailed = failing.HasFailed();
        }
        ASSERT_TRUE(result == S_OK || (hasFailed && result == E_OUTOFMEMORY)) << std::hex << result;
        ASSERT_TRUE(result == S_OK || LiveObjectCount() <= before)
            << LiveObjectCount() - before << " objects are left";
        check(result);
        if (!hasFailed) {
            EXPECT_EQ(S_OK, result);
            EXPECT_GT(nth, 1);
            return;
        }
    }
}

using OutOfMemory = KitDom;

TEST_F(OutOfMemory, Creating) {
    FailEachAllocation(
        [] {
            ComPtr<IUnknown> pObject;
            return CreateDomDocument(__uuidof(IUnknown), pObject.PutVoid());
        },
        [](HRESULT) { EXPECT_EQ(0, LiveObjectCount()); });
}

TEST_F(OutOfMemory, Loading) {
    const DocumentPtr pDocument = New();
    const Bstr source(kText);
    FailEachAllocation(
        [&] { return pDocument->loadXML(source.Get(), nullptr); },
        [&](HRESULT result) { EXPECT_EQ(result == S_OK, static_cast<bool>(RootOf(pDocument))); });
}

TEST_F(OutOfMemory, LoadingFromAStream) {
    const DocumentPtr pDocument = New();
    const std::string bytes = Saved(From(kText));
    FailEachAllocation(
        [&] {
            const ComPtr<IStream> pStream = StreamOf(bytes);
            return pDocument->load(Variant(pStream.Get()).Get(), nullptr);
        },
        [&](HRESULT result) { EXPECT_EQ(result == S_OK, static_cast<bool>(RootOf(pDocument))); });
}

TEST_F(OutOfMemory, Saving) {
    const DocumentPtr pDocument = From(kText);
    FailEachAllocation(
        [&] {
            const ComPtr<IStream> pStream = StreamOf({});
            return pDocument->save(Variant(pStream.Get()).Get());
        },
        [](HRESULT) {});
}

TEST_F(OutOfMemory, ReadingAsAStream) {
    const DocumentPtr pDocument = From(kText);
    FailEachAllocation(
        [&]() -> HRESULT {
            ComPtr<IStream> pStream;
            const HRESULT result = pDocument.QueryTo(pStream);
            if (FAILED(result)) return result;
            char byte = 0;
            return pStream->Read(&byte, 1, nullptr);
        },
        [](HRESULT) {});
}

TEST_F(OutOfMemory, Markup) {
    const DocumentPtr pDocument = From(kText);
    FailEachAllocation(
        [&] {
            Bstr xml;
            return pDocument->get_xml(xml.Put());
        },
        [](HRESULT) {});
}

TEST_F(OutOfMemory, Cloning) {
    const DocumentPtr pDocument = From(kText);
    FailEachAllocation(
        [&] {
            NodePtr pClone;
            return pDocument->cloneNode(VARIANT_TRUE, pClone.Put());
        },
        [](HRESULT) {});
}

TEST_F(OutOfMemory, Selecting) {
    const DocumentPtr pDocument = From(kText);
    BindPrefixes(pDocument, L"xmlns:p='urn:a rather long namespace'");
    const ElementPtr pRoot = RootOf(pDocument);
    // The first is answered on the tree, the second by the XML library.
    for (const wchar_t* expression : {L"//p:a[@name = 'a rather long value']/b", L"//p:a[@name]/b"}) {
        const Bstr query(expression);
        FailEachAllocation(
            [&]() -> HRESULT {
                // A change, so that XPath's view of the tree is made anew.
                const HRESULT result = pRoot->put_nodeTypedValue(Variant(LONG{1}).Get());
                if (FAILED(result)) return result;
                ListPtr pList;
                return pDocument->selectNodes(query.Get(), pList.Put());
            },
            [](HRESULT) {});
    }
}

TEST_F(OutOfMemory, Building) {
    const DocumentPtr pDocument = From(kText);
    const ElementPtr pRoot = RootOf(pDocument);
    const Bstr name(L"p:a-rather-long-name");
    const Bstr uri(L"urn:another long namespace");
    const Variant type(LONG{NODE_ELEMENT});
    const Bstr value(L"a text that does not fit anywhere");
    FailEachAllocation(
        [&]() -> HRESULT {
            NodePtr pNode;
            HRESULT result = pDocument->createNode(type.Get(), name.Get(), uri.Get(), pNode.Put());
            if (SUCCEEDED(result)) result = pNode->put_text(value.Get());
            return result;
        },
        [](HRESULT) {});
}

TEST_F(OutOfMemory, SettingAnAttribute) {
    const DocumentPtr pDocument = From(kText);
    const ElementPtr pRoot = RootOf(pDocument);
    const Bstr name(L"p:a-rather-long-name");
    const Variant value(std::wstring_view(L"and a rather long value"));
    FailEachAllocation([&] { return pRoot->setAttribute(name.Get(), value.Get()); },
                       [&](HRESULT) {
                           long length = 0;
                           ASSERT_EQ(S_OK, AttributesOf(pRoot.Get())->get_length(&length));
                           EXPECT_TRUE(length == 2 || length == 3);
                           ASSERT_TRUE(SUCCEEDED(pRoot->removeAttribute(name.Get())));
                       });
}

TEST_F(OutOfMemory, ListsMapsAndErrors) {
    const DocumentPtr pDocument = From(kText);
    FailEachAllocation(
        [&] {
            ListPtr pList;
            return pDocument->get_childNodes(pList.Put());
        },
        [](HRESULT) {});
    const ElementPtr pRoot = RootOf(pDocument);
    FailEachAllocation(
        [&] {
            MapPtr pMap;
            return pRoot->get_attributes(pMap.Put());
        },
        [](HRESULT) {});
    FailEachAllocation(
        [&] {
            ComPtr<IXMLDOMParseError> pError;
            return pDocument->get_parseError(pError.Put());
        },
        [](HRESULT) {});
    FailEachAllocation(
        [&] {
            return pDocument->setProperty(
                Bstr(L"SelectionNamespaces").Get(),
                Variant(std::wstring_view(L"xmlns:prefix='urn:some long namespace'")).Get());
        },
        [](HRESULT) {});
}

}  // namespace
}  // namespace devkit::msxml::tests
