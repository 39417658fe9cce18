#include "devkit/pipeline/propertybags.h"

#include <thread>

#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/pipelinecontrol.h"
#include "platform/bstr.h"

namespace devkit::pipeline {
namespace {

using platform::Bstr;
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
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, Bag()->GetProperty(L"PrinterName", &value));
    EXPECT_EQ(VT_EMPTY, value.vt);
}

TEST_F(PropertyBagTest, GivesEachCallerACopyOfTheText) {
    const auto bag = Bag();
    bag->Put(L"PrinterName", Variant(L"SimPrinter").Get());
    Variant first;
    Variant second;
    ASSERT_EQ(S_OK, bag->GetProperty(L"PrinterName", first.Put()));
    ASSERT_EQ(S_OK, bag->GetProperty(L"PrinterName", second.Put()));
    ASSERT_EQ(VT_BSTR, first.Type());
    EXPECT_STREQ(L"SimPrinter", first.Text());
    EXPECT_STREQ(L"SimPrinter", second.Text());
    EXPECT_NE(second.Text(), first.Text());
}

TEST_F(PropertyBagTest, GivesEachCallerAReferenceOfItsOwn) {
    const auto bag = Bag();
    ComPtr<PipelineControl> object = MakeObject<PipelineControl>(Context());
    bag->Put(L"Object", Variant(object.Get()).Get());
    EXPECT_EQ("PipelineControl, 2 references", Context()->LiveObjects()[1]);
    Variant value;
    ASSERT_EQ(S_OK, bag->GetProperty(L"Object", value.Put()));
    EXPECT_EQ(static_cast<IUnknown*>(object.Get()), value.Unknown());
    EXPECT_EQ("PipelineControl, 3 references", Context()->LiveObjects()[1]);
}

TEST_F(PropertyBagTest, CopiesABareByrefAsItStands) {
    const auto bag = Bag();
    int place = 0;
    bag->PutHandle(L"PrinterHandle", &place);
    VARIANT value;
    ASSERT_EQ(S_OK, bag->GetProperty(L"PrinterHandle", &value));
    EXPECT_EQ(VT_BYREF, value.vt);
    EXPECT_EQ(&place, value.byref);
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantClear(&value));
}

TEST_F(PropertyBagTest, NamesAreComparedExactly) {
    const auto bag = Bag();
    bag->Put(L"PrinterName", Variant(L"SimPrinter").Get());
    Variant value;
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, bag->GetProperty(L"printername", value.Put()));
}

TEST_F(PropertyBagTest, AddPropertyReplaces) {
    const auto bag = Bag();
    EXPECT_EQ(S_OK, bag->AddProperty(L"Name", &Variant(L"old").Get()));
    EXPECT_EQ(S_OK, bag->AddProperty(L"Name", &Variant(7L).Get()));
    Variant value;
    ASSERT_EQ(S_OK, bag->GetProperty(L"Name", value.Put()));
    EXPECT_EQ(VT_I4, value.Get().vt);
    EXPECT_EQ(7, value.Get().lVal);
}

TEST_F(PropertyBagTest, DeletePropertyTellsWhetherThereWasOne) {
    const auto bag = Bag();
    bag->Put(L"Name", Variant(7L).Get());
    EXPECT_EQ(TRUE, bag->DeleteProperty(L"Name"));
    EXPECT_EQ(FALSE, bag->DeleteProperty(L"Name"));
    EXPECT_EQ(FALSE, bag->DeleteProperty(nullptr));
    Variant value;
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, bag->GetProperty(L"Name", value.Put()));
}

TEST_F(PropertyBagTest, ThatTheFilterTakesWhatIsThePipelinesIsFound) {
    const auto bag = Bag();
    for (const wchar_t* const name : {L"PrinterName", L"PrinterHandle", L"ProgressReport"})
        bag->Put(name, Variant(7L).Get());
    bag->Put(L"PrinterName", Variant(8L).Get());
    EXPECT_EQ(S_OK, bag->AddProperty(L"Own", &Variant(7L).Get()));
    EXPECT_EQ(S_OK, bag->AddProperty(L"Own", &Variant(8L).Get()));
    EXPECT_EQ(TRUE, bag->DeleteProperty(L"Own"));
    EXPECT_EQ(TRUE, bag->DeleteProperty(L"ProgressReport"));
    EXPECT_EQ(Lines{}, Context()->Findings());
    EXPECT_EQ(S_OK, bag->AddProperty(L"PrinterName", &Variant(9L).Get()));
    EXPECT_EQ(S_OK, bag->AddProperty(L"PrinterName", &Variant(9L).Get()));
    EXPECT_EQ(TRUE, bag->DeleteProperty(L"PrinterName"));
    EXPECT_EQ(TRUE, bag->DeleteProperty(L"PrinterHandle"));
    EXPECT_EQ((Lines{"AddProperty replaces PrinterName, which is the pipeline's",
                     "DeleteProperty removes PrinterHandle, which is the pipeline's"}),
              Context()->Findings());
}

TEST_F(PropertyBagTest, RefusesNullPointers) {
    const auto bag = Bag();
    Variant value;
    EXPECT_EQ(E_INVALIDARG, bag->GetProperty(nullptr, value.Put()));
    EXPECT_EQ(E_INVALIDARG, bag->GetProperty(L"Name", nullptr));
    EXPECT_EQ(E_INVALIDARG, bag->AddProperty(nullptr, &value.Get()));
    EXPECT_EQ(E_INVALIDARG, bag->AddProperty(L"Name", nullptr));
}

TEST_F(PropertyBagTest, FailsForTheNameThatIsPlanned) {
    Use(Failing("GetProperty", E_ACCESSDENIED, "UserSecurityToken"));
    const auto bag = Bag();
    bag->PutHandle(L"UserSecurityToken", nullptr);
    bag->PutHandle(L"PrinterHandle", nullptr);
    VARIANT value;
    EXPECT_EQ(S_OK, bag->GetProperty(L"PrinterHandle", &value));
    EXPECT_EQ(E_ACCESSDENIED, bag->GetProperty(L"UserSecurityToken", &value));
    EXPECT_EQ(VT_EMPTY, value.vt);
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
    EXPECT_EQ(1000U, found);
}

class DriverPropertyBagTest : public PipelineTest {
  protected:
    ComPtr<DriverBag> Bag() {
        return MakeObject<DriverBag>(
            Context(), "DriverPropertyBag",
            DriverValues{{L"KoraNsPrefix", L"krk"}, {L"KoraTeskType", 2L}, {L"Flag", true}});
    }
};

TEST_F(DriverPropertyBagTest, ReadsEachTypeByName) {
    const auto bag = Bag();
    Bstr text;
    LONG number = 0;
    BOOL flag = FALSE;
    EXPECT_EQ(S_OK, bag->GetString(Bstr(L"KoraNsPrefix").Get(), text.Put()));
    EXPECT_EQ(L"krk", text.View());
    EXPECT_EQ(S_OK, bag->GetInt32(Bstr(L"KoraTeskType").Get(), &number));
    EXPECT_EQ(2, number);
    EXPECT_EQ(S_OK, bag->GetBool(Bstr(L"Flag").Get(), &flag));
    EXPECT_EQ(TRUE, flag);
}

TEST_F(DriverPropertyBagTest, AMissingNameOrAnotherTypeAnswersElementNotFound) {
    const auto bag = Bag();
    Bstr text;
    LONG number = 99;
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, bag->GetString(Bstr(L"Other").Get(), text.Put()));
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, bag->GetString(Bstr(L"KoraTeskType").Get(), text.Put()));
    EXPECT_EQ(nullptr, text.Get());
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, bag->GetInt32(Bstr(L"KoraNsPrefix").Get(), &number));
    EXPECT_EQ(0, number);
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, bag->GetInt32(nullptr, &number));
}

TEST_F(DriverPropertyBagTest, RefusesNullOutPointers) {
    const auto bag = Bag();
    EXPECT_EQ(E_POINTER, bag->GetString(Bstr(L"KoraNsPrefix").Get(), nullptr));
    EXPECT_EQ(E_POINTER, bag->GetInt32(Bstr(L"KoraTeskType").Get(), nullptr));
    EXPECT_EQ(E_POINTER, bag->GetBool(Bstr(L"Flag").Get(), nullptr));
}

TEST_F(DriverPropertyBagTest, IsReadOnly) {
    const auto bag = Bag();
    EXPECT_EQ(E_NOTIMPL, bag->SetBool(nullptr, TRUE));
    EXPECT_EQ(E_NOTIMPL, bag->SetInt32(nullptr, 1));
    EXPECT_EQ(E_NOTIMPL, bag->SetString(nullptr, nullptr));
    EXPECT_EQ(E_NOTIMPL, bag->SetBytes(nullptr, 0, nullptr));
}

TEST_F(DriverPropertyBagTest, AnswersItsInterfacesFromItsIdentity) {
    const auto bag = Bag();
    ComPtr<IUnknown> identity;
    ComPtr<IDispatch> dispatch;
    ComPtr<IPrinterPropertyBag> properties;
    ASSERT_EQ(S_OK, bag.QueryTo(identity));
    EXPECT_EQ(S_OK, identity.QueryTo(dispatch));
    EXPECT_EQ(S_OK, identity.QueryTo(properties));
}

TEST_F(DriverPropertyBagTest, FailsForTheNameThatIsPlanned) {
    Use(Failing("IPrinterPropertyBag::GetString", E_ACCESSDENIED, "KoraNsPrefix"));
    Bstr text;
    EXPECT_EQ(E_ACCESSDENIED, Bag()->GetString(Bstr(L"KoraNsPrefix").Get(), text.Put()));
}

TEST_F(DriverPropertyBagTest, TellsWhatItWasAskedForInVain) {
    const auto bag = Bag();
    Bstr text;
    BOOL flag = FALSE;
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, bag->GetString(Bstr(L"Nowhere").Get(), text.Put()));
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, bag->GetBool(Bstr(L"KoraTeskType").Get(), &flag));
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, bag->GetString(Bstr(L"Nowhere").Get(), text.Put()));
    EXPECT_EQ((Lines{"property Nowhere of DriverPropertyBag", "property KoraTeskType of DriverPropertyBag"}),
              Context()->MissingThings());
}

TEST_F(PropertyBagTest, PutsEachTypeOfValue) {
    const auto bag = MakeObject<PropertyBag>(Context());
    bag->PutValue(L"flag", true);
    bag->PutValue(L"number", LONG{-3});
    bag->PutValue(L"count", ULONG{4'000'000'000});
    bag->PutValue(L"text", std::wstring(L"words"));
    Variant value;
    ASSERT_EQ(S_OK, bag->GetProperty(L"flag", value.Put()));
    EXPECT_EQ(VT_BOOL, value.Type());
    EXPECT_EQ(VARIANT_TRUE, value.Get().boolVal);
    ASSERT_EQ(S_OK, bag->GetProperty(L"number", value.Put()));
    EXPECT_EQ(VT_I4, value.Type());
    EXPECT_EQ(-3, value.Get().lVal);
    ASSERT_EQ(S_OK, bag->GetProperty(L"count", value.Put()));
    EXPECT_EQ(VT_UI4, value.Type());
    EXPECT_EQ(4'000'000'000U, value.Get().ulVal);
    ASSERT_EQ(S_OK, bag->GetProperty(L"text", value.Put()));
    EXPECT_EQ(std::wstring_view(L"words"), std::wstring_view(value.Text()));
}

TEST_F(PropertyBagTest, TellsWhatItWasAskedForInVain) {
    const auto bag = MakeObject<PropertyBag>(Context());
    Variant value;
    EXPECT_EQ(kPropertyMissing, bag->GetProperty(L"MergedDataFilePath", value.Put()));
    EXPECT_EQ(kPropertyMissing, bag->GetProperty(L"MergedDataFilePath", value.Put()));
    EXPECT_EQ(Lines{"property MergedDataFilePath"}, Context()->MissingThings());
}

}  // namespace
}  // namespace devkit::pipeline
