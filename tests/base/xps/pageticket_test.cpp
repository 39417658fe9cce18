#include "base/xps/pageticket.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/logging/exceptions.h"
#include "domtest.h"
#include "domtext.h"
#include "mockstreams.h"
#include "platform/bstr.h"
#include "thrown.h"

namespace base::xps {
namespace {

constexpr char kTicket[] =
    R"(<a:PrintTicket xmlns:a="urn:a" version="1"><a:Feature name="b"/></a:PrintTicket>)";

class PageTicketTest : public tests::DomTest {
  protected:
    HRESULT ResultOfLoading(IPrintReadStream* pReader) {
        return tests::ThrownCode([&] { (void)LoadPageTicket(pReader); });
    }

    tests::CallRecorder m_calls;
};

TEST_F(PageTicketTest, LoadsAndSavesATicket) {
    const auto reader = tests::MakeMock<tests::MockReadStream>(m_calls, kTicket);
    const auto document = LoadPageTicket(reader.Get());
    const auto writer = tests::MakeMock<tests::MockWriteStream>(m_calls);
    SaveTicket(document.Get(), writer.Get());
    EXPECT_EQ(0, writer->Closes());

    const auto saved = LoadPageTicket(tests::MakeMock<tests::MockReadStream>(m_calls, writer->Bytes()).Get());
    EXPECT_EQ(tests::DomText(document.Get()), tests::DomText(saved.Get()));
    EXPECT_EQ(1u, reader->References());
    EXPECT_EQ(1u, writer->References());
}

TEST_F(PageTicketTest, LoadsFromAStreamThatGivesAFewBytesAtATime) {
    const auto whole = LoadPageTicket(tests::MakeMock<tests::MockReadStream>(m_calls, kTicket).Get());
    for (const ULONG most : {1U, 3U, 10U}) {
        const auto reader = tests::MakeMock<tests::MockReadStream>(m_calls, kTicket);
        reader->SetShortReads(most);
        EXPECT_EQ(tests::DomText(whole.Get()), tests::DomText(LoadPageTicket(reader.Get()).Get())) << most;
    }
}

TEST_F(PageTicketTest, ATicketThatIsNotWellFormedIsAFailure) {
    for (const char* text : {"", "no markup", "<a>", "<a></b>"}) {
        EXPECT_EQ(E_FAIL, ResultOfLoading(tests::MakeMock<tests::MockReadStream>(m_calls, text).Get()))
            << text;
    }
}

TEST_F(PageTicketTest, ATicketThatCannotBeReadIsAFailure) {
    m_calls.FailNth(1, STG_E_READFAULT);
    EXPECT_TRUE(FAILED(ResultOfLoading(tests::MakeMock<tests::MockReadStream>(m_calls, kTicket).Get())));
    EXPECT_TRUE(m_calls.HasFailed());
}

std::string MessageOf(void (*action)()) { return tests::Thrown<std::invalid_argument>(action); }

TEST_F(PageTicketTest, NullArgumentsAreNamed) {
    EXPECT_EQ("tests/base/xps/pageticket_test.cpp(LINE) : pReader is null.\n",
              MessageOf([] { (void)LoadPageTicket(nullptr); }));
    EXPECT_EQ("tests/base/xps/pageticket_test.cpp(LINE) : pDOMDocument is null.\n",
              MessageOf([] { SaveTicket(nullptr, nullptr); }));
    EXPECT_EQ("tests/base/xps/pageticket_test.cpp(LINE) : pWriter is null.\n",
              MessageOf([] { SaveTicket(EmptyTicket().Copy().Get(), nullptr); }));
}

TEST_F(PageTicketTest, WhatTheDocumentSaysOfTheWritingIsNotLookedAt) {
    const auto document = EmptyTicket().Copy();
    m_calls.FailNth(1, STG_E_MEDIUMFULL);
    const auto writer = tests::MakeMock<tests::MockWriteStream>(m_calls);
    SaveTicket(document.Get(), writer.Get());
    EXPECT_TRUE(m_calls.HasFailed());
    EXPECT_EQ("", writer->Bytes());
}

TEST_F(PageTicketTest, TheEmptyTicketDeclaresTheFourNamespacesAndHoldsNoFeature) {
    const auto document = EmptyTicket().Copy();
    const auto writer = tests::MakeMock<tests::MockWriteStream>(m_calls);
    SaveTicket(document.Get(), writer.Get());
    std::string text = writer->Bytes();
    EXPECT_TRUE(text.starts_with(R"(<?xml version="1.0" encoding="UTF-8")")) << text;
    text.erase(0, text.find("<psf:"));
    text.erase(text.find_last_not_of("\r\n") + 1);
    EXPECT_EQ(R"(<psf:PrintTicket version="1" xmlns:xsd="http://www.w3.org/2001/XMLSchema")"
              R"( xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance")"
              R"( xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework")"
              R"( xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"/>)",
              text);
}

TEST_F(PageTicketTest, CopiesOfTheEmptyTicketShareNothing) {
    EmptyTicket empty;
    const auto first = empty.Copy();
    const std::wstring text = tests::DomText(first.Get());
    platform::ComPtr<IXMLDOMElement> root;
    ASSERT_EQ(S_OK, first->get_documentElement(root.Put()));
    ASSERT_EQ(S_OK, root->put_text(platform::Bstr(L"changed").Get()));
    EXPECT_NE(text, tests::DomText(first.Get()));
    EXPECT_EQ(text, tests::DomText(empty.Copy().Get()));
    empty.Release();
    EXPECT_EQ(text, tests::DomText(empty.Copy().Get()));
}

TEST(TicketNameTest, SplitsTheOldNameAtItsLastSeparatorOfEitherKind) {
    EXPECT_EQ(L"/Documents/1/Pages\\pagevalidator_7_1_PT.xml",
              NewTicketName(L"/Documents/1/Pages/1_PT.xml", 7));
    EXPECT_EQ(L"/a\\b\\pagevalidator_1_c.xml", NewTicketName(L"/a\\b\\c.xml", 1));
    EXPECT_EQ(L"/a\\b\\pagevalidator_1_c.xml", NewTicketName(L"/a\\b/c.xml", 1));
    EXPECT_EQ(L"/a/b\\pagevalidator_1_c.xml", NewTicketName(L"/a/b\\c.xml", 1));
}

TEST(TicketNameTest, ANameWithoutSeparatorIsFolderAndFileNameBoth) {
    EXPECT_EQ(L".xml\\pagevalidator_7_.xml", NewTicketName(L".xml", 7));
    EXPECT_EQ(L"\\pagevalidator_2147483647_", NewTicketName(L"", 2147483647));
}

TEST(TicketNameTest, AnEmptyFolderOrFileNameStaysEmpty) {
    EXPECT_EQ(L"\\pagevalidator_1_c.xml", NewTicketName(L"/c.xml", 1));
    EXPECT_EQ(L"/a\\pagevalidator_1_", NewTicketName(L"/a/", 1));
    EXPECT_EQ(L"\\pagevalidator_1_", NewTicketName(L"/", 1));
}

TEST(TicketNameTest, PercentSignsAndOtherLettersAreKept) {
    EXPECT_EQ(L"/%s%d\\pagevalidator_1_\u00E4%20\u20AC.xml", NewTicketName(L"/%s%d/\u00E4%20\u20AC.xml", 1));
}

// The first of this process: no test has run yet.
const std::int32_t kFirstNumber = NextTicketNumber();

TEST(TicketNumberTest, StartsAt1AndCountsUpByOne) {
    EXPECT_EQ(1, kFirstNumber);
    const std::int32_t next = NextTicketNumber();
    EXPECT_EQ(next + 1, NextTicketNumber());
    EXPECT_EQ(next + 2, NextTicketNumber());
}

TEST(TicketNumberTest, NoTwoThreadsGetTheSameNumber) {
    constexpr int kEach = 10000;
    std::vector<std::vector<std::int32_t>> numbers(4);
    std::vector<std::thread> threads;
    for (auto& own : numbers) {
        threads.emplace_back([&own] {
            for (int i = 0; i < kEach; ++i) own.push_back(NextTicketNumber());
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<std::int32_t> all;
    for (const auto& own : numbers) all.insert(own.begin(), own.end());
    EXPECT_EQ(numbers.size() * kEach, all.size());
}

}  // namespace
}  // namespace base::xps
