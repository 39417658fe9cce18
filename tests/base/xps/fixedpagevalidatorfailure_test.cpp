#include <gtest/gtest.h>

#include <algorithm>

#include "base/logging/exceptions.h"
#include "base/xps/fixedpagevalidator.h"
#include "base/xps/validatorfixture.h"
#include "thrown.h"

namespace base::xps {
namespace {

TEST_F(FixedPageValidatorTest, ANullWriterOrPageIsNamedBeforeAnyTicketIsAskedFor) {
    const std::string noWriter = tests::Thrown<std::invalid_argument>([&] {
        FixedPageValidator(m_provider, nullptr, nullptr, m_feedDirection, m_mediaSize, m_orientation,
                           m_scaling, m_printable);
    });
    EXPECT_TRUE(noWriter.starts_with("base/xps/fixedpagevalidator.cpp(")) << noWriter;
    EXPECT_TRUE(noWriter.ends_with(") : pXpsDocuConsumer is null.\n")) << noWriter;
    const std::string noPage = tests::Thrown<std::invalid_argument>([&] {
        FixedPageValidator(m_provider, m_consumer.Get(), nullptr, m_feedDirection, m_mediaSize, m_orientation,
                           m_scaling, m_printable);
    });
    EXPECT_TRUE(noPage.ends_with(") : pPage is null.\n")) << noPage;
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(FixedPageValidatorTest, ATicketThatCannotBeHadFailsTheConstruction) {
    m_provider.sizes[kPTDocumentScope] = {1, 1};
    for (const char* call : {"GetTicket 1", "GetTicket 2"}) {
        m_calls.Fail(call, E_PENDING);
        EXPECT_EQ(E_PENDING, tests::ThrownCode([&] { (void)Validator(); })) << call;
    }
}

TEST_F(FixedPageValidatorTest, AnyFailureToGetThePagesTicketMeansThatItHasNone) {
    GiveTicket();
    SetSize({76200, 126999});
    m_calls.Fail("GetPrintTicket /p", E_ACCESSDENIED);
    Validate();
    EXPECT_EQ((Calls{"GetTicket 1", "GetPrintTicket /p", "GetNewEmptyPart .xml\\pagevalidator_N_.xml",
                     "Close", "SetPrintTicket /p"}),
              Steps());
}

TEST_F(FixedPageValidatorTest, AnOldTicketThatIsNotWellFormedFailsAndIsNotDeleted) {
    GiveTicket(L"/t.xml", "<psf:PrintTicket");
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    EXPECT_EQ(E_FAIL, tests::ThrownCode([&] { Validate(); }));
    EXPECT_EQ((Calls{"GetTicket 1", "GetPrintTicket /p", "GetStream"}), Steps());
    EXPECT_EQ(m_ticket.Get(), m_page->Ticket());
    EXPECT_FALSE(IsTurned());
}

TEST_F(FixedPageValidatorTest, FailuresOfThePagesTicketNameTheValidatorsSource) {
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    for (const bool hasStream : {true, false}) {
        GiveTicket(L"/t.xml", "<psf:PrintTicket");
        m_ticket->hasNoStream = !hasStream;
        const std::string message = tests::Catch([&] { Validate(); }).text;
        EXPECT_TRUE(message.starts_with("base/xps/fixedpagevalidator.cpp(LINE) : ")) << message;
    }
}

TEST_F(FixedPageValidatorTest, AnOldTicketWithoutAStreamIsNamed) {
    GiveTicket();
    m_ticket->hasNoStream = true;
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    const std::string message = tests::Thrown<std::invalid_argument>([&] { Validate(); });
    EXPECT_TRUE(message.ends_with(") : pReader is null.\n")) << message;
}

TEST_F(FixedPageValidatorTest, ATicketOfAnotherKindOfDocumentFails) {
    GiveTicket(L"/t.xml", "<PrintCapabilities/>");
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    EXPECT_TRUE(FAILED(tests::ThrownCode([&] { Validate(); })));
    EXPECT_FALSE(HasNewTicket());
}

TEST_F(FixedPageValidatorTest, AMarkupThatCannotBeParsedFailsAfterTheTicketWasReplaced) {
    m_page = MakeMock<Page>(m_calls, L"/p", "<FixedPage>");
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    EXPECT_TRUE(FAILED(tests::ThrownCode([&] { Validate(); })));
    EXPECT_TRUE(HasNewTicket());
    ASSERT_NE(nullptr, m_page->Written());
    EXPECT_EQ("", m_page->Written()->Bytes());
    EXPECT_EQ(0, m_page->Written()->Closes());
}

TEST_F(FixedPageValidatorTest, AStreamThatThePageRefusesIsAFailure) {
    FixedPageValidator validator = Validator();
    m_calls.Fail("GetStream /p", E_ACCESSDENIED);
    EXPECT_EQ(E_ACCESSDENIED, tests::ThrownCode([&] { (void)validator.GetPageReadStream(); }));
    m_calls.Fail("GetWriteStream /p", E_ACCESSDENIED);
    EXPECT_EQ(E_ACCESSDENIED, tests::ThrownCode([&] { (void)validator.GetPageWriteStream(); }));
    m_page->hasNoStreams = true;
    EXPECT_EQ(E_POINTER, tests::ThrownCode([&] { (void)validator.GetPageReadStream(); }));
    EXPECT_EQ(E_POINTER, tests::ThrownCode([&] { (void)validator.GetPageWriteStream(); }));
}

// Every call of the pipeline fails once. Which failures are borne, and what may be thrown for the others, is
// a closed list.
TEST_F(FixedPageValidatorTest, WhicheverCallFailsThePageFailsWithItsCodeOrTheFailureIsOneThatIsBorne) {
    constexpr HRESULT kCode = STG_E_ACCESSDENIED;
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    for (std::size_t failing = 1;; ++failing) {
        ASSERT_LT(failing, 1000u);
        m_calls.Clear();
        m_consumer->Clear();
        GiveTicket();
        m_calls.FailNth(failing, kCode);
        HRESULT result = S_OK;
        const std::string overflow =
            tests::MessageOf<std::overflow_error>([&] { result = tests::ThrownCode([&] { Validate(); }); });
        if (!overflow.empty()) result = E_FAIL;
        if (!m_calls.HasFailed()) {
            EXPECT_EQ(S_OK, result);
            ASSERT_NE(nullptr, m_page->Written());
            EXPECT_EQ(kTurnedMarkup, m_page->Written()->Bytes());
            break;
        }

        const std::string failed = m_calls.FailedCall();
        const Calls calls = m_calls.Calls();
        const bool isOfPage =
            std::ranges::find(calls, "GetWriteStream /p") < calls.begin() + static_cast<int>(failing) - 1;
        SCOPED_TRACE(failed + (isOfPage ? " of the page" : ""));
        if (failed == "GetPrintTicket /p" || failed == "Seek 0 0" || failed == "Close") {
            EXPECT_EQ(S_OK, result);
        } else if (failed.starts_with("WriteBytes")) {
            EXPECT_EQ(isOfPage ? E_FAIL : S_OK, result);
        } else if (failed.starts_with("ReadBytes") && !isOfPage) {
            EXPECT_TRUE(result == E_FAIL || result == kCode) << std::hex << result;
        } else {
            EXPECT_EQ(kCode, result);
        }
        // The old ticket goes only after it was read, and the markup is closed only when it is whole.
        if (failed == "GetStream" || failed == "GetUri") {
            EXPECT_EQ(m_ticket.Get(), m_page->Ticket());
        }
        if (failed.starts_with("GetNewEmptyPart")) {
            EXPECT_EQ(nullptr, m_page->Ticket());
        }
        if (FAILED(result)) {
            EXPECT_TRUE(m_page->Written() == nullptr || m_page->Written()->Closes() == 0);
        }
    }
}

}  // namespace
}  // namespace base::xps
