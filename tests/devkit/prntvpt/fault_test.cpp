#include "devkit/prntvpt/api/fault.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace devkit::prntvpt {
namespace {

[[nodiscard]] std::string Refusal(std::string_view text) {
    try {
        static_cast<void>(ParseFault(text));
        return {};
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
}

TEST(Fault, HasModeArgumentNumberAndScope) {
    const Fault fault = ParseFault("out-missing:psk:PageMediaSize@2:page");
    EXPECT_EQ(fault.mode, FaultMode::OutMissing);
    EXPECT_EQ(fault.argument, "psk:PageMediaSize");
    EXPECT_EQ(fault.nth, 2U);
    EXPECT_EQ(fault.scope, kPTPageScope);
    EXPECT_EQ(fault.text, "out-missing:psk:PageMediaSize@2:page");
}

TEST(Fault, AllButTheModeMayBeMissing) {
    const Fault plain = ParseFault("merge-fail");
    EXPECT_EQ(plain.argument, "");
    EXPECT_EQ(plain.nth, 0U);
    EXPECT_EQ(plain.scope, std::nullopt);
    EXPECT_EQ(ParseFault("slow:200:job").argument, "200");
    EXPECT_EQ(ParseFault("slow:200:job").scope, kPTJobScope);
    EXPECT_EQ(ParseFault("conflict").argument, "");
    EXPECT_EQ(ParseFault("conflict:PageOutputColor@1").argument, "PageOutputColor");
}

TEST(Fault, RefusesWhatIsNone) {
    EXPECT_EQ(Refusal("merge-break"), "fault merge-break: there is no such mode");
    EXPECT_EQ(Refusal(""), "fault : there is no such mode");
    EXPECT_EQ(Refusal("merge-fail@0"), "fault merge-fail@0: the number of the call is none");
    EXPECT_EQ(Refusal("merge-fail@x"), "fault merge-fail@x: the number of the call is none");
    EXPECT_EQ(Refusal("merge-fail:sheet"), "fault merge-fail:sheet: takes no argument");
    EXPECT_EQ(Refusal("open-rpc:job"), "fault open-rpc:job: only merges have a scope");
    EXPECT_EQ(Refusal("out-missing"), "fault out-missing: needs the name of a feature");
    EXPECT_EQ(Refusal("slow"), "fault slow: needs milliseconds, at most 60000");
    EXPECT_EQ(Refusal("slow:60001"), "fault slow:60001: needs milliseconds, at most 60000");
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

TEST(FaultPlan, SomeFaultsReachEveryFunction) {
    FaultPlan plan({ParseFault("bstr-null-on-error"), ParseFault("caps-fail")});
    EXPECT_TRUE(plan.Strike(FaultTarget::Merge, kPTJobScope).Has(FaultMode::TextNullOnError));
    const ActiveFaults capabilities = plan.Strike(FaultTarget::Capabilities);
    EXPECT_TRUE(capabilities.Has(FaultMode::TextNullOnError));
    EXPECT_TRUE(capabilities.Has(FaultMode::CapabilitiesFail));
}

}  // namespace
}  // namespace devkit::prntvpt
