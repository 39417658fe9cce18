#include "devkit/msxml/tree/name.h"

#include <gtest/gtest.h>

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml::tests {
namespace {

HRESULT Failure(std::wstring_view qualified) {
    try {
        CheckQualifiedName(qualified);
        return S_OK;
    } catch (const Refused& refusal) {
        return Hresult(refusal.code);
    }
}

TEST(Name, HasItsParts) {
    const Name name(L"p:local", L"urn:p");
    EXPECT_EQ(L"p:local", name.Qualified());
    EXPECT_EQ(L"p", name.Prefix());
    EXPECT_EQ(L"local", name.Local());
    EXPECT_EQ(L"urn:p", name.Uri());
    EXPECT_FALSE(name.IsDeclaration());
    EXPECT_EQ(L"", name.DeclaredPrefix());
    const Name plain(L"local", L"");
    EXPECT_EQ(L"", plain.Prefix());
    EXPECT_EQ(L"local", plain.Local());
}

TEST(Name, KnowsDeclarations) {
    EXPECT_TRUE(Name(L"xmlns", L"").IsDeclaration());
    EXPECT_EQ(L"", Name(L"xmlns", L"").DeclaredPrefix());
    EXPECT_TRUE(Name(L"xmlns:p", L"").IsDeclaration());
    EXPECT_EQ(L"p", Name(L"xmlns:p", L"").DeclaredPrefix());
    EXPECT_FALSE(Name(L"xmlnsx", L"").IsDeclaration());
}

TEST(Name, ReservedPrefixesHaveTheirNamespace) {
    EXPECT_EQ(kXmlnsUri, ValidName(L"xmlns", L"urn:x")->Uri());
    EXPECT_EQ(kXmlnsUri, ValidName(L"xmlns:p", L"")->Uri());
    EXPECT_EQ(kXmlUri, ValidName(L"xml:lang", L"urn:x")->Uri());
}

TEST(Name, IsCheckedCharacterByCharacter) {
    for (const wchar_t* name :
         {L"a", L"_", L"a-b.c1", L"p:q", L"\x00e4\x00b7\x0300", L"\xd840\xdc00", L"\x3042"}) {
        EXPECT_EQ(S_OK, Failure(name)) << name;
    }
    for (const wchar_t* name :
         {L"", L"1", L"-a", L".a", L"\x00b7", L":a", L"a:", L"p:1", L"\xd800", L"\x00d7"}) {
        EXPECT_EQ(Hresult(XmlBadStartNameChar), Failure(name)) << name;
    }
    for (const wchar_t* name : {L"a b", L"a\x00d7", L"a/", L"p:a b", L"a\xdc00", L"a\x2028"}) {
        EXPECT_EQ(Hresult(XmlBadNameChar), Failure(name)) << name;
    }
    EXPECT_EQ(Hresult(XmlMultipleColons), Failure(L"a:b:c"));
}

}  // namespace
}  // namespace devkit::msxml::tests
