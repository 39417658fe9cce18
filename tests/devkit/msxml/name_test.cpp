#include "devkit/msxml/name.h"

#include <gtest/gtest.h>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/errorcodes.h"

namespace devkit::msxml::tests {
namespace {

HRESULT Failure(std::wstring_view qualified) {
    try {
        CheckQualifiedName(qualified);
        return S_OK;
    } catch (const ComError& error) {
        return error.code;
    }
}

TEST(Name, HasItsParts) {
    const Name name(L"p:local", L"urn:p");
    EXPECT_EQ(name.Qualified(), L"p:local");
    EXPECT_EQ(name.Prefix(), L"p");
    EXPECT_EQ(name.Local(), L"local");
    EXPECT_EQ(name.Uri(), L"urn:p");
    EXPECT_FALSE(name.IsDeclaration());
    EXPECT_EQ(name.DeclaredPrefix(), L"");
    const Name plain(L"local", L"");
    EXPECT_EQ(plain.Prefix(), L"");
    EXPECT_EQ(plain.Local(), L"local");
}

TEST(Name, KnowsDeclarations) {
    EXPECT_TRUE(Name(L"xmlns", L"").IsDeclaration());
    EXPECT_EQ(Name(L"xmlns", L"").DeclaredPrefix(), L"");
    EXPECT_TRUE(Name(L"xmlns:p", L"").IsDeclaration());
    EXPECT_EQ(Name(L"xmlns:p", L"").DeclaredPrefix(), L"p");
    EXPECT_FALSE(Name(L"xmlnsx", L"").IsDeclaration());
}

TEST(Name, ReservedPrefixesHaveTheirNamespace) {
    EXPECT_EQ(ValidName(L"xmlns", L"urn:x")->Uri(), xmlnsUri);
    EXPECT_EQ(ValidName(L"xmlns:p", L"")->Uri(), xmlnsUri);
    EXPECT_EQ(ValidName(L"xml:lang", L"urn:x")->Uri(), xmlUri);
}

TEST(Name, IsCheckedCharacterByCharacter) {
    for (const wchar_t* name :
         {L"a", L"_", L"a-b.c1", L"p:q", L"\x00e4\x00b7\x0300", L"\xd840\xdc00", L"\x3042"}) {
        EXPECT_EQ(Failure(name), S_OK) << name;
    }
    for (const wchar_t* name :
         {L"", L"1", L"-a", L".a", L"\x00b7", L":a", L"a:", L"p:1", L"\xd800", L"\x00d7"}) {
        EXPECT_EQ(Failure(name), Hresult(XmlBadStartNameChar)) << name;
    }
    for (const wchar_t* name : {L"a b", L"a\x00d7", L"a/", L"p:a b", L"a\xdc00", L"a\x2028"}) {
        EXPECT_EQ(Failure(name), Hresult(XmlBadNameChar)) << name;
    }
    EXPECT_EQ(Failure(L"a:b:c"), Hresult(XmlMultipleColons));
}

}  // namespace
}  // namespace devkit::msxml::tests
