#include "devkit/pipeline/callspan.h"

#include <thread>

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using std::chrono::milliseconds;

// Keeps the calls that it is told of, if it wants any.
class Keeper final : public RunObserver {
  public:
    struct Kept {
        std::string method;
        std::string argument;
        std::chrono::nanoseconds begin{0};
        std::chrono::nanoseconds end{0};
    };

    explicit Keeper(bool wantsCalls) : m_wantsCalls(wantsCalls) {}
    [[nodiscard]] bool WantsCalls() const noexcept override { return m_wantsCalls; }
    void CallMade(const MadeCallSpan& call) override {
        kept.push_back(
            {std::string(call.method), std::string(call.argument), call.begin, call.begin + call.duration});
    }

    std::vector<Kept> kept;

  private:
    const bool m_wantsCalls;
};

class CallSpanTest : public PipelineTest {
  protected:
    void WatchCalls(bool wantsCalls = true) {
        m_keeper = std::make_shared<Keeper>(wantsCalls);
        Watch(m_keeper);
    }

    std::shared_ptr<Keeper> m_keeper;
};

TEST_F(CallSpanTest, IsNamedByTheCallThatItMeasures) {
    WatchCalls();
    {
        const CallTime time(*Context());
        ASSERT_EQ(S_OK, Context()->Calls().Enter("IA::First", "name"));
        std::this_thread::sleep_for(kNap);
    }
    ASSERT_EQ(1U, m_keeper->kept.size());
    EXPECT_EQ("IA::First", m_keeper->kept[0].method);
    EXPECT_EQ("name", m_keeper->kept[0].argument);
    EXPECT_LE(kNap, m_keeper->kept[0].end - m_keeper->kept[0].begin);
}

TEST_F(CallSpanTest, NestsAsTheCallsDo) {
    WatchCalls();
    {
        const CallTime outer(*Context());
        Context()->Calls().Note("IA::Outer");
        { const CallTime inner(*Context(), "Release"); }
        // What is noted from here on is the outer one's again.
        Context()->Calls().Note("IA::Renamed");
    }
    ASSERT_EQ(2U, m_keeper->kept.size());
    EXPECT_EQ("Release", m_keeper->kept[0].method);
    EXPECT_EQ("IA::Renamed", m_keeper->kept[1].method);
    EXPECT_LE(m_keeper->kept[1].begin, m_keeper->kept[0].begin);
    EXPECT_LE(m_keeper->kept[0].end, m_keeper->kept[1].end);
}

TEST_F(CallSpanTest, TellsNothingOfACallWithoutAName) {
    WatchCalls();
    { const CallTime time(*Context()); }
    EXPECT_TRUE(m_keeper->kept.empty());
}

TEST_F(CallSpanTest, TellsNothingWhereNobodyWantsIt) {
    WatchCalls(false);
    {
        const CallTime time(*Context(), "Release");
        Context()->Calls().Note("IA::First");
    }
    EXPECT_TRUE(m_keeper->kept.empty());
}

TEST_F(CallSpanTest, TheTellingIsTheObserversTime) {
    class Slow final : public RunObserver {
      public:
        [[nodiscard]] bool WantsCalls() const noexcept override { return true; }
        void CallMade(const MadeCallSpan&) override { std::this_thread::sleep_for(kNap); }
    };
    Watch(std::make_shared<Slow>());
    {
        const OperationClock::Operation operation(Context()->Clock());
        const CallTime time(*Context(), "Release");
    }
    const OperationTimes times = Context()->Clock().Times();
    EXPECT_LE(kNap, times.Of(Share::Observer));
    EXPECT_GT(kNap, times.Of(Share::Pipeline));
}

}  // namespace
}  // namespace devkit::pipeline
