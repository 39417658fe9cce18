#include "devkit/pipeline/resourceobjects.h"

#include "devkit/pipeline/fontobfuscation.h"
#include "devkit/pipeline/pageobjects.h"
#include "devkit/pipeline/partobject.h"
#include "platform/bstr.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

using platform::Bstr;
using platform::ComPtr;

class ResourceObjectsTest : public PartsTest {
  protected:
    template <typename Interface>
    ComPtr<Interface> Resource(const wchar_t* uri) {
        ComPtr<IUnknown> part;
        ComPtr<Interface> resource;
        EXPECT_EQ(S_OK, FirstPage()->GetPagePart(uri, part.Put()));
        EXPECT_EQ(S_OK, part.QueryTo(resource));
        return resource;
    }
};

TEST_F(ResourceObjectsTest, AnImageHasItsContentType) {
    const auto image = Resource<IPartImage>(L"/1/image.png");
    Bstr type;
    EXPECT_EQ(S_OK, image->GetImageProperties(type.Put()));
    EXPECT_EQ(L"image/png", type.View());
    EXPECT_EQ(S_OK, image->SetImageContent(L"image/jpeg"));
    EXPECT_EQ(S_OK, image->GetImageProperties(type.Put()));
    EXPECT_EQ(L"image/jpeg", type.View());
    EXPECT_EQ(E_INVALIDARG, image->SetImageContent(nullptr));
}

TEST_F(ResourceObjectsTest, AFontsOptionsFollowFromItsContentType) {
    const auto font = Resource<IPartFont2>(L"/1/font.odttf");
    Bstr type;
    EXpsFontOptions options = Font_Normal;
    EXPECT_EQ(S_OK, font->GetFontProperties(type.Put(), &options));
    EXPECT_EQ(L"application/vnd.ms-package.obfuscated-opentype", type.View());
    EXPECT_EQ(Font_Obfusticate, options);
    EXPECT_EQ(S_OK, font->SetFontOptions(Font_Normal));
    EXPECT_EQ(S_OK, font->GetFontProperties(type.Put(), &options));
    EXPECT_EQ(L"application/vnd.ms-opentype", type.View());
    EXPECT_EQ(Font_Normal, options);
    EXPECT_EQ(E_INVALIDARG, font->SetFontOptions(static_cast<EXpsFontOptions>(2)));
    EXPECT_EQ(E_POINTER, font->GetFontProperties(type.Put(), nullptr));
    EXpsFontRestriction restriction = Xps_Restricted_Font_Editable;
    EXPECT_EQ(S_OK, font->GetFontRestriction(&restriction));
    EXPECT_EQ(Xps_Restricted_Font_Installable, restriction);
}

TEST_F(ResourceObjectsTest, ANewFontIsObfuscatedOnItsWayIntoThePackageAlone) {
    const std::string plain(40, 'x');
    const wchar_t* const name = L"/00112233-4455-6677-8899-AABBCCDDEEFF.odttf";
    const auto font = NewPart<IPartFont>(name, plain);
    EXPECT_EQ(S_OK, font->SetFontOptions(Font_Obfusticate));
    ComPtr<IPrintReadStream> stream;
    ASSERT_EQ(S_OK, font->GetStream(stream.Put()));
    EXPECT_EQ(plain, ReadAll(stream.Get()));
    EXPECT_EQ(ToggleObfuscation(plain, platform::ToUtf8(name)), PartOf(font.Get())->Packaged().Read());
    EXPECT_EQ(S_OK, font->SetFontOptions(Font_Normal));
    EXPECT_EQ(plain, PartOf(font.Get())->Packaged().Read());
    EXPECT_EQ(Lines{}, Breaches());
}

TEST_F(ResourceObjectsTest, AFontWithoutAGuidInItsNameCannotBeObfuscated) {
    const auto font = NewPart<IPartFont>(L"/Fonts/new.odttf", "bytes");
    EXPECT_EQ(S_OK, font->SetFontOptions(Font_Obfusticate));
    EXPECT_EQ("bytes", PartOf(font.Get())->Packaged().Read());
    EXPECT_EQ(
        Lines{"SetFontOptions obfuscates Font /Fonts/new.odttf, whose name holds no GUID to do it with"},
        Breaches());
}

TEST_F(ResourceObjectsTest, AResourceIsReadable) {
    ComPtr<IPrintReadStream> stream;
    ASSERT_EQ(S_OK, Resource<IPartResourceDictionary>(L"/1/styles.dict")->GetStream(stream.Put()));
    EXPECT_EQ("bytes of /1/styles.dict", ReadAll(stream.Get()));
}

TEST_F(ResourceObjectsTest, AllInterfacesOfAFontComeFromOneObject) {
    const auto font = Resource<IPartFont2>(L"/1/font.odttf");
    ComPtr<IPartFont> plain;
    ComPtr<IPartBase> base;
    ComPtr<IUnknown> ofFont;
    ComPtr<IUnknown> ofBase;
    EXPECT_EQ(S_OK, font.QueryTo(plain));
    EXPECT_EQ(S_OK, font.QueryTo(base));
    EXPECT_EQ(S_OK, font.QueryTo(ofFont));
    EXPECT_EQ(S_OK, base.QueryTo(ofBase));
    EXPECT_EQ(ofBase.Get(), ofFont.Get());
}

}  // namespace
}  // namespace devkit::pipeline
