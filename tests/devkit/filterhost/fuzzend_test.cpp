#include "devkit/filterhost/fuzzend.h"

#include <gtest/gtest.h>

namespace devkit::filterhost {
namespace {

HostSettings WithFilter() {
    HostSettings settings;
    settings.filters.push_back({"", "C:\\somewhere\\MyFilter.dll"});
    return settings;
}

FuzzEnd OfCrash(const std::string& text) { return EndOf(Crash{0xC0000005, text}, WithFilter()); }

FuzzEnd OfResult(const RunResult& result) { return EndOf(result, WithFilter(), DocumentedCodes()); }

RunResult WithCode(HRESULT code) {
    RunResult result;
    result.end.emplace();
    result.end->initialized = S_OK;
    result.end->result = code;
    return result;
}

TEST(FuzzEnd, TellsTheFiltersCrashesFromTheSystemsByTheModule) {
    const std::string crashed = "the filter crashed with 0xC0000005 ACCESS_VIOLATION reading 0x10 at ";
    EXPECT_EQ(FuzzEnd::Crash, OfCrash(crashed + "myfilter.dll+0x1A2B").kind);
    EXPECT_EQ(FuzzEnd::SystemCrash, OfCrash(crashed + "msxml3.dll+0x1A2B").kind);
    EXPECT_EQ(
        FuzzEnd::SystemCrash,
        OfCrash("the filter crashed with 0xC0000005 ACCESS_VIOLATION running 0x0, called by msxml6.dll+0x1")
            .kind);
    // It does what its caller says, and a damaged heap shows there.
    EXPECT_EQ(FuzzEnd::Crash, OfCrash(crashed + "ntdll.dll+0x1A2B").kind);
    EXPECT_EQ(FuzzEnd::Crash, OfCrash(crashed + "UCRTBASE.dll+0x1A2B").kind);
    // In no module at all.
    EXPECT_EQ(FuzzEnd::Crash, OfCrash(crashed + "address 0x1234").kind);
    EXPECT_EQ(FuzzEnd::Crash, OfCrash("the filter called abort").kind);
    EXPECT_EQ(
        FuzzEnd::KitCrash,
        OfCrash("the kit crashed with 0xC0000005 ACCESS_VIOLATION reading 0x0 at filterhost.exe+0x1").kind);
}

TEST(FuzzEnd, CrashesAtOnePlaceHaveOneCause) {
    const FuzzEnd one =
        OfCrash("the filter crashed with 0xC0000005 ACCESS_VIOLATION reading 0x10 at myfilter.dll+0x1A2B");
    const FuzzEnd other =
        OfCrash("the filter crashed with 0xC0000005 ACCESS_VIOLATION writing 0x20 at myfilter.dll+0x1A2B");
    EXPECT_EQ("myfilter.dll+0x1A2B", one.cause);
    EXPECT_EQ(one.cause, other.cause);
    EXPECT_NE(one.text, other.text);
}

TEST(FuzzEnd, ADocumentedCodeIsARefusal) {
    for (const HRESULT code : DocumentedCodes()) EXPECT_EQ(FuzzEnd::Refused, OfResult(WithCode(code)).kind);
    EXPECT_EQ("0x80004005 E_FAIL", OfResult(WithCode(E_FAIL)).cause);
    const FuzzEnd other = OfResult(WithCode(E_POINTER));
    EXPECT_EQ(FuzzEnd::BadCode, other.kind);
    EXPECT_EQ("the filter failed with 0x80004003 E_POINTER", other.text);
    EXPECT_EQ(FuzzEnd::Passed, OfResult(WithCode(S_OK)).kind);
    EXPECT_EQ(FuzzEnd::Refused, EndOf(WithCode(E_POINTER), WithFilter(), {E_POINTER}).kind);
}

TEST(FuzzEnd, EachCodeThatAFilterGaveMustBeDocumented) {
    RunResult result = WithCode(S_OK);
    FilterEnd& filter = result.end->filters.emplace_back();
    filter.shutdownCodes = {E_FAIL, E_POINTER};
    EXPECT_EQ("the filter failed with 0x80004003 E_POINTER", OfResult(result).text);
    filter.shutdownCodes.clear();
    filter.operation = E_ACCESSDENIED;
    EXPECT_EQ(FuzzEnd::BadCode, OfResult(result).kind);
    result = WithCode(S_OK);
    result.end->initialized = E_POINTER;
    EXPECT_EQ(FuzzEnd::BadCode, OfResult(result).kind);
}

TEST(FuzzEnd, ABreachCountsMoreThanTheCode) {
    RunResult result = WithCode(E_POINTER);
    result.breaches = {{"leak", "never released: FixedPage /1.fpage, 1 reference"}};
    const FuzzEnd end = OfResult(result);
    EXPECT_EQ(FuzzEnd::Breach, end.kind);
    EXPECT_EQ("leak", end.cause);
    EXPECT_EQ("leak: never released: FixedPage /1.fpage, 1 reference", end.text);
}

TEST(FuzzEnd, ACrashAHangAndAnEndedThreadComeBeforeAll) {
    RunResult result = WithCode(S_OK);
    result.breaches = {{"leak", "one"}};
    result.end->hung = true;
    EXPECT_EQ(FuzzEnd::Hang, OfResult(result).kind);
    result.end->threadEnded = true;
    EXPECT_EQ(FuzzEnd::Crash, OfResult(result).kind);
    result.crash = Crash{0, "the filter damaged the heap of the process"};
    EXPECT_EQ("the filter damaged the heap of the process", OfResult(result).text);
}

TEST(FuzzEnd, ADocumentThatCannotBeReadIsNobodysFault) {
    RunResult result;
    result.status = UnreadableInput;
    result.errors = {"is not a zip archive"};
    EXPECT_EQ(FuzzEnd::Unreadable, OfResult(result).kind);
    // A filter that cannot be made is.
    result.status = FilterFailed;
    EXPECT_EQ(FuzzEnd::BadCode, OfResult(result).kind);
}

TEST(FuzzEnd, HasTheStatusOfARun) {
    EXPECT_EQ(Done, StatusOf(FuzzEnd::SystemCrash));
    EXPECT_EQ(Done, StatusOf(FuzzEnd::Refused));
    EXPECT_EQ(RuleBroken, StatusOf(FuzzEnd::Breach));
    EXPECT_EQ(FilterFailed, StatusOf(FuzzEnd::Hang));
    EXPECT_STREQ("crash in the system", NameOf(FuzzEnd::SystemCrash));
    EXPECT_STREQ("crash of the kit", NameOf(FuzzEnd::KitCrash));
}

}  // namespace
}  // namespace devkit::filterhost
