#include "platform/comptr.h"

#include <gtest/gtest.h>
#include <objbase.h>

namespace platform {
namespace {

TEST(ComPtr, WithoutAnObjectAnswersEPointerToAQuery) {
    ComPtr<IStream> pStream;
    EXPECT_EQ(E_POINTER, ComPtr<IUnknown>().QueryTo(pStream));
    EXPECT_FALSE(pStream);
}

TEST(ComPtr, IsMadeOfANullPointerWithoutAnObject) {
    const ComPtr<IUnknown> pNothing = nullptr;
    EXPECT_FALSE(pNothing);
}

TEST(ComPtr, QueriesAnotherInterfaceOfItsObject) {
    ComPtr<IStream> pStream;
    ASSERT_EQ(S_OK, CreateStreamOnHGlobal(nullptr, TRUE, pStream.Put()));
    ComPtr<ISequentialStream> pSequential;
    EXPECT_EQ(S_OK, pStream.QueryTo(pSequential));
    EXPECT_TRUE(pSequential);
    ComPtr<IPersist> pPersist;
    EXPECT_EQ(E_NOINTERFACE, pStream.QueryTo(pPersist));
    EXPECT_FALSE(pPersist);
}

}  // namespace
}  // namespace platform
