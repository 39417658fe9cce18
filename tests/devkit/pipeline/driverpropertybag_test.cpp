#include "devkit/pipeline/driverpropertybag.h"

#include "devkit/pipeline/fixture.h"
#include "platform/bstr.h"

namespace devkit::pipeline {
namespace {

using platform::Bstr;
using platform::ComPtr;

class DriverPropertyBagTest : public PipelineTest {
  protected:
    ComPtr<DriverPropertyBag> Bag() {
        return MakeObject<DriverPropertyBag>(
            Context(), DriverValues{{L"KoraNsPrefix", L"krk"}, {L"KoraTeskType", 2L}, {L"Flag", true}});
    }
};

TEST_F(DriverPropertyBagTest, ReadsEachTypeByName) {
    const auto bag = Bag();
    Bstr text;
    LONG number = 0;
    BOOL flag = FALSE;
    EXPECT_EQ(bag->GetString(Bstr(L"KoraNsPrefix").Get(), text.Put()), S_OK);
    EXPECT_EQ(text.View(), L"krk");
    EXPECT_EQ(bag->GetInt32(Bstr(L"KoraTeskType").Get(), &number), S_OK);
    EXPECT_EQ(number, 2);
    EXPECT_EQ(bag->GetBool(Bstr(L"Flag").Get(), &flag), S_OK);
    EXPECT_EQ(flag, TRUE);
}

TEST_F(DriverPropertyBagTest, AMissingNameOrAnotherTypeAnswersElementNotFound) {
    const auto bag = Bag();
    Bstr text;
    LONG number = 99;
    EXPECT_EQ(bag->GetString(Bstr(L"Other").Get(), text.Put()), E_ELEMENT_NOT_FOUND);
    EXPECT_EQ(bag->GetString(Bstr(L"KoraTeskType").Get(), text.Put()), E_ELEMENT_NOT_FOUND);
    EXPECT_EQ(text.Get(), nullptr);
    EXPECT_EQ(bag->GetInt32(Bstr(L"KoraNsPrefix").Get(), &number), E_ELEMENT_NOT_FOUND);
    EXPECT_EQ(number, 0);
    EXPECT_EQ(bag->GetInt32(nullptr, &number), E_ELEMENT_NOT_FOUND);
}

TEST_F(DriverPropertyBagTest, RefusesNullOutPointers) {
    const auto bag = Bag();
    EXPECT_EQ(bag->GetString(Bstr(L"KoraNsPrefix").Get(), nullptr), E_POINTER);
    EXPECT_EQ(bag->GetInt32(Bstr(L"KoraTeskType").Get(), nullptr), E_POINTER);
    EXPECT_EQ(bag->GetBool(Bstr(L"Flag").Get(), nullptr), E_POINTER);
}

TEST_F(DriverPropertyBagTest, IsReadOnly) {
    const auto bag = Bag();
    EXPECT_EQ(bag->SetBool(nullptr, TRUE), E_NOTIMPL);
    EXPECT_EQ(bag->SetInt32(nullptr, 1), E_NOTIMPL);
    EXPECT_EQ(bag->SetString(nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(bag->SetBytes(nullptr, 0, nullptr), E_NOTIMPL);
}

TEST_F(DriverPropertyBagTest, AnswersItsInterfacesFromItsIdentity) {
    const auto bag = Bag();
    ComPtr<IUnknown> identity;
    ComPtr<IDispatch> dispatch;
    ComPtr<IPrinterPropertyBag> properties;
    ASSERT_EQ(bag.QueryTo(identity), S_OK);
    EXPECT_EQ(identity.QueryTo(dispatch), S_OK);
    EXPECT_EQ(identity.QueryTo(properties), S_OK);
}

TEST_F(DriverPropertyBagTest, FailsForTheNameThatIsPlanned) {
    Use(Failing("IPrinterPropertyBag::GetString", E_ACCESSDENIED, "KoraNsPrefix"));
    Bstr text;
    EXPECT_EQ(Bag()->GetString(Bstr(L"KoraNsPrefix").Get(), text.Put()), E_ACCESSDENIED);
}

}  // namespace
}  // namespace devkit::pipeline
