#include "devkit/msxml/characterdata.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

using DataPtr = ComPtr<IXMLDOMCharacterData>;

std::wstring DataOf(const DataPtr& pData) {
    Bstr text;
    EXPECT_EQ(pData->get_data(text.Put()), S_OK);
    return std::wstring(text.View());
}

class Data : public Conformance {
  protected:
    // The first child of the root element of a new document.
    [[nodiscard]] DataPtr First(std::wstring_view text) const {
        DataPtr pData;
        EXPECT_EQ(ChildAt(RootOf(From(text)).Get(), 0).QueryTo(pData), S_OK);
        return pData;
    }
};
RUN_FOR_BOTH_MAKERS(Data);

TEST_P(Data, CanBeReadAndPut) {
    for (const wchar_t* text : {L"<a>data</a>", L"<a><!--data--></a>", L"<a><![CDATA[data]]></a>"}) {
        const DataPtr pData = First(text);
        EXPECT_EQ(DataOf(pData), L"data");
        long length = 0;
        ASSERT_EQ(pData->get_length(&length), S_OK);
        EXPECT_EQ(length, 4);
        ASSERT_EQ(pData->put_data(Bstr(L"new").Get()), S_OK);
        EXPECT_EQ(DataOf(pData), L"new");
    }
}

TEST_P(Data, SubstringStopsAtTheEnd) {
    const DataPtr pData = First(L"<a>0123456789</a>");
    Bstr text;
    ASSERT_EQ(pData->substringData(2, 3, text.Put()), S_OK);
    EXPECT_EQ(text.View(), L"234");
    ASSERT_EQ(pData->substringData(8, 100, text.Put()), S_OK);
    EXPECT_EQ(text.View(), L"89");
    EXPECT_EQ(pData->substringData(0, 0, text.Put()), S_FALSE);
    EXPECT_EQ(text.Get(), nullptr);
    EXPECT_EQ(pData->substringData(11, 1, text.Put()), S_FALSE);
    EXPECT_EQ(text.Get(), nullptr);
    EXPECT_EQ(pData->substringData(-1, 1, text.Put()), E_INVALIDARG);
    EXPECT_EQ(pData->substringData(0, -1, text.Put()), E_INVALIDARG);
    EXPECT_EQ(pData->substringData(0, 1, nullptr), E_INVALIDARG);
}

TEST_P(Data, Edits) {
    const DataPtr pData = First(L"<a>0123</a>");
    ASSERT_EQ(pData->appendData(Bstr(L"89").Get()), S_OK);
    EXPECT_EQ(DataOf(pData), L"012389");
    ASSERT_EQ(pData->insertData(4, Bstr(L"4567").Get()), S_OK);
    EXPECT_EQ(DataOf(pData), L"0123456789");
    ASSERT_EQ(pData->deleteData(0, 2), S_OK);
    EXPECT_EQ(DataOf(pData), L"23456789");
    ASSERT_EQ(pData->replaceData(0, 3, Bstr(L"x").Get()), S_OK);
    EXPECT_EQ(DataOf(pData), L"x56789");
    EXPECT_EQ(pData->insertData(100, Bstr(L"y").Get()), E_INVALIDARG);
    EXPECT_EQ(pData->deleteData(100, 1), E_INVALIDARG);
    EXPECT_EQ(pData->replaceData(100, 1, Bstr(L"y").Get()), E_INVALIDARG);
    EXPECT_EQ(DataOf(pData), L"x56789");
}

TEST_P(Data, ATextIsSplit) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: splitText is missing";
    const DocumentPtr pDocument = From(L"<a>onetwo<b/></a>");
    ComPtr<IXMLDOMText> pText;
    ASSERT_EQ(ChildAt(RootOf(pDocument).Get(), 0).QueryTo(pText), S_OK);
    ComPtr<IXMLDOMText> pRight;
    ASSERT_EQ(pText->splitText(3, pRight.Put()), S_OK);
    EXPECT_EQ(ValueOf(pText.Get()), L"one");
    EXPECT_EQ(ValueOf(pRight.Get()), L"two");
    EXPECT_EQ(ValueOf(ChildAt(RootOf(pDocument).Get(), 1).Get()), L"two");
    EXPECT_EQ(NameOf(ChildAt(RootOf(pDocument).Get(), 2).Get()), L"b");
    EXPECT_EQ(pText->splitText(-1, pRight.Put()), E_INVALIDARG);
    EXPECT_EQ(pText->splitText(4, pRight.Put()), E_INVALIDARG);
}

using KitData = KitDom;

TEST_F(KitData, ACdataSectionIsATextToo) {
    const DocumentPtr pDocument = From(L"<a><![CDATA[onetwo]]></a>");
    ComPtr<IXMLDOMText> pText;
    ASSERT_EQ(ChildAt(RootOf(pDocument).Get(), 0).QueryTo(pText), S_OK);
    ComPtr<IXMLDOMText> pRight;
    ASSERT_EQ(pText->splitText(3, pRight.Put()), S_OK);
    EXPECT_EQ(XmlOf(RootOf(pDocument).Get()), L"<a><![CDATA[one]]><![CDATA[two]]></a>");
    EXPECT_EQ(pText->splitText(0, nullptr), E_INVALIDARG);
    ComPtr<IXMLDOMComment> pComment;
    EXPECT_EQ(pText.QueryTo(pComment), E_NOINTERFACE);
}

TEST_F(KitData, ATextWithoutAParentIsSplitIntoTwo) {
    const DocumentPtr pDocument = New();
    ComPtr<IXMLDOMText> pText;
    ASSERT_EQ(pDocument->createTextNode(Bstr(L"onetwo").Get(), pText.Put()), S_OK);
    ComPtr<IXMLDOMText> pRight;
    ASSERT_EQ(pText->splitText(6, pRight.Put()), S_OK);
    EXPECT_EQ(ValueOf(pText.Get()), L"onetwo");
    EXPECT_EQ(ValueOf(pRight.Get()), L"");
    NodePtr pSibling;
    EXPECT_EQ(pText->get_nextSibling(pSibling.Put()), S_FALSE);
}

TEST_F(KitData, RefusesNullArguments) {
    const DocumentPtr pDocument = New();
    ComPtr<IXMLDOMText> pText;
    ASSERT_EQ(pDocument->createTextNode(nullptr, pText.Put()), S_OK);
    EXPECT_EQ(pText->get_data(nullptr), E_INVALIDARG);
    EXPECT_EQ(pText->get_length(nullptr), E_INVALIDARG);
    EXPECT_EQ(pText->put_data(nullptr), S_OK);
    EXPECT_EQ(pText->appendData(nullptr), S_OK);
}

}  // namespace
}  // namespace devkit::msxml::tests
