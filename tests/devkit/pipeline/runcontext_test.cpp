#include "devkit/pipeline/runcontext.h"

#include <gtest/gtest.h>

#include <thread>

namespace devkit::pipeline {
namespace {

TEST(RunContext, RecordsABreachAndGivesItsCode) {
    RunContext context;
    EXPECT_EQ(context.Breach("one"), CallOutOfOrder);
    EXPECT_EQ(context.Breach("two", E_INVALIDARG), E_INVALIDARG);
    EXPECT_EQ(context.Breaches().Lines(), (std::vector<std::string>{"one", "two"}));
}

TEST(RunContext, KeepsInputFailuresApartFromBreaches) {
    RunContext context;
    context.InputFailed("/1.fpage: damaged");
    EXPECT_EQ(context.InputFailures(), std::vector<std::string>{"/1.fpage: damaged"});
    EXPECT_TRUE(context.Breaches().Lines().empty());
}

TEST(RunContext, ACancellationEndsAWait) {
    RunContext context;
    EXPECT_FALSE(context.IsCancelled());
    const auto start = std::chrono::steady_clock::now();
    std::thread canceller([&] { context.Cancel(); });
    context.WaitUnlessCancelled(std::chrono::seconds(60));
    canceller.join();
    EXPECT_TRUE(context.IsCancelled());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(50));
}

}  // namespace
}  // namespace devkit::pipeline
