#include "devkit/pipeline/propertybag.h"

#include <thread>

#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/pipelinecontrol.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;
using platform::Variant;

class PropertyBagTest : public PipelineTest {
  protected:
    ComPtr<PropertyBag> Bag() { return MakeObject<PropertyBag>(Context()); }
};

TEST_F(PropertyBagTest, AMissingNameAnswersElementNotFoundAndEmpty) {
    VARIANT value;
    value.vt = VT_BSTR;
    value.bstrVal = nullptr;
    EXPECT_EQ(Bag()->GetProperty(L"PrinterName", &value), E_ELEMENT_NOT_FOUND);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(PropertyBagTest, GivesEachCallerACopyOfTheText) {
    const auto bag = Bag();
    bag->Put(L"PrinterName", Variant(L"SimPrinter").Get());
    Variant first;
    Variant second;
    ASSERT_EQ(bag->GetProperty(L"PrinterName", first.Put()), S_OK);
    ASSERT_EQ(bag->GetProperty(L"PrinterName", second.Put()), S_OK);
    ASSERT_EQ(first.Type(), VT_BSTR);
    EXPECT_STREQ(first.Text(), L"SimPrinter");
    EXPECT_STREQ(second.Text(), L"SimPrinter");
    EXPECT_NE(first.Text(), second.Text());
}

TEST_F(PropertyBagTest, GivesEachCallerAReferenceOfItsOwn) {
    const auto bag = Bag();
    ComPtr<PipelineControl> object = MakeObject<PipelineControl>(Context());
    bag->Put(L"Object", Variant(object.Get()).Get());
    EXPECT_EQ(Context()->LiveObjects()[1], "PipelineControl, 2 references");
    Variant value;
    ASSERT_EQ(bag->GetProperty(L"Object", value.Put()), S_OK);
    EXPECT_EQ(value.Unknown(), static_cast<IUnknown*>(object.Get()));
    EXPECT_EQ(Context()->LiveObjects()[1], "PipelineControl, 3 references");
}

TEST_F(PropertyBagTest, CopiesABareByrefAsItStands) {
    const auto bag = Bag();
    int place = 0;
    bag->PutHandle(L"PrinterHandle", &place);
    VARIANT value;
    ASSERT_EQ(bag->GetProperty(L"PrinterHandle", &value), S_OK);
    EXPECT_EQ(value.vt, VT_BYREF);
    EXPECT_EQ(value.byref, &place);
    EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE);
}

TEST_F(PropertyBagTest, NamesAreComparedExactly) {
    const auto bag = Bag();
    bag->Put(L"PrinterName", Variant(L"SimPrinter").Get());
    Variant value;
    EXPECT_EQ(bag->GetProperty(L"printername", value.Put()), E_ELEMENT_NOT_FOUND);
}

TEST_F(PropertyBagTest, AddPropertyReplaces) {
    const auto bag = Bag();
    EXPECT_EQ(bag->AddProperty(L"Name", &Variant(L"old").Get()), S_OK);
    EXPECT_EQ(bag->AddProperty(L"Name", &Variant(7L).Get()), S_OK);
    Variant value;
    ASSERT_EQ(bag->GetProperty(L"Name", value.Put()), S_OK);
    EXPECT_EQ(value.Get().vt, VT_I4);
    EXPECT_EQ(value.Get().lVal, 7);
}

TEST_F(PropertyBagTest, DeletePropertyTellsWhetherThereWasOne) {
    const auto bag = Bag();
    bag->Put(L"Name", Variant(7L).Get());
    EXPECT_EQ(bag->DeleteProperty(L"Name"), TRUE);
    EXPECT_EQ(bag->DeleteProperty(L"Name"), FALSE);
    EXPECT_EQ(bag->DeleteProperty(nullptr), FALSE);
    Variant value;
    EXPECT_EQ(bag->GetProperty(L"Name", value.Put()), E_ELEMENT_NOT_FOUND);
}

TEST_F(PropertyBagTest, RefusesNullPointers) {
    const auto bag = Bag();
    Variant value;
    EXPECT_EQ(bag->GetProperty(nullptr, value.Put()), E_INVALIDARG);
    EXPECT_EQ(bag->GetProperty(L"Name", nullptr), E_INVALIDARG);
    EXPECT_EQ(bag->AddProperty(nullptr, &value.Get()), E_INVALIDARG);
    EXPECT_EQ(bag->AddProperty(L"Name", nullptr), E_INVALIDARG);
}

TEST_F(PropertyBagTest, FailsForTheNameThatIsPlanned) {
    Use(Failing("GetProperty", E_ACCESSDENIED, "UserSecurityToken"));
    const auto bag = Bag();
    bag->PutHandle(L"UserSecurityToken", nullptr);
    bag->PutHandle(L"PrinterHandle", nullptr);
    VARIANT value;
    EXPECT_EQ(bag->GetProperty(L"PrinterHandle", &value), S_OK);
    EXPECT_EQ(bag->GetProperty(L"UserSecurityToken", &value), E_ACCESSDENIED);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(PropertyBagTest, ServesTwoThreadsAtOnce) {
    const auto bag = Bag();
    bag->Put(L"Name", Variant(L"text").Get());
    unsigned found = 0;
    std::thread writer([&] {
        for (int i = 0; i < 1000; ++i) bag->Put(L"Name", Variant(L"text").Get());
    });
    for (int i = 0; i < 1000; ++i) {
        Variant value;
        found += bag->GetProperty(L"Name", value.Put()) == S_OK && std::wstring(value.Text()) == L"text";
    }
    writer.join();
    EXPECT_EQ(found, 1000U);
}

}  // namespace
}  // namespace devkit::pipeline
