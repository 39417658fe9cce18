#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "pagevalidatefilter/filterjob.h"

namespace pagevalidatefilter {
namespace {

using CancellationTest = FilterJobTest;

TEST_F(CancellationTest, BeforeAnyPartWasReadCallsNoCloseSenderAndReturnsSOk) {
    EXPECT_EQ(S_OK, m_pFilter->ShutdownOperation());
    EXPECT_EQ(Calls{"FilterFinished"}, m_calls.Calls());
}

TEST_F(CancellationTest, AfterTheJobClosesTheWriterASecondTime) {
    EXPECT_EQ(S_OK, Run());
    m_calls.Clear();
    EXPECT_EQ(S_OK, m_pFilter->ShutdownOperation());
    EXPECT_EQ((Calls{"CloseSender", "FilterFinished"}), m_calls.Calls());
}

TEST_F(CancellationTest, OfAWriterThatCannotBeClosedReturnsEFailAndStillFinishes) {
    EXPECT_EQ(S_OK, Run());
    m_calls.Clear();
    m_calls.Fail("CloseSender", RPC_E_DISCONNECTED);
    EXPECT_EQ(E_FAIL, m_pFilter->ShutdownOperation());
    EXPECT_EQ((Calls{"CloseSender", "FilterFinished"}), m_calls.Calls());
}

TEST_F(CancellationTest, FromAnotherThreadAtEachPartEndsTheJobWhenTheReaderFails) {
    constexpr int kPages = 2;
    constexpr std::size_t kRequests = 2 + kPages + 1;
    for (std::size_t cancelAt = 1; cancelAt <= kRequests; ++cancelAt) {
        Prepare();
        AddDocument(kPages);
        m_pReader->SetHook([&](std::size_t part) {
            if (part != cancelAt) return;
            std::thread([&] { EXPECT_EQ(S_OK, m_pFilter->ShutdownOperation()); }).join();
            m_calls.Fail("GetXpsPart", E_ABORT);
        });
        const bool atTheEnd = cancelAt == kRequests;
        EXPECT_EQ(atTheEnd ? S_OK : E_ABORT, Run()) << cancelAt;
        EXPECT_EQ(2u, m_calls.Count("CloseSender"));
        EXPECT_EQ(1u, m_calls.Count("FilterFinished"));
        EXPECT_EQ(atTheEnd ? 0u : 1u, m_calls.Count("RequestShutdown 0x80004004"));
        EXPECT_EQ(atTheEnd ? 4u : cancelAt, m_pWriter->Sent().size());
    }
}

TEST_F(CancellationTest, AtAnyTimeOfARunningJobIsSafe) {
    for (int round = 0; round < 40; ++round) {
        Prepare();
        AddDocument(2);
        std::atomic<bool> isOver = false;
        std::atomic<int> cancels = 0;
        std::thread canceller([&] {
            do {
                EXPECT_EQ(S_OK, m_pFilter->ShutdownOperation());
                ++cancels;
            } while (!isOver);
        });
        EXPECT_EQ(S_OK, Run());
        isOver = true;
        canceller.join();
        EXPECT_EQ(static_cast<std::size_t>(cancels), m_calls.Count("FilterFinished"));
        EXPECT_EQ(4u, m_pWriter->Sent().size());
        EXPECT_EQ(3u, m_pWriter->References());
    }
}

}  // namespace
}  // namespace pagevalidatefilter
