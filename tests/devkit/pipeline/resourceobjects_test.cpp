#include "devkit/pipeline/resourceobjects.h"

#include "devkit/pipeline/pageobjects.h"
#include "platform/bstr.h"

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
        EXPECT_EQ(FirstPage()->GetPagePart(uri, part.Put()), S_OK);
        EXPECT_EQ(part.QueryTo(resource), S_OK);
        return resource;
    }
};

TEST_F(ResourceObjectsTest, AnImageHasItsContentType) {
    const auto image = Resource<IPartImage>(L"/1/image.png");
    Bstr type;
    EXPECT_EQ(image->GetImageProperties(type.Put()), S_OK);
    EXPECT_EQ(type.View(), L"image/png");
    EXPECT_EQ(image->SetImageContent(L"image/jpeg"), S_OK);
    EXPECT_EQ(image->GetImageProperties(type.Put()), S_OK);
    EXPECT_EQ(type.View(), L"image/jpeg");
    EXPECT_EQ(image->SetImageContent(nullptr), E_INVALIDARG);
}

TEST_F(ResourceObjectsTest, AFontsOptionsFollowFromItsContentType) {
    const auto font = Resource<IPartFont2>(L"/1/font.odttf");
    Bstr type;
    EXpsFontOptions options = Font_Normal;
    EXPECT_EQ(font->GetFontProperties(type.Put(), &options), S_OK);
    EXPECT_EQ(type.View(), L"application/vnd.ms-package.obfuscated-opentype");
    EXPECT_EQ(options, Font_Obfusticate);
    EXPECT_EQ(font->SetFontOptions(Font_Normal), S_OK);
    EXPECT_EQ(font->GetFontProperties(type.Put(), &options), S_OK);
    EXPECT_EQ(type.View(), L"application/vnd.ms-opentype");
    EXPECT_EQ(options, Font_Normal);
    EXPECT_EQ(font->SetFontOptions(static_cast<EXpsFontOptions>(2)), E_INVALIDARG);
    EXPECT_EQ(font->GetFontProperties(type.Put(), nullptr), E_POINTER);
    EXpsFontRestriction restriction = Xps_Restricted_Font_Editable;
    EXPECT_EQ(font->GetFontRestriction(&restriction), S_OK);
    EXPECT_EQ(restriction, Xps_Restricted_Font_Installable);
}

TEST_F(ResourceObjectsTest, AResourceIsReadable) {
    ComPtr<IPrintReadStream> stream;
    ASSERT_EQ(Resource<IPartResourceDictionary>(L"/1/styles.dict")->GetStream(stream.Put()), S_OK);
    EXPECT_EQ(ReadAll(stream.Get()), "bytes of /1/styles.dict");
}

TEST_F(ResourceObjectsTest, AllInterfacesOfAFontComeFromOneObject) {
    const auto font = Resource<IPartFont2>(L"/1/font.odttf");
    ComPtr<IPartFont> plain;
    ComPtr<IPartBase> base;
    ComPtr<IUnknown> ofFont;
    ComPtr<IUnknown> ofBase;
    EXPECT_EQ(font.QueryTo(plain), S_OK);
    EXPECT_EQ(font.QueryTo(base), S_OK);
    EXPECT_EQ(font.QueryTo(ofFont), S_OK);
    EXPECT_EQ(base.QueryTo(ofBase), S_OK);
    EXPECT_EQ(ofFont.Get(), ofBase.Get());
}

}  // namespace
}  // namespace devkit::pipeline
