#include "devkit/prntvpt/api/fault.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "thrown.h"

namespace devkit::prntvpt {
namespace {

[[nodiscard]] std::string FaultRefusal(std::string_view text) {
    return tests::MessageOf<std::invalid_argument>([&] { static_cast<void>(ParseFault(text)); });
}

TEST(Fault, HasModeArgumentNumberAndScope) {
    const Fault fault = ParseFault("out-missing:psk:PageMediaSize@2:page");
    EXPECT_EQ(FaultMode::OutMissing, fault.mode);
    EXPECT_EQ("psk:PageMediaSize", fault.argument);
    EXPECT_EQ(2U, fault.nth);
    EXPECT_EQ(kPTPageScope, fault.scope);
    EXPECT_EQ("out-missing:psk:PageMediaSize@2:page", fault.text);
}

TEST(Fault, AllButTheModeMayBeMissing) {
    const Fault plain = ParseFault("merge-fail");
    EXPECT_EQ("", plain.argument);
    EXPECT_EQ(0U, plain.nth);
    EXPECT_EQ(std::nullopt, plain.scope);
    EXPECT_EQ("200", ParseFault("slow:200:job").argument);
    EXPECT_EQ(kPTJobScope, ParseFault("slow:200:job").scope);
    EXPECT_EQ("", ParseFault("conflict").argument);
    EXPECT_EQ("PageOutputColor", ParseFault("conflict:PageOutputColor@1").argument);
}

TEST(Fault, RefusesWhatIsNone) {
    EXPECT_EQ("fault merge-break: there is no such mode", FaultRefusal("merge-break"));
    EXPECT_EQ("fault : there is no such mode", FaultRefusal(""));
    EXPECT_EQ("fault merge-fail@0: the number of the call is none", FaultRefusal("merge-fail@0"));
    EXPECT_EQ("fault merge-fail@x: the number of the call is none", FaultRefusal("merge-fail@x"));
    EXPECT_EQ("fault merge-fail:sheet: takes no argument", FaultRefusal("merge-fail:sheet"));
    EXPECT_EQ("fault open-rpc:job: only merges have a scope", FaultRefusal("open-rpc:job"));
    EXPECT_EQ("fault out-missing: needs the name of a feature", FaultRefusal("out-missing"));
    EXPECT_EQ("fault slow: needs milliseconds, at most 60000", FaultRefusal("slow"));
    EXPECT_EQ("fault slow:60001: needs milliseconds, at most 60000", FaultRefusal("slow:60001"));
}

TEST(FaultPlan, CountsTheCallsOfItsFunction) {
    FaultPlan plan({ParseFault("merge-fail@2")});
    EXPECT_FALSE(plan.Strike(FaultTarget::Merge, kPTJobScope).Has(FaultMode::MergeFail));
    EXPECT_FALSE(plan.Strike(FaultTarget::Open).Has(FaultMode::MergeFail));
    EXPECT_TRUE(plan.Strike(FaultTarget::Merge, kPTPageScope).Has(FaultMode::MergeFail));
    EXPECT_FALSE(plan.Strike(FaultTarget::Merge, kPTPageScope).Has(FaultMode::MergeFail));
}

TEST(FaultPlan, CountsOnlyCallsOfItsScope) {
    FaultPlan plan({ParseFault("merge-fail@2:page"), ParseFault("s-ok:document")});
    EXPECT_FALSE(plan.Strike(FaultTarget::Merge, kPTPageScope).Has(FaultMode::MergeFail));
    EXPECT_FALSE(plan.Strike(FaultTarget::Merge, kPTJobScope).Has(FaultMode::MergeFail));
    const ActiveFaults document = plan.Strike(FaultTarget::Merge, kPTDocumentScope);
    EXPECT_TRUE(document.Has(FaultMode::PlainSuccess));
    EXPECT_FALSE(document.Has(FaultMode::MergeFail));
    EXPECT_TRUE(plan.Strike(FaultTarget::Merge, kPTPageScope).Has(FaultMode::MergeFail));
}

TEST(FaultPlan, StartsAnewAfterReset) {
    FaultPlan plan({ParseFault("open-gone@1")});
    EXPECT_TRUE(plan.Strike(FaultTarget::Open).Has(FaultMode::OpenGone));
    EXPECT_FALSE(plan.Strike(FaultTarget::Open).Has(FaultMode::OpenGone));
    plan.Reset();
    EXPECT_TRUE(plan.Strike(FaultTarget::Open).Has(FaultMode::OpenGone));
}

TEST(FaultPlan, TellsWhatHasNotStruck) {
    FaultPlan plan({ParseFault("merge-fail@2:page"), ParseFault("open-gone")});
    EXPECT_EQ((std::vector<std::string>{"merge-fail@2:page", "open-gone"}), plan.Idle());
    static_cast<void>(plan.Strike(FaultTarget::Open));
    static_cast<void>(plan.Strike(FaultTarget::Merge, kPTPageScope));
    EXPECT_EQ((std::vector<std::string>{"merge-fail@2:page"}), plan.Idle());
    static_cast<void>(plan.Strike(FaultTarget::Merge, kPTPageScope));
    EXPECT_EQ(std::vector<std::string>{}, plan.Idle());
    plan.Reset();
    EXPECT_EQ(2U, plan.Idle().size());
}

TEST(FaultPlan, SomeFaultsReachEveryFunction) {
    FaultPlan plan({ParseFault("bstr-null-on-error"), ParseFault("caps-fail")});
    EXPECT_TRUE(plan.Strike(FaultTarget::Merge, kPTJobScope).Has(FaultMode::TextNullOnError));
    const ActiveFaults capabilities = plan.Strike(FaultTarget::Capabilities);
    EXPECT_TRUE(capabilities.Has(FaultMode::TextNullOnError));
    EXPECT_TRUE(capabilities.Has(FaultMode::CapabilitiesFail));
}

}  // namespace
}  // namespace devkit::prntvpt
