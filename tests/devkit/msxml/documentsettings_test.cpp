#include "devkit/msxml/documentsettings.h"

#include "devkit/msxml/domundertest.h"

namespace devkit::msxml::tests {
namespace {

HRESULT Set(const DocumentPtr& pDocument, std::wstring_view name, const Variant& value) {
    return pDocument->setProperty(Bstr(name).Get(), value.Get());
}

std::wstring TextProperty(const DocumentPtr& pDocument, std::wstring_view name) {
    Variant value;
    EXPECT_EQ(pDocument->getProperty(Bstr(name).Get(), value.Put()), S_OK);
    EXPECT_EQ(value.Type(), VT_BSTR);
    return std::wstring(value.Text(), SysStringLen(value.Text()));
}

bool FlagProperty(const DocumentPtr& pDocument, std::wstring_view name) {
    Variant value;
    EXPECT_EQ(pDocument->getProperty(Bstr(name).Get(), value.Put()), S_OK);
    EXPECT_EQ(value.Type(), VT_BOOL);
    return value.Get().boolVal != VARIANT_FALSE;
}

class Settings : public Conformance {};
RUN_FOR_BOTH_MAKERS(Settings);

TEST_P(Settings, SelectionLanguageIsXPath) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(TextProperty(pDocument, L"SelectionLanguage"), L"XPath");
    EXPECT_EQ(Set(pDocument, L"SelectionLanguage", Variant(std::wstring_view(L"XPath"))), S_OK);
}

TEST_P(Settings, NoOtherSelectionLanguageIsKnown) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: version 6 still accepts XSLPattern";
    const DocumentPtr pDocument = New();
    EXPECT_EQ(Set(pDocument, L"SelectionLanguage", Variant(std::wstring_view(L"XSLPattern"))), E_FAIL);
    EXPECT_EQ(TextProperty(pDocument, L"SelectionLanguage"), L"XPath");
}

TEST_P(Settings, SelectionNamespacesAreGivenBack) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(TextProperty(pDocument, L"SelectionNamespaces"), L"");
    BindPrefixes(pDocument, L"xmlns:a='urn:a' xmlns:b=\"urn:b\"");
    EXPECT_EQ(TextProperty(pDocument, L"SelectionNamespaces"), L"xmlns:a='urn:a' xmlns:b=\"urn:b\"");
    BindPrefixes(pDocument, L"");
    EXPECT_EQ(TextProperty(pDocument, L"SelectionNamespaces"), L"");
}

TEST_P(Settings, MalformedSelectionNamespacesFail) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(Set(pDocument, L"SelectionNamespaces", Variant(std::wstring_view(L"xmlns:a"))), E_FAIL);
    EXPECT_EQ(Set(pDocument, L"SelectionNamespaces", Variant(std::wstring_view(L"a='urn:a'"))), E_FAIL);
}

TEST_P(Settings, AnUnknownPropertyFails) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(Set(pDocument, L"NoSuchProperty", Variant(LONG{1})), E_FAIL);
    Variant value;
    EXPECT_EQ(pDocument->getProperty(Bstr(L"NoSuchProperty").Get(), value.Put()), E_FAIL);
    EXPECT_EQ(pDocument->getProperty(Bstr(L"SelectionLanguage").Get(), nullptr), E_INVALIDARG);
}

TEST_P(Settings, SecureDefaults) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: getProperty knows few properties";
    const DocumentPtr pDocument = New();
    EXPECT_TRUE(FlagProperty(pDocument, L"ProhibitDTD"));
    EXPECT_FALSE(FlagProperty(pDocument, L"AllowDocumentFunction"));
    EXPECT_FALSE(FlagProperty(pDocument, L"AllowXsltScript"));
    EXPECT_FALSE(FlagProperty(pDocument, L"UseInlineSchema"));
    EXPECT_FALSE(FlagProperty(pDocument, L"NormalizeAttributeValues"));
    EXPECT_FALSE(FlagProperty(pDocument, L"NewParser"));
    Variant depth;
    ASSERT_EQ(pDocument->getProperty(Bstr(L"MaxElementDepth").Get(), depth.Put()), S_OK);
    EXPECT_EQ(depth.Type(), VT_I4);
    EXPECT_EQ(depth.Get().lVal, 256);
}

TEST_P(Settings, FlagsHaveDefaultsAndKeepWhatIsPut) {
    const DocumentPtr pDocument = New();
    VARIANT_BOOL flag = VARIANT_TRUE;
    ASSERT_EQ(pDocument->get_async(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_FALSE);  // the fixture has put it
    ASSERT_EQ(pDocument->put_async(VARIANT_TRUE), S_OK);
    ASSERT_EQ(pDocument->get_async(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_TRUE);
    ASSERT_EQ(pDocument->get_preserveWhiteSpace(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_FALSE);
    ASSERT_EQ(pDocument->put_preserveWhiteSpace(VARIANT_TRUE), S_OK);
    ASSERT_EQ(pDocument->get_preserveWhiteSpace(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_TRUE);
    ASSERT_EQ(pDocument->put_validateOnParse(VARIANT_FALSE), S_OK);
    ASSERT_EQ(pDocument->get_validateOnParse(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_FALSE);
    ASSERT_EQ(pDocument->put_resolveExternals(VARIANT_TRUE), S_OK);
    ASSERT_EQ(pDocument->get_resolveExternals(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_TRUE);
}

TEST_P(Settings, ValidateOnParseIsTrueAtFirst) {
    if (OnWine()) GTEST_SKIP() << "Wine 8: it is false";
    VARIANT_BOOL flag = VARIANT_FALSE;
    ASSERT_EQ(New()->get_validateOnParse(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_TRUE);
}

using KitSettings = KitDom;

TEST_F(KitSettings, FlagsRefuseNull) {
    const DocumentPtr pDocument = New();
    EXPECT_EQ(pDocument->get_async(nullptr), E_INVALIDARG);
    EXPECT_EQ(pDocument->get_preserveWhiteSpace(nullptr), E_INVALIDARG);
}

TEST_F(KitSettings, AsyncIsTrueAtFirst) {
    EXPECT_TRUE(DocumentSettings().async);
    EXPECT_FALSE(DocumentSettings().resolveExternals);
}

TEST_F(KitSettings, AFailingPutLeavesTheOldValue) {
    const DocumentPtr pDocument = New();
    BindPrefixes(pDocument, L"xmlns:a='urn:a'");
    for (const wchar_t* text :
         {L"xmlns:b", L"xmlns:b=urn", L"xmlns:b='urn", L"xmlns:b=''", L"xmlns:b='u'xmlns:c='v'",
          L"xmlns:='u'", L"xmlns:1='u'", L"b='u'", L"='u'", L"xmlns:b:c='u'"}) {
        EXPECT_EQ(Set(pDocument, L"SelectionNamespaces", Variant(std::wstring_view(text))), E_FAIL) << text;
        EXPECT_EQ(TextProperty(pDocument, L"SelectionNamespaces"), L"xmlns:a='urn:a'");
    }
    EXPECT_EQ(Set(pDocument, L"SelectionNamespaces", Variant(LONG{1})), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Set(pDocument, L"MaxElementDepth", Variant(LONG{-1})), E_INVALIDARG);
    EXPECT_EQ(Set(pDocument, L"MaxElementDepth", Variant(std::wstring_view(L"deep"))), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Set(pDocument, L"ProhibitDTD", Variant(std::wstring_view(L"perhaps"))), DISP_E_TYPEMISMATCH);
}

TEST_F(KitSettings, SpaceAroundTheEqualsSignIsAllowed) {
    using Namespaces = std::vector<SelectionNamespace>;
    EXPECT_EQ(ParseSelectionNamespaces(L"\n xmlns:a = 'urn:a'\t\r\nxmlns:b=\"it's\" "),
              (Namespaces{{L"a", L"urn:a"}, {L"b", L"it's"}}));
    EXPECT_EQ(ParseSelectionNamespaces(L"xmlns='urn:d'"), Namespaces());
}

TEST_F(KitSettings, PropertiesAndFlagsAreTheSameThing) {
    const DocumentPtr pDocument = New();
    ASSERT_EQ(Set(pDocument, L"ResolveExternals", Variant(LONG{1})), S_OK);
    VARIANT_BOOL flag = VARIANT_FALSE;
    ASSERT_EQ(pDocument->get_resolveExternals(&flag), S_OK);
    EXPECT_EQ(flag, VARIANT_TRUE);
}

TEST_F(KitSettings, ALargerDepthIsAllowed) {
    const DocumentPtr pDocument = New();
    std::wstring text;
    for (int i = 0; i < 1000; ++i) text += L"<a>";
    for (int i = 0; i < 1000; ++i) text += L"</a>";
    EXPECT_EQ(LoadText(pDocument, text), S_FALSE);
    ASSERT_EQ(Set(pDocument, L"MaxElementDepth", Variant(LONG{1000})), S_OK);
    EXPECT_EQ(LoadText(pDocument, text), S_OK);
    ASSERT_EQ(Set(pDocument, L"MaxElementDepth", Variant(LONG{999})), S_OK);
    EXPECT_EQ(LoadText(pDocument, text), S_FALSE);
    ASSERT_EQ(Set(pDocument, L"MaxElementDepth", Variant(LONG{0})), S_OK);
    EXPECT_EQ(LoadText(pDocument, text), S_OK);
}

}  // namespace
}  // namespace devkit::msxml::tests
