#include "platform/variant.h"

#include <gtest/gtest.h>

#include "mockobject.h"

namespace platform {
namespace {

TEST(VariantTest, HoldsAReferenceOfItsOwn) {
    const auto object = tests::MakeMock<tests::MockUnknown>();
    {
        const Variant value(object.Get());
        EXPECT_EQ(VT_UNKNOWN, value.Type());
        EXPECT_EQ(object.Get(), value.Unknown());
        EXPECT_EQ(2u, object->References());
    }
    EXPECT_EQ(1u, object->References());
}

TEST(VariantTest, NoObjectIsAnObjectThatIsNull) {
    const Variant value(static_cast<IUnknown*>(nullptr));
    EXPECT_EQ(VT_UNKNOWN, value.Type());
    EXPECT_EQ(nullptr, value.Unknown());
}

// A VT_DISPATCH value holds an object as well.
TEST(VariantTest, GivesTheObjectOfEitherKindOfInterface) {
    const auto object = tests::MakeMock<tests::MockUnknown>();
    Variant value;
    value.Put()->vt = VT_DISPATCH;
    object->AddRef();
    const_cast<VARIANT&>(value.Get()).punkVal = object.Get();
    EXPECT_EQ(object.Get(), value.Unknown());
    static_cast<void>(value.Put());
    EXPECT_EQ(VT_EMPTY, value.Type());
    EXPECT_EQ(1u, object->References());
}

TEST(VariantTest, AValueOfAnotherTypeHasNoObjectNoTextAndNoHandle) {
    const Variant number(LONG{7});
    EXPECT_EQ(nullptr, number.Unknown());
    EXPECT_EQ(nullptr, number.Text());
    EXPECT_EQ(nullptr, number.Handle());
}

// The system refuses to clear it, and it owns nothing.
TEST(VariantTest, AHandleIsBorrowed) {
    Variant value;
    VARIANT* const pValue = value.Put();
    pValue->vt = VT_BYREF;
    pValue->byref = &value;
    EXPECT_EQ(&value, value.Handle());
    static_cast<void>(value.Put());
    EXPECT_EQ(VT_EMPTY, value.Type());
    EXPECT_EQ(nullptr, value.Handle());
}

}  // namespace
}  // namespace platform
