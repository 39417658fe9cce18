#include "base/io/printwritestreambuffer.h"

#include <gtest/gtest.h>

#include <array>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>

#include "base/io/streamadaptertest.h"
#include "mockstreams.h"
#include "thrown.h"

namespace base::io {
namespace {

using platform::ComPtr;
using tests::MakeMock;
using tests::MockReadStream;
using tests::MockWriteStream;

constexpr int kEof = std::char_traits<char>::eof();
constexpr auto kIn = std::ios_base::in;
constexpr auto kOut = std::ios_base::out;

class WritingBufferTest : public testing::Test {
  protected:
    tests::CallRecorder m_calls;
    ComPtr<MockWriteStream> m_pTarget = MakeMock<MockWriteStream>(m_calls);
    PrintWriteStreamBuffer m_buffer{m_pTarget.Get()};
};

class ReadingBufferTest : public testing::Test {
  protected:
    tests::CallRecorder m_calls;
    ComPtr<MockReadStream> m_pSource = MakeMock<MockReadStream>(m_calls, "ab\xFFz");
    PrintWriteStreamBuffer m_buffer{m_pSource.Get()};
};

long long Position(std::streampos position) { return static_cast<std::streamoff>(position); }

// The message of the exception of this type that the body throws, behind the file and the line.
template <typename Exception, typename Body>
std::string Thrown(Body&& body) {
    const std::string file = "base/io/printwritestreambuffer.cpp(LINE) : ";
    const std::string message = tests::Thrown<Exception>(body);
    return message.starts_with(file) ? message.substr(file.size()) : message;
}

TEST_F(WritingBufferTest, HoldsTheStreamAndLetsItGoWithoutClosingIt) {
    {
        const PrintWriteStreamBuffer other(m_pTarget.Get());
        EXPECT_EQ(3u, m_pTarget->References());
    }
    EXPECT_EQ(2u, m_pTarget->References());
    EXPECT_EQ(0, m_pTarget->Closes());
}

TEST_F(WritingBufferTest, WritesACharacterWithOneCall) {
    EXPECT_EQ('a', m_buffer.sputc('a'));
    EXPECT_EQ(0xFF, m_buffer.sputc('\xFF'));
    EXPECT_EQ("a\xFF", m_pTarget->Bytes());
    EXPECT_EQ((Calls{"WriteBytes 1", "WriteBytes 1"}), m_calls.Calls());
    EXPECT_EQ(2, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kOut)));
}

TEST_F(WritingBufferTest, ACharacterThatCannotBeWrittenIsEndOfFile) {
    m_calls.FailNth(1, E_FAIL);
    EXPECT_EQ(kEof, m_buffer.sputc('a'));
    m_pTarget->SetShortWrites(0);
    EXPECT_EQ(kEof, m_buffer.sputc('a'));
    EXPECT_EQ(0, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kOut)));
}

TEST_F(WritingBufferTest, WritesABlockWithOneCall) {
    EXPECT_EQ(5, m_buffer.sputn("hello", 5));
    m_pTarget->SetShortWrites(2);
    EXPECT_EQ(2, m_buffer.sputn("world", 5));
    EXPECT_EQ("hellowo", m_pTarget->Bytes());
    EXPECT_EQ((Calls{"WriteBytes 5", "WriteBytes 5"}), m_calls.Calls());
    EXPECT_EQ(7, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kOut)));
}

TEST_F(WritingBufferTest, ABlockThatCannotBeWrittenThrows) {
    m_calls.FailNth(1, E_FAIL);
    EXPECT_EQ("IPrintWriteStream::WriteBytes failed.\n",
              Thrown<std::overflow_error>([&] { m_buffer.sputn("hello", 5); }));
}

TEST_F(WritingBufferTest, AFailingWriteCountsWhatWasWrittenBeforeItFailed) {
    m_pTarget->SetTakenByFailure(1);
    m_calls.FailNth(1, E_FAIL);
    EXPECT_EQ(kEof, m_buffer.sputc('a'));
    EXPECT_EQ(1, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kOut)));
    m_pTarget->SetTakenByFailure(3);
    m_calls.FailNth(1, E_FAIL);
    EXPECT_THROW(m_buffer.sputn("hello", 5), std::overflow_error);
    EXPECT_EQ(4, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kOut)));
    m_calls.FailNth(1, E_FAIL);
    EXPECT_THROW(m_buffer.pubseekoff(9, std::ios_base::cur, kOut), std::overflow_error);
    EXPECT_EQ(7, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kOut)));
    EXPECT_EQ("ahel", m_pTarget->Bytes().substr(0, 4));
}

TEST_F(WritingBufferTest, ReadingThrows) {
    const std::string expected = "read data from buffer which to use for write.\n";
    std::array<char, 4> block{};
    EXPECT_EQ(expected, Thrown<std::logic_error>([&] { m_buffer.sbumpc(); }));
    EXPECT_EQ(expected, Thrown<std::logic_error>([&] { m_buffer.sgetc(); }));
    EXPECT_EQ(expected, Thrown<std::logic_error>([&] { m_buffer.sgetn(block.data(), 4); }));
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(WritingBufferTest, SeekoffBy0FromTheCurrentPositionReturnsTheCurrentCountAndMovesNothing) {
    m_buffer.sputn("hello", 5);
    m_calls.Clear();
    EXPECT_EQ(5, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kOut)));
    EXPECT_EQ(5, Position(m_buffer.pubseekoff(0, std::ios_base::cur)));
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(WritingBufferTest, SeekoffForwardWritesFiller) {
    m_buffer.sputn("ab", 2);
    EXPECT_EQ(5, Position(m_buffer.pubseekoff(3, std::ios_base::cur, kOut)));
    EXPECT_EQ(5u, m_pTarget->Bytes().size());
    m_pTarget->SetShortWrites(1000);
    EXPECT_EQ(10005, Position(m_buffer.pubseekoff(10000, std::ios_base::cur, kOut)));
    EXPECT_EQ(10005u, m_pTarget->Bytes().size());
}

TEST_F(WritingBufferTest, SeekoffForwardStopsWhereTheStreamTakesNoMore) {
    m_pTarget->SetShortWrites(0);
    EXPECT_EQ(0, Position(m_buffer.pubseekoff(3, std::ios_base::cur, kOut)));
    EXPECT_EQ(Calls{"WriteBytes 3"}, m_calls.Calls());
}

TEST_F(WritingBufferTest, SeekoffCannotGoBackNorFromTheBeginningNorFromTheEnd) {
    m_buffer.sputn("hello", 5);
    EXPECT_EQ(-1, Position(m_buffer.pubseekoff(-1, std::ios_base::cur, kOut)));
    EXPECT_EQ(-1, Position(m_buffer.pubseekoff(0, std::ios_base::beg, kOut)));
    EXPECT_EQ(-1, Position(m_buffer.pubseekoff(0, std::ios_base::end, kOut)));
    EXPECT_EQ(-1, Position(m_buffer.pubseekpos(2, kOut)));
    EXPECT_EQ(-1, Position(m_buffer.pubseekpos(0)));
    EXPECT_EQ("hello", m_pTarget->Bytes());
}

TEST_F(WritingBufferTest, SeekoffOfASideThatTheBufferDoesNotHaveCannotBeDone) {
    EXPECT_EQ(-1, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
    EXPECT_EQ(-1, Position(m_buffer.pubseekoff(0, std::ios_base::cur, std::ios_base::openmode())));
}

TEST_F(WritingBufferTest, AnUnknownDirectionThrowsUnlessTheOffsetIsNegative) {
    const auto direction = static_cast<std::ios_base::seekdir>(3);
    EXPECT_EQ("invalide std::ios_base::seekdir\n",
              Thrown<std::invalid_argument>([&] { m_buffer.pubseekoff(0, direction, kOut); }));
    EXPECT_EQ(-1, Position(m_buffer.pubseekoff(-1, direction, kOut)));
}

TEST_F(WritingBufferTest, CarriesAStandardStream) {
    std::ostream stream(&m_buffer);
    stream << "Width=\"" << 816 << '"';
    EXPECT_EQ(11, Position(stream.tellp()));
    EXPECT_EQ("Width=\"816\"", m_pTarget->Bytes());
    m_calls.FailNth(1, E_FAIL);
    stream << "more";
    EXPECT_TRUE(stream.bad());
}

TEST_F(ReadingBufferTest, HoldsTheStreamAndLetsItGo) {
    {
        const PrintWriteStreamBuffer other(m_pSource.Get());
        EXPECT_EQ(3u, m_pSource->References());
    }
    EXPECT_EQ(2u, m_pSource->References());
}

TEST_F(ReadingBufferTest, ReadsACharacterWithOneCallAndTakesNoByteForTheEnd) {
    EXPECT_EQ('a', m_buffer.sbumpc());
    EXPECT_EQ('b', m_buffer.sbumpc());
    EXPECT_EQ(0xFF, m_buffer.sbumpc());
    EXPECT_EQ('z', m_buffer.sbumpc());
    EXPECT_EQ(kEof, m_buffer.sbumpc());
    EXPECT_EQ(4, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
}

TEST_F(ReadingBufferTest, LooksAtACharacterWithoutTakingIt) {
    EXPECT_EQ('a', m_buffer.sgetc());
    EXPECT_EQ((Calls{"ReadBytes 1", "Seek -1 1"}), m_calls.Calls());
    EXPECT_EQ(0, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
    EXPECT_EQ('a', m_buffer.sbumpc());
    EXPECT_EQ('b', m_buffer.sgetc());
    EXPECT_EQ(1, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
}

TEST_F(ReadingBufferTest, LookingAtTheEndDoesNotGoBack) {
    std::array<char, 4> block{};
    EXPECT_EQ(4, m_buffer.sgetn(block.data(), 4));
    m_calls.Clear();
    EXPECT_EQ(kEof, m_buffer.sgetc());
    EXPECT_EQ(kEof, m_buffer.sgetc());
    EXPECT_EQ((Calls{"ReadBytes 1", "ReadBytes 1"}), m_calls.Calls());
}

TEST_F(ReadingBufferTest, ACharacterThatCannotBeReadOrPutBackIsEndOfFile) {
    m_calls.FailNth(1, E_FAIL);
    EXPECT_EQ(kEof, m_buffer.sbumpc());
    m_calls.Fail("Seek -1 1", E_FAIL);
    EXPECT_EQ(kEof, m_buffer.sgetc());
    EXPECT_EQ(1, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
}

TEST_F(ReadingBufferTest, ReadsABlockWithOneCall) {
    m_pSource->SetShortReads(3);
    std::array<char, 8> block{};
    EXPECT_EQ(3, m_buffer.sgetn(block.data(), 8));
    EXPECT_EQ("ab\xFF", std::string(block.data(), 3));
    EXPECT_EQ(Calls{"ReadBytes 8"}, m_calls.Calls());
    EXPECT_EQ(3, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
}

TEST_F(ReadingBufferTest, ARequestForNothingTakesNothing) {
    std::array<char, 1> block{'-'};
    EXPECT_EQ(0, m_buffer.sgetn(block.data(), 0));
    EXPECT_EQ('-', block[0]);
    EXPECT_EQ(Calls{"ReadBytes 0"}, m_calls.Calls());
    EXPECT_EQ(0, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
}

TEST_F(ReadingBufferTest, ABlockThatCannotBeReadIsEmpty) {
    m_calls.FailNth(1, E_FAIL);
    std::array<char, 4> block{};
    EXPECT_EQ(0, m_buffer.sgetn(block.data(), 4));
    EXPECT_EQ(0, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
}

TEST_F(ReadingBufferTest, AFailingReadCountsWhatWasReadBeforeItFailed) {
    std::array<char, 4> block{};
    m_pSource->SetGivenByFailure(2);
    m_calls.FailNth(1, E_FAIL);
    EXPECT_EQ(0, m_buffer.sgetn(block.data(), 4));
    EXPECT_EQ(2, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
    m_calls.FailNth(1, E_FAIL);
    EXPECT_EQ(kEof, m_buffer.sbumpc());
    EXPECT_EQ(3, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
}

TEST_F(ReadingBufferTest, WritingABlockThrowsAndWritingACharacterIsEndOfFile) {
    EXPECT_EQ("write data from buffer which to use for read.\n",
              Thrown<std::logic_error>([&] { m_buffer.sputn("x", 1); }));
    EXPECT_EQ(kEof, m_buffer.sputc('x'));
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(ReadingBufferTest, SeekoffForwardSkips) {
    EXPECT_EQ(3, Position(m_buffer.pubseekoff(3, std::ios_base::cur, kIn)));
    EXPECT_EQ('z', m_buffer.sbumpc());
    EXPECT_EQ(4, Position(m_buffer.pubseekoff(0, std::ios_base::cur)));
}

TEST_F(ReadingBufferTest, SeekoffBy0ReadsNothing) {
    EXPECT_EQ(0, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kIn)));
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(ReadingBufferTest, SeekoffForwardStopsAtTheEndAndAtAFailure) {
    m_calls.Fail("ReadBytes 9", E_FAIL);
    EXPECT_EQ(0, Position(m_buffer.pubseekoff(9, std::ios_base::cur, kIn)));
    EXPECT_EQ(4, Position(m_buffer.pubseekoff(9, std::ios_base::cur, kIn)));
    EXPECT_EQ(-1, Position(m_buffer.pubseekoff(0, std::ios_base::cur, kOut)));
}

TEST_F(ReadingBufferTest, CarriesAStandardStream) {
    std::istream stream(&m_buffer);
    std::string text;
    stream >> text;
    EXPECT_EQ("ab\xFFz", text);
    EXPECT_TRUE(stream.eof());
}

}  // namespace
}  // namespace base::io
