#include <cstdlib>
#include <functional>
#include <limits>
#include <new>

#include "devkit/msxml/domdocument.h"
#include "devkit/msxml/domundertest.h"

namespace {

constexpr long never = std::numeric_limits<long>::max();

// How many allocations of this program still work; the one after them fails, later ones work again.
long allocationsLeft = never;

}  // namespace

// The program's own allocation, so that a test can make any one of them fail.
void* operator new(std::size_t size) {
    if (allocationsLeft != never && allocationsLeft-- == 0) {
        allocationsLeft = never;
        throw std::bad_alloc();
    }
    void* const pBlock = std::malloc(size == 0 ? 1 : size);
    if (pBlock == nullptr) throw std::bad_alloc();
    return pBlock;
}
void operator delete(void* pBlock) noexcept { std::free(pBlock); }
void operator delete(void* pBlock, std::size_t) noexcept { std::free(pBlock); }

namespace devkit::msxml::tests {
namespace {

constexpr const wchar_t* text =
    L"<?xml version=\"1.0\" encoding=\"utf-8\"?><p:a xmlns:p=\"urn:a rather long namespace\" name=\"a rather "
    L"long value\">"
    L"<b>text that is long enough</b><!--a comment of some length--><?target and its data, "
    L"too?><![CDATA[<and this>]]></p:a>";

// Fails each allocation of the call in turn, until it works with none failing. A call may end with S_OK or
// E_OUTOFMEMORY, and what it leaves must be sound.
void FailEachAllocation(const std::function<HRESULT()>& call, const std::function<void(HRESULT)>& check) {
    for (long working = 0;; ++working) {
        ASSERT_LT(working, 10'000);
        const long before = LiveObjectCount();
        allocationsLeft = working;
        const HRESULT result = call();
        const bool hasFailed = allocationsLeft == never;
        allocationsLeft = never;
        ASSERT_TRUE(result == S_OK || (hasFailed && result == E_OUTOFMEMORY)) << std::hex << result;
        ASSERT_TRUE(result == S_OK || LiveObjectCount() <= before)
            << LiveObjectCount() - before << " objects are left";
        check(result);
        if (!hasFailed) {
            EXPECT_EQ(result, S_OK);
            EXPECT_GT(working, 0);
            return;
        }
    }
}

class OutOfMemory : public KitDom {
  protected:
    ~OutOfMemory() override { allocationsLeft = never; }
};

TEST_F(OutOfMemory, Creating) {
    FailEachAllocation(
        [] {
            ComPtr<IUnknown> pObject;
            return CreateDomDocument(__uuidof(IUnknown), pObject.PutVoid());
        },
        [](HRESULT) { EXPECT_EQ(LiveObjectCount(), 0); });
}

TEST_F(OutOfMemory, Loading) {
    const DocumentPtr pDocument = New();
    const Bstr source(text);
    FailEachAllocation(
        [&] { return pDocument->loadXML(source.Get(), nullptr); },
        [&](HRESULT result) { EXPECT_EQ(static_cast<bool>(RootOf(pDocument)), result == S_OK); });
}

TEST_F(OutOfMemory, LoadingFromAStream) {
    const DocumentPtr pDocument = New();
    const std::string bytes = Saved(From(text));
    FailEachAllocation(
        [&] {
            const ComPtr<IStream> pStream = StreamOf(bytes);
            return pDocument->load(Variant(pStream.Get()).Get(), nullptr);
        },
        [&](HRESULT result) { EXPECT_EQ(static_cast<bool>(RootOf(pDocument)), result == S_OK); });
}

TEST_F(OutOfMemory, Saving) {
    const DocumentPtr pDocument = From(text);
    FailEachAllocation(
        [&] {
            const ComPtr<IStream> pStream = StreamOf({});
            return pDocument->save(Variant(pStream.Get()).Get());
        },
        [](HRESULT) {});
}

TEST_F(OutOfMemory, ReadingAsAStream) {
    const DocumentPtr pDocument = From(text);
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
    const DocumentPtr pDocument = From(text);
    FailEachAllocation(
        [&] {
            Bstr xml;
            return pDocument->get_xml(xml.Put());
        },
        [](HRESULT) {});
}

TEST_F(OutOfMemory, Cloning) {
    const DocumentPtr pDocument = From(text);
    FailEachAllocation(
        [&] {
            NodePtr pClone;
            return pDocument->cloneNode(VARIANT_TRUE, pClone.Put());
        },
        [](HRESULT) {});
}

TEST_F(OutOfMemory, Selecting) {
    const DocumentPtr pDocument = From(text);
    BindPrefixes(pDocument, L"xmlns:p='urn:a rather long namespace'");
    const ElementPtr pRoot = RootOf(pDocument);
    const Bstr query(L"//p:a[@name = 'a rather long value']/b");
    FailEachAllocation(
        [&]() -> HRESULT {
            // A change, so that XPath's view of the tree is made anew.
            const HRESULT result = pRoot->removeAttribute(Bstr(L"none").Get());
            if (FAILED(result)) return result;
            ListPtr pList;
            return pDocument->selectNodes(query.Get(), pList.Put());
        },
        [](HRESULT) {});
}

TEST_F(OutOfMemory, Building) {
    const DocumentPtr pDocument = From(text);
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
    const DocumentPtr pDocument = From(text);
    const ElementPtr pRoot = RootOf(pDocument);
    const Bstr name(L"p:a-rather-long-name");
    const Variant value(std::wstring_view(L"and a rather long value"));
    FailEachAllocation([&] { return pRoot->setAttribute(name.Get(), value.Get()); },
                       [&](HRESULT) {
                           long length = 0;
                           ASSERT_EQ(AttributesOf(pRoot.Get())->get_length(&length), S_OK);
                           EXPECT_TRUE(length == 2 || length == 3);
                           ASSERT_TRUE(SUCCEEDED(pRoot->removeAttribute(name.Get())));
                       });
}

TEST_F(OutOfMemory, ListsMapsAndErrors) {
    const DocumentPtr pDocument = From(text);
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
