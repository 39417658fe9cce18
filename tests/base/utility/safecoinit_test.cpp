#include "base/utility/safecoinit.h"

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

#include "base/logging/exceptions.h"
#include "importseam.h"
#include "thrown.h"

namespace {

HRESULT g_enterResult = S_OK;
DWORD g_enterFlags = 0;
int g_entries = 0;
int g_exits = 0;

HRESULT WINAPI CountingCoInitializeEx(void* pReserved, DWORD flags) {
    ++g_entries;
    g_enterFlags = flags;
    if (FAILED(g_enterResult)) return g_enterResult;
    static const auto pSystem =
        tests::SystemFunction<HRESULT WINAPI(void*, DWORD)>(L"ole32.dll", "CoInitializeEx");
    return pSystem(pReserved, flags);
}

void WINAPI CountingCoUninitialize() {
    ++g_exits;
    static const auto pSystem = tests::SystemFunction<void WINAPI()>(L"ole32.dll", "CoUninitialize");
    pSystem();
}

}  // namespace

TEST_IMPORT(CoInitializeEx, 8, CountingCoInitializeEx)
TEST_IMPORT(CoUninitialize, 0, CountingCoUninitialize)

namespace base::utility {
namespace {

// The apartment kind of the calling thread; nothing when it is in none of its own.
std::optional<APTTYPE> Apartment() {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (CoGetApartmentType(&type, &qualifier) != S_OK) return std::nullopt;
    if (qualifier == APTTYPEQUALIFIER_IMPLICIT_MTA) return std::nullopt;
    return type;
}

class SafeCoInitTest : public testing::Test {
  protected:
    SafeCoInitTest() { g_entries = g_exits = 0; }
    ~SafeCoInitTest() override { g_enterResult = S_OK; }

    template <typename Body>
    static void OnNewThread(Body body) {
        std::thread(body).join();
    }
};

TEST_F(SafeCoInitTest, EntersTheMultithreadedApartmentAndLeavesIt) {
    OnNewThread([] {
        EXPECT_EQ(std::nullopt, Apartment());
        {
            const SafeCoInit apartment;
            EXPECT_EQ(APTTYPE_MTA, Apartment());
            EXPECT_EQ(static_cast<DWORD>(COINIT_MULTITHREADED), g_enterFlags);
        }
        EXPECT_EQ(std::nullopt, Apartment());
    });
    EXPECT_EQ(1, g_entries);
    EXPECT_EQ(1, g_exits);
}

TEST_F(SafeCoInitTest, AThreadThatIsInTheMultithreadedApartmentStaysInIt) {
    OnNewThread([] {
        const SafeCoInit outer;
        {
            const SafeCoInit inner;
            EXPECT_EQ(APTTYPE_MTA, Apartment());
        }
        EXPECT_EQ(APTTYPE_MTA, Apartment());
    });
    EXPECT_EQ(2, g_entries);
    EXPECT_EQ(2, g_exits);
}

TEST_F(SafeCoInitTest, AThreadInASingleThreadedApartmentIsNotUninitialised) {
    OnNewThread([] {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        {
            const SafeCoInit apartment;
            EXPECT_NE(APTTYPE_MTA, Apartment());
        }
        EXPECT_NE(std::nullopt, Apartment());
        EXPECT_NE(APTTYPE_MTA, Apartment());
        EXPECT_EQ(0, g_exits);
        CoUninitialize();
        EXPECT_EQ(std::nullopt, Apartment());
    });
}

TEST_F(SafeCoInitTest, AnyOtherFailureIsThrownAndNothingIsTakenBack) {
    for (const HRESULT failure : {E_OUTOFMEMORY, E_INVALIDARG, E_UNEXPECTED}) {
        g_entries = 0;
        g_enterResult = failure;
        EXPECT_EQ(failure, tests::ThrownCode([] { const SafeCoInit apartment; }));
        EXPECT_EQ(1, g_entries);
        EXPECT_EQ(0, g_exits);
    }
}

}  // namespace
}  // namespace base::utility
