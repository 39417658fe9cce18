#include "devkit/fuzz/environment.h"

#include <gtest/gtest.h>

#include <set>

#include "devkit/pipeline/runoptions.h"
#include "devkit/printschema/reader.h"
#include "devkit/prntvpt/api/configuration.h"
#include "programfolder.h"

namespace devkit::fuzz {
namespace {

using Mutator = std::string (*)(Environment&, Random&);

// Every switch that some seed gives, by the mutator.
template <typename Take>
void ForEachSeed(Mutator mutate, Take take) {
    for (unsigned seed = 0; seed < 1000; ++seed) {
        Random random(seed);
        Environment environment;
        EXPECT_NE("", mutate(environment, random));
        take(environment);
    }
}

TEST(Environment, TheProviderKnowsEverySwitch) {
    std::set<std::string> tried;
    ForEachSeed(MutateProvider, [&tried](const Environment& environment) {
        const std::string device = environment.device.empty() ? "simprinter" : environment.device;
        for (const std::string& text : environment.providerSwitches) tried.insert(text);
        tried.insert("device " + device);
    });
    EXPECT_LT(60U, tried.size());
    for (const std::string& each : tried) {
        prntvpt::ProviderSettings settings;
        const bool isDevice = each.starts_with("device ");
        settings.device = tests::ProgramFolder() / "devices" / (isDevice ? each.substr(7) : "simprinter");
        if (!isDevice) settings.switches = {each};
        EXPECT_NO_THROW(static_cast<void>(prntvpt::MakeConfiguration(settings))) << each;
    }
}

TEST(Environment, KnowsTheCodesThatItsFaultsAnswer) {
    unsigned seen = 0;
    ForEachSeed(MutateProvider, [&seen](const Environment& environment) {
        if (environment.providerSwitches.empty()) return;
        const std::string& text = environment.providerSwitches.front();
        if (text.starts_with("fault=open-denied")) {
            ++seen;
            EXPECT_EQ(std::vector<HRESULT>{E_ACCESSDENIED}, environment.expectedCodes);
        }
        if (!text.starts_with("fault=")) {
            EXPECT_TRUE(environment.expectedCodes.empty());
        }
    });
    EXPECT_LT(0U, seen);
}

TEST(Environment, ThePipelineKnowsEverySwitch) {
    unsigned cancelled = 0;
    ForEachSeed(MutatePipeline, [&cancelled](const Environment& environment) {
        pipeline::RunOptions options;
        for (const std::string& text : environment.pipelineSwitches)
            EXPECT_NO_THROW(pipeline::ApplySwitch(options, text)) << text;
        EXPECT_EQ(options.behaviour.faults.size(), environment.expectedCodes.size());
        for (std::size_t i = 0; i < environment.expectedCodes.size(); ++i)
            EXPECT_EQ(options.behaviour.faults[i].code, environment.expectedCodes[i]);
        cancelled += environment.cancelAt != 0 ? 1 : 0;
    });
    EXPECT_LT(100U, cancelled);
}

TEST(Environment, TheBagsTakeEveryEntry) {
    ForEachSeed(MutateProperties, [](const Environment& environment) {
        EXPECT_EQ(1U, environment.properties.size() + environment.driverValues.size());
        for (const std::string& text : environment.properties)
            EXPECT_NO_THROW(static_cast<void>(pipeline::ParseProperty(text)));
        for (const std::string& text : environment.driverValues)
            EXPECT_NO_THROW(static_cast<void>(pipeline::ParseProperty(text)));
    });
}

TEST(Environment, AUserTicketIsMadeFromAGoodOne) {
    EXPECT_NO_THROW(
        static_cast<void>(printschema::ReadFramework(UsualTicket(), printschema::Tag::PrintTicket)));
    unsigned changed = 0;
    ForEachSeed(MutateUserTicket, [&changed](const Environment& environment) {
        ASSERT_TRUE(environment.userTicket);
        changed += *environment.userTicket != UsualTicket() ? 1 : 0;
    });
    EXPECT_LT(800U, changed);
}

}  // namespace
}  // namespace devkit::fuzz
