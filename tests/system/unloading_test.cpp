#include <cstdio>
#include <functional>
#include <thread>
#include <vector>

#include "endurance.h"
#include "faultedjob.h"
#include "gate.h"
#include "mockpipeline.h"
#include "mockproperties.h"
#include "platform/comptr.h"

namespace systemtest {
namespace {

class UnloadingTest : public FaultedJobTest {};

// The slot of thread storage that comes next.
DWORD NextSlot() {
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
}

// A process has a thousand; without one there are no exceptions, and the process is ended.
TEST_F(UnloadingTest, AFilterThatIsUnloadedLeavesNoSlotOfThreadStorage) {
    const Job& failing = JobNamed("failing");
    static_cast<void>(GoodResult(failing));
    UnloadFilter();
    const DWORD before = NextSlot();
    for (int time = 0; time < 3; ++time) {
        LoadFilter();
        ExpectGoodResult(failing);
        UnloadFilter();
        ASSERT_EQ(nullptr, FilterHandle());
    }
    EXPECT_EQ(before, NextSlot());
    LoadFilter();
}

// Each time would leave two of a thread, and two more where an exception was thrown.
TEST_F(UnloadingTest, HandlesOfAThreadThatOutlivesTheFilterAndOfItsExceptionsAreClosedWithIt) {
    for (const char* const name : {"turning", "failing"}) {
        const Job& job = JobNamed(name);
        static_cast<void>(GoodResult(job));
        KeepSystemLoaded(FilterHandle());
        UnloadFilter();
        const std::size_t before = Holdings::Now().handles;
        for (int time = 0; time < 3; ++time) {
            LoadFilter();
            ExpectGoodResult(job);
            UnloadFilter();
        }
        EXPECT_GE(before + kHandlesOfTheSystem, Holdings::Now().handles) << name;
        LoadFilter();
    }
}

// Has a filter catch an exception: the pipeline cannot be told that it is done.
void CatchAnException(HMODULE module, const CLSID& filterClass) {
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    const auto getClassObject = reinterpret_cast<GetClassObject>(
        reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    platform::ComPtr<IClassFactory> pFactory;
    platform::ComPtr<IPrintPipelineFilter> pFilter;
    ASSERT_EQ(S_OK, getClassObject(filterClass, __uuidof(IClassFactory), pFactory.PutVoid()));
    ASSERT_EQ(S_OK, pFactory->CreateInstance(nullptr, __uuidof(IPrintPipelineFilter), pFilter.PutVoid()));
    tests::CallRecorder calls;
    const auto pCommunicator = tests::MakeMock<tests::MockCommunicator>(calls);
    const auto pBag = tests::MakeMock<tests::MockPropertyBag>(calls);
    const auto pControl = tests::MakeMock<tests::MockPipelineControl>(calls);
    EXPECT_EQ(S_OK, pFilter->InitializeFilter(pCommunicator.Get(), pBag.Get(), pControl.Get()));
    calls.Fail("FilterFinished", E_ABORT);
    EXPECT_EQ(E_FAIL, pFilter->ShutdownOperation());
}

// The handles of the process when so many threads have all done it, before any of them ends.
std::size_t HandlesWhenDoneBy(std::size_t count, const std::function<void()>& body) {
    tests::Gate allHaveDoneIt(count + 1);
    tests::Gate mayEnd(count + 1);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < count; ++i) {
        threads.emplace_back([&] {
            body();
            allHaveDoneIt.Pass();
            mayEnd.Pass();
        });
    }
    allHaveDoneIt.Pass();
    const std::size_t handles = Holdings::Now().handles;
    mayEnd.Pass();
    for (std::thread& thread : threads) thread.join();
    return handles;
}

TEST_F(UnloadingTest, HandlesOfMoreThreadsThanTheFilterKeepsGoWithTheThreads) {
    constexpr std::size_t kThreads = 300;
    // The system's own come and go, more of them with so many threads; 44 threads have 88.
    constexpr double kOfTheSystem = 20;
    const auto fail = [] { CatchAnException(FilterHandle(), kFilterClass); };
    // What is made once is made by now.
    static_cast<void>(HandlesWhenDoneBy(kThreads, fail));
    const std::size_t before = Holdings::Now().handles;
    const std::size_t ofTest = HandlesWhenDoneBy(kThreads, [] {}) - before;
    const auto most = static_cast<double>(before + ofTest + 2 * kThreads);
    EXPECT_NEAR(most, static_cast<double>(HandlesWhenDoneBy(kThreads, fail)), kOfTheSystem);
    EXPECT_NEAR(static_cast<double>(before), static_cast<double>(Holdings::Now().handles), kOfTheSystem);
}

TEST_F(UnloadingTest, OfAFilterThatIsUnloadedNoMoreIsKeptThanItsRuntimeKeeps) {
    const int times = IsLong() ? 1000 : 60;
    const int first = IsLong() ? 100 : 20;
    // The library of threads never gives back its records of threads, some 1400 bytes; and Wine's SAX reader
    // keeps 96 of each of two pages.
    constexpr double kMostOfALoad = 1700;
    const Job& turning = JobNamed("turning");
    static_cast<void>(GoodResult(turning));
    KeepSystemLoaded(FilterHandle());
    UnloadFilter();
    Holdings before;
    for (int time = 0; time < times; ++time) {
        if (time == first) before = Holdings::Now();
        LoadFilter();
        // The C++ runtime keeps some hundred bytes of a thread that has used the filter until the thread
        // ends.
        ExpectGoodResult(turning);
        UnloadFilter();
        ASSERT_EQ(nullptr, FilterHandle());
        ASSERT_FALSE(HasFailure()) << "time " << time;
    }
    const Holdings after = Holdings::Now();
    const auto left = static_cast<double>(after.heapBytes) - static_cast<double>(before.heapBytes);
    std::printf("each of %d times left %.0f bytes, %zu and %zu handles\n", times - first,
                left / (times - first), before.handles, after.handles);
    EXPECT_GT(kMostOfALoad * (times - first), left);
    EXPECT_GE(before.handles + kHandlesOfTheSystem, after.handles);
    EXPECT_EQ(before.gdiObjects, after.gdiObjects);
    LoadFilter();
}

}  // namespace
}  // namespace systemtest
