#include "devkit/msxml/com/documentsettings.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

HRESULT Set(const DocumentPtr& pDocument, std::wstring_view name, const Variant& value) {
    return pDocument->setProperty(Bstr(name).Get(), value.Get());
}

std::wstring TextProperty(const DocumentPtr& pDocument, std::wstring_view name) {
    Variant value;
    EXPECT_EQ(S_OK, pDocument->getProperty(Bstr(name).Get(), value.Put()));
    EXPECT_EQ(VT_BSTR, value.Type());
    return std::wstring(value.Text(), SysStringLen(value.Text()));
}

bool FlagProperty(const DocumentPtr& pDocument, std::wstring_view name) {
    Variant value;
    EXPECT_EQ(S_OK, pDocument->getProperty(Bstr(name).Get(), value.Put()));
    EXPECT_EQ(VT_BOOL, value.Type());
    return value.Get().boolVal != VARIANT_FALSE;
}

class Settings : public Conformance {};
RUN_FOR_BOTH_MAKERS(Settings);

TEST_P(Settings, SelectionLanguageIsXPath) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(L"XPath", TextProperty(pDocument, L"SelectionLanguage"));
    EXPECT_EQ(S_OK, Set(pDocument, L"SelectionLanguage", Variant(std::wstring_view(L"XPath"))));
}

TEST_P(Settings, NoOtherSelectionLanguageIsKnown) {
    if (HasGaps()) GTEST_SKIP() << "known gap: version 6 still accepts XSLPattern";
    const DocumentPtr pDocument = New();
    EXPECT_EQ(E_FAIL, Set(pDocument, L"SelectionLanguage", Variant(std::wstring_view(L"XSLPattern"))));
    EXPECT_EQ(L"XPath", TextProperty(pDocument, L"SelectionLanguage"));
}

TEST_P(Settings, SelectionNamespacesAreGivenBack) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(L"", TextProperty(pDocument, L"SelectionNamespaces"));
    BindPrefixes(pDocument, L"xmlns:a='urn:a' xmlns:b=\"urn:b\"");
    EXPECT_EQ(L"xmlns:a='urn:a' xmlns:b=\"urn:b\"", TextProperty(pDocument, L"SelectionNamespaces"));
    BindPrefixes(pDocument, L"");
    EXPECT_EQ(L"", TextProperty(pDocument, L"SelectionNamespaces"));
}

TEST_P(Settings, MalformedSelectionNamespacesFail) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(E_FAIL, Set(pDocument, L"SelectionNamespaces", Variant(std::wstring_view(L"xmlns:a"))));
    EXPECT_EQ(E_FAIL, Set(pDocument, L"SelectionNamespaces", Variant(std::wstring_view(L"a='urn:a'"))));
}

TEST_P(Settings, AnUnknownPropertyFails) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(E_FAIL, Set(pDocument, L"NoSuchProperty", Variant(LONG{1})));
    Variant value;
    EXPECT_EQ(E_FAIL, pDocument->getProperty(Bstr(L"NoSuchProperty").Get(), value.Put()));
    EXPECT_EQ(E_INVALIDARG, pDocument->getProperty(Bstr(L"SelectionLanguage").Get(), nullptr));
}

TEST_P(Settings, SecureDefaults) {
    if (HasGaps()) GTEST_SKIP() << "known gap: getProperty knows few properties";
    const DocumentPtr pDocument = New();
    EXPECT_TRUE(FlagProperty(pDocument, L"ProhibitDTD"));
    EXPECT_FALSE(FlagProperty(pDocument, L"AllowDocumentFunction"));
    EXPECT_FALSE(FlagProperty(pDocument, L"AllowXsltScript"));
    EXPECT_FALSE(FlagProperty(pDocument, L"UseInlineSchema"));
    EXPECT_FALSE(FlagProperty(pDocument, L"NormalizeAttributeValues"));
    EXPECT_FALSE(FlagProperty(pDocument, L"NewParser"));
    Variant depth;
    ASSERT_EQ(S_OK, pDocument->getProperty(Bstr(L"MaxElementDepth").Get(), depth.Put()));
    EXPECT_EQ(VT_I4, depth.Type());
    EXPECT_EQ(256, depth.Get().lVal);
}

TEST_P(Settings, FlagsHaveDefaultsAndKeepWhatIsPut) {
    const DocumentPtr pDocument = New();
    VARIANT_BOOL flag = VARIANT_TRUE;
    ASSERT_EQ(S_OK, pDocument->get_async(&flag));
    EXPECT_EQ(VARIANT_FALSE, flag);  // the fixture has put it
    ASSERT_EQ(S_OK, pDocument->put_async(VARIANT_TRUE));
    ASSERT_EQ(S_OK, pDocument->get_async(&flag));
    EXPECT_EQ(VARIANT_TRUE, flag);
    ASSERT_EQ(S_OK, pDocument->get_preserveWhiteSpace(&flag));
    EXPECT_EQ(VARIANT_FALSE, flag);
    ASSERT_EQ(S_OK, pDocument->put_preserveWhiteSpace(VARIANT_TRUE));
    ASSERT_EQ(S_OK, pDocument->get_preserveWhiteSpace(&flag));
    EXPECT_EQ(VARIANT_TRUE, flag);
    ASSERT_EQ(S_OK, pDocument->put_validateOnParse(VARIANT_FALSE));
    ASSERT_EQ(S_OK, pDocument->get_validateOnParse(&flag));
    EXPECT_EQ(VARIANT_FALSE, flag);
    ASSERT_EQ(S_OK, pDocument->put_resolveExternals(VARIANT_TRUE));
    ASSERT_EQ(S_OK, pDocument->get_resolveExternals(&flag));
    EXPECT_EQ(VARIANT_TRUE, flag);
}

TEST_P(Settings, ValidateOnParseIsTrueAtFirst) {
    if (HasGaps()) GTEST_SKIP() << "known gap: it is false";
    VARIANT_BOOL flag = VARIANT_FALSE;
    ASSERT_EQ(S_OK, New()->get_validateOnParse(&flag));
    EXPECT_EQ(VARIANT_TRUE, flag);
}

using KitSettings = KitDom;

TEST_F(KitSettings, FlagsRefuseNull) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(E_INVALIDARG, pDocument->get_async(nullptr));
    EXPECT_EQ(E_INVALIDARG, pDocument->get_preserveWhiteSpace(nullptr));
}

TEST_F(KitSettings, AsyncIsTrueAtFirst) {
    EXPECT_TRUE(DocumentSettings().async);
    EXPECT_FALSE(DocumentSettings().resolveExternals);
}

TEST_F(KitSettings, MalformedNamespacesVoidTheOldOnes) {
    const DocumentPtr pDocument = From(L"<a xmlns='urn:a'/>");
    for (const wchar_t* text :
         {L"xmlns:b", L"xmlns:b=urn", L"xmlns:b='urn", L"xmlns:b=''", L"xmlns:b='u'xmlns:c='v'",
          L"xmlns:='u'", L"xmlns:1='u'", L"b='u'", L"='u'", L"xmlns:b:c='u'"}) {
        BindPrefixes(pDocument, L"xmlns:a='urn:a'");
        EXPECT_EQ(E_FAIL, Set(pDocument, L"SelectionNamespaces", Variant(std::wstring_view(text)))) << text;
        EXPECT_EQ(L"", TextProperty(pDocument, L"SelectionNamespaces"));
        NodePtr pNode;
        EXPECT_EQ(E_FAIL, pDocument->selectSingleNode(Bstr(L"a:a").Get(), pNode.Put()));
    }
}

TEST_F(KitSettings, AFailingPutLeavesTheOldValue) {
    const DocumentPtr pDocument = New();
    BindPrefixes(pDocument, L"xmlns:a='urn:a'");
    EXPECT_EQ(E_FAIL, Set(pDocument, L"SelectionNamespaces", Variant(LONG{1})));
    EXPECT_EQ(L"xmlns:a='urn:a'", TextProperty(pDocument, L"SelectionNamespaces"));
    EXPECT_EQ(E_INVALIDARG, Set(pDocument, L"MaxElementDepth", Variant(LONG{-1})));
    EXPECT_EQ(E_FAIL, Set(pDocument, L"MaxElementDepth", Variant(std::wstring_view(L"deep"))));
    EXPECT_EQ(E_FAIL, Set(pDocument, L"ProhibitDTD", Variant(std::wstring_view(L"perhaps"))));
    EXPECT_TRUE(FlagProperty(pDocument, L"ProhibitDTD"));
}

TEST_F(KitSettings, SpaceAroundTheEqualsSignIsAllowed) {
    using Namespaces = std::vector<SelectionNamespace>;
    EXPECT_EQ((Namespaces{{L"a", L"urn:a"}, {L"b", L"it's"}}),
              ParseSelectionNamespaces(L"\n xmlns:a = 'urn:a'\t\r\nxmlns:b=\"it's\" "));
    EXPECT_EQ(Namespaces(), ParseSelectionNamespaces(L"xmlns='urn:d'"));
}

TEST_F(KitSettings, PropertiesAndFlagsAreTheSameThing) {
    const DocumentPtr pDocument = New();
    ASSERT_EQ(S_OK, Set(pDocument, L"ResolveExternals", Variant(LONG{1})));
    VARIANT_BOOL flag = VARIANT_FALSE;
    ASSERT_EQ(S_OK, pDocument->get_resolveExternals(&flag));
    EXPECT_EQ(VARIANT_TRUE, flag);
}

TEST_F(KitSettings, ALargerDepthIsAllowed) {
    const DocumentPtr pDocument = New();
    std::wstring text;
    for (int i = 0; i < 1000; ++i) text += L"<a>";
    for (int i = 0; i < 1000; ++i) text += L"</a>";
    EXPECT_EQ(S_FALSE, LoadText(pDocument, text));
    ASSERT_EQ(S_OK, Set(pDocument, L"MaxElementDepth", Variant(LONG{1000})));
    EXPECT_EQ(S_OK, LoadText(pDocument, text));
    ASSERT_EQ(S_OK, Set(pDocument, L"MaxElementDepth", Variant(LONG{999})));
    EXPECT_EQ(S_FALSE, LoadText(pDocument, text));
    ASSERT_EQ(S_OK, Set(pDocument, L"MaxElementDepth", Variant(LONG{0})));
    EXPECT_EQ(S_OK, LoadText(pDocument, text));
}

}  // namespace
}  // namespace devkit::msxml::tests
