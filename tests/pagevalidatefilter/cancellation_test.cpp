#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "pagevalidatefilter/filterjob.h"

namespace pagevalidatefilter {
namespace {

using CancellationTest = FilterJobTest;

// Whether the condition came true in time.
bool WaitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds most = std::chrono::seconds(30)) {
    const auto end = std::chrono::steady_clock::now() + most;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

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
    constexpr int kPages = 2;
    constexpr std::size_t kRequests = 2 + kPages + 1;
    for (int round = 0; round < 40; ++round) {
        Prepare();
        AddDocument(kPages);
        std::atomic<bool> isOver = false;
        std::atomic<int> cancels = 0;
        std::thread canceller([&] {
            do {
                EXPECT_EQ(S_OK, m_pFilter->ShutdownOperation());
                ++cancels;
            } while (!isOver);
        });
        // No part is given before one more cancel has begun and ended.
        std::size_t requestsWithCancel = 0;
        m_pReader->SetHook([&](std::size_t) {
            const int before = cancels;
            requestsWithCancel += WaitUntil([&] { return cancels >= before + 2; });
        });
        EXPECT_EQ(S_OK, Run());
        isOver = true;
        canceller.join();
        EXPECT_EQ(kRequests, requestsWithCancel);
        EXPECT_EQ(static_cast<std::size_t>(cancels), m_calls.Count("FilterFinished"));
        // The job's own, and one for each cancel that found the writer.
        EXPECT_GT(m_calls.Count("CloseSender"), kRequests);
        EXPECT_EQ(4u, m_pWriter->Sent().size());
        EXPECT_EQ(3u, m_pWriter->References());
    }
}

// Tells when somebody takes a reference.
class WatchedConsumer final : public tests::MockDocumentConsumer {
  public:
    using MockDocumentConsumer::MockDocumentConsumer;

    ULONG STDMETHODCALLTYPE AddRef() override {
        if (onAddRef) onAddRef();
        return MockDocumentConsumer::AddRef();
    }

    std::function<void()> onAddRef;
};

TEST_F(CancellationTest, TheWriterIsNotReplacedWhileACancellingThreadTakesIt) {
    const auto pWatched = tests::MakeMock<WatchedConsumer>(m_calls);
    m_pCommunicator->SetWriter(pWatched.Get());
    EXPECT_EQ(S_OK, Run());
    m_calls.Clear();
    m_pCommunicator->SetWriter(m_pWriter.Get());

    std::atomic<bool> isTaking = false;
    bool isReplaced = false;
    pWatched->onAddRef = [&] {
        isTaking = true;
        // What the operation does next when it has a new writer.
        isReplaced = WaitUntil([&] { return m_calls.Count("GetProperty PerUserPrintTicket") != 0; },
                               std::chrono::milliseconds(250));
    };
    std::thread canceller([&] { EXPECT_EQ(S_OK, m_pFilter->ShutdownOperation()); });
    EXPECT_TRUE(WaitUntil([&] { return isTaking.load(); }));
    EXPECT_EQ(S_OK, Run());
    canceller.join();
    pWatched->onAddRef = nullptr;
    EXPECT_FALSE(isReplaced);
    EXPECT_EQ(1u, pWatched->References());
    EXPECT_EQ(3u, m_pWriter->References());
}

}  // namespace
}  // namespace pagevalidatefilter
