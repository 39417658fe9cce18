#include "devkit/pipeline/apartmentwatch.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

namespace devkit::pipeline {
namespace {

// How often a thread of its own, which does this, leaves COM without having entered it.
template <typename Body>
int UnpairedIn(Body body) {
    int unpaired = 0;
    std::thread([&] {
        const ApartmentWatch watch([&] { ++unpaired; });
        body();
    }).join();
    return unpaired;
}

TEST(ApartmentWatch, PairsAreFine) {
    EXPECT_EQ(0, UnpairedIn([] {}));
    EXPECT_EQ(0, UnpairedIn([] {
                  EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
                  EXPECT_EQ(S_FALSE, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
                  CoUninitialize();
                  CoUninitialize();
              }));
}

TEST(ApartmentWatch, EachCoUninitializeWithoutItsPairIsTold) {
    EXPECT_EQ(2, UnpairedIn([] {
                  CoUninitialize();
                  EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
                  CoUninitialize();
                  CoUninitialize();
              }));
}

TEST(ApartmentWatch, ARefusedCoInitializeExHasNoPair) {
    EXPECT_EQ(1, UnpairedIn([] {
                  EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
                  EXPECT_EQ(RPC_E_CHANGED_MODE, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
                  CoUninitialize();
                  CoUninitialize();
              }));
}

TEST(ApartmentWatch, WhatIsMadeInAnApartmentIsGoneBeforeItIs) {
    std::string events;
    std::thread([&] {
        const auto make = [&]() -> std::shared_ptr<void> {
            events += "made ";
            return {&events, [](std::string* pEvents) {
                        APTTYPE type = APTTYPE_CURRENT;
                        APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
                        const bool isEntered = SUCCEEDED(CoGetApartmentType(&type, &qualifier));
                        *pEvents += isEntered && type != APTTYPE_MTA ? "gone " : "late ";
                    }};
        };
        const ApartmentWatch watch([] {}, make);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
            EXPECT_EQ(S_FALSE, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
            CoUninitialize();
            events += "inner ";
            CoUninitialize();
        }
    }).join();
    EXPECT_EQ("made inner gone made inner gone ", events);
}

TEST(ApartmentWatch, OtherThreadsAndLaterCallsAreNotItsOwn) {
    EXPECT_EQ(0, UnpairedIn([] { std::thread([] { CoUninitialize(); }).join(); }));
    int unpaired = 0;
    std::thread([&] {
        {
            const ApartmentWatch watch([&] { ++unpaired; });
        }
        CoUninitialize();
    }).join();
    EXPECT_EQ(0, unpaired);
}

}  // namespace
}  // namespace devkit::pipeline
