#include "devkit/pipeline/runoptions.h"

#include <gtest/gtest.h>

#include "thrown.h"

namespace devkit::pipeline {
namespace {

RunOptions With(std::string_view text) {
    RunOptions options;
    ApplySwitch(options, text);
    return options;
}

Behaviour BehaviourWith(std::string_view text) { return With(text).behaviour; }

std::string Refusal(std::string_view text) {
    return tests::MessageOf<SwitchError>([&] { static_cast<void>(With(text)); });
}

Fault FaultWith(std::string_view text) {
    const std::vector<Fault> faults = BehaviourWith(text).faults;
    EXPECT_EQ(1U, faults.size());
    return faults.empty() ? Fault() : faults.front();
}

TEST(PipelineSwitches, ACallFailsByItsNameItsNumberAndItsArgument) {
    Fault fault = FaultWith("fail=GetXpsPart=E_FAIL");
    EXPECT_EQ("GetXpsPart", fault.method);
    EXPECT_EQ("", fault.argument);
    EXPECT_EQ(1U, fault.nth);
    EXPECT_EQ(E_FAIL, fault.code);
    EXPECT_FALSE(fault.onwards);

    fault = FaultWith("fail=IPrintReadStream::ReadBytes@12=0x8003001E");
    EXPECT_EQ("IPrintReadStream::ReadBytes", fault.method);
    EXPECT_EQ(12U, fault.nth);
    EXPECT_EQ(STG_E_READFAULT, fault.code);

    fault = FaultWith("fail=GetProperty(a@1=(b))@2+=E_ABORT");
    EXPECT_EQ("GetProperty", fault.method);
    EXPECT_EQ("a@1=(b)", fault.argument);
    EXPECT_EQ(2U, fault.nth);
    EXPECT_TRUE(fault.onwards);
    EXPECT_EQ(E_ABORT, fault.code);
}

TEST(PipelineSwitches, SeveralFaultsAreAllKept) {
    RunOptions options;
    ApplySwitch(options, "fail=GetXpsPart=E_FAIL");
    ApplySwitch(options, "fail=CloseSender=E_ABORT");
    ASSERT_EQ(2U, options.behaviour.faults.size());
    EXPECT_EQ("CloseSender", options.behaviour.faults[1].method);
}

TEST(PipelineSwitches, EachOfTheOthersSetsItsValue) {
    EXPECT_EQ(7U, BehaviourWith("short-reads=7").maxBytesPerRead);
    EXPECT_EQ(8U, BehaviourWith("short-writes=8").maxBytesPerWrite);
    EXPECT_EQ(EndFlag::AfterLastData, BehaviourWith("end-flag=alone").endFlag);
    EXPECT_EQ(EndFlag::WithLastData, BehaviourWith("end-flag=with-data").endFlag);
    EXPECT_EQ(MissingPart::SuccessWithNull, BehaviourWith("missing-ticket=null").missingPart);
    EXPECT_EQ(MissingPart::NotFound, BehaviourWith("missing-ticket=failure").missingPart);
    EXPECT_EQ(AfterCancel::EndOfParts, BehaviourWith("after-cancel=end").afterCancel);
    EXPECT_EQ(AfterCancel::KeepGiving, BehaviourWith("after-cancel=continue").afterCancel);
    EXPECT_EQ(AfterCancel::FailGetXpsPart, BehaviourWith("after-cancel=fail").afterCancel);
    EXPECT_EQ(StreamKind::Unrecognised, BehaviourWith("reader=unknown").reader);
    EXPECT_EQ(StreamKind::None, BehaviourWith("writer=null").writer);
    EXPECT_TRUE(BehaviourWith("ambiguous-document=on").ambiguousDocument);
    EXPECT_EQ(std::chrono::milliseconds(250), BehaviourWith("slow-part=250").slowPart);
    EXPECT_TRUE(With("cancel=concurrent").cancelConcurrently);
    EXPECT_FALSE(With("cancel=concurrent").cancelTwice);
    EXPECT_TRUE(With("cancel=twice").cancelTwice);
    EXPECT_FALSE(With("cancel=twice").cancelConcurrently);
    EXPECT_EQ(Apartment::SingleThreaded, With("apartment=single").apartment);
    EXPECT_EQ(LastRelease::OtherThread, With("last-release=other-thread").lastRelease);
    EXPECT_TRUE(With("start=yes").startsOperation);
    EXPECT_FALSE(With("start=never").startsOperation);
}

TEST(PipelineSwitches, WhatCannotBeIsRefusedInALine) {
    EXPECT_EQ(
        "sort-reads is not a switch of the pipeline (fail, short-reads, short-writes, end-flag, "
        "missing-ticket, "
        "after-cancel, cancel, reader, writer, ambiguous-document, slow-part, apartment, last-release, "
        "start)",
        Refusal("sort-reads=1"));
    EXPECT_EQ("short-reads has no value", Refusal("short-reads"));
    EXPECT_EQ("short-reads=-1: is not a whole number", Refusal("short-reads=-1"));
    EXPECT_EQ("short-reads=1x: is not a whole number", Refusal("short-reads=1x"));
    EXPECT_EQ("end-flag=both: is none of with-data, alone", Refusal("end-flag=both"));
    EXPECT_EQ("fail=GetXpsPart: is not CALL[@N[+]]=CODE", Refusal("fail=GetXpsPart"));
    EXPECT_EQ("fail==E_FAIL: is not CALL[@N[+]]=CODE", Refusal("fail==E_FAIL"));
    EXPECT_EQ("fail=Get(a=E_FAIL: is not CALL[@N[+]]=CODE", Refusal("fail=Get(a=E_FAIL"));
    EXPECT_EQ("fail=GetXpsPart=E_NOTHING: has no failing code at its end",
              Refusal("fail=GetXpsPart=E_NOTHING"));
    EXPECT_EQ("fail=GetXpsPart=S_OK: has no failing code at its end", Refusal("fail=GetXpsPart=S_OK"));
    EXPECT_EQ("fail=GetXpsPart@0=E_FAIL: counts calls from 1", Refusal("fail=GetXpsPart@0=E_FAIL"));
    EXPECT_EQ("fail=x: is not a whole number", Refusal("fail=GetXpsPart@x=E_FAIL"));
}

std::string PropertyRefusal(std::string_view text) {
    return tests::MessageOf<SwitchError>([&] { static_cast<void>(ParseProperty(text)); });
}

TEST(PropertyText, HasANameATypeAndAValue) {
    EXPECT_EQ((PropertyValues::value_type{L"Name", L"a=b:c"}), ParseProperty("Name=string:a=b:c"));
    EXPECT_EQ((PropertyValues::value_type{L"Name", L""}), ParseProperty("Name=string:"));
    EXPECT_EQ((PropertyValues::value_type{L"Name", LONG{-7}}), ParseProperty("Name=int:-7"));
    EXPECT_EQ((PropertyValues::value_type{L"Name", ULONG{4'294'967'295}}),
              ParseProperty("Name=uint:4294967295"));
    EXPECT_EQ((PropertyValues::value_type{L"\u00dc", true}), ParseProperty("\xC3\x9C=bool:true"));
}

TEST(PropertyText, WhatCannotBeIsRefusedInALine) {
    EXPECT_EQ("Name is not NAME=TYPE:VALUE", PropertyRefusal("Name"));
    EXPECT_EQ("a:b is not NAME=TYPE:VALUE", PropertyRefusal("a:b"));
    EXPECT_EQ("=int:1 is not NAME=TYPE:VALUE", PropertyRefusal("=int:1"));
    EXPECT_EQ("Name=real: is none of the types bool, int, uint, string", PropertyRefusal("Name=real:1"));
    EXPECT_EQ("Name=2147483648: is not a whole number", PropertyRefusal("Name=int:2147483648"));
    EXPECT_EQ("Name=-1: is not a whole number", PropertyRefusal("Name=uint:-1"));
    EXPECT_EQ("Name=1: is none of true, false", PropertyRefusal("Name=bool:1"));
}

}  // namespace
}  // namespace devkit::pipeline
