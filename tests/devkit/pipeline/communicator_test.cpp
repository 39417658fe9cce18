#include "devkit/pipeline/communicator.h"

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class CommunicatorTest : public PipelineTest {
  protected:
    ComPtr<Communicator> Make() {
        return MakeObject<Communicator>(
            Context(),
            MakeObject<DocumentProvider>(Context(), SampleJob(), std::vector<ExtraPart>(), nullptr),
            MakeObject<DocumentConsumer>(Context()));
    }
    static ComPtr<IUnknown> Reader(Communicator& communicator, HRESULT expected = S_OK) {
        void* reader = nullptr;
        EXPECT_EQ(communicator.RequestReader(&reader), expected);
        return ComPtr<IUnknown>::Adopt(static_cast<IXpsDocumentProvider*>(reader));
    }
    static ComPtr<IUnknown> Writer(Communicator& communicator, HRESULT expected = S_OK) {
        void* writer = nullptr;
        EXPECT_EQ(communicator.RequestWriter(&writer), expected);
        return ComPtr<IUnknown>::Adopt(static_cast<IXpsDocumentConsumer*>(writer));
    }
};

TEST_F(CommunicatorTest, GivesTheXpsStreamsTheSameEachTime) {
    const auto communicator = Make();
    ComPtr<IXpsDocumentProvider> provider;
    ComPtr<IXpsDocumentConsumer> consumer;
    EXPECT_FALSE(communicator->WriterGiven());
    const auto reader = Reader(*communicator.Get());
    const auto writer = Writer(*communicator.Get());
    EXPECT_EQ(reader.QueryTo(provider), S_OK);
    EXPECT_EQ(writer.QueryTo(consumer), S_OK);
    EXPECT_EQ(reader.Get(), Reader(*communicator.Get()).Get());
    EXPECT_EQ(writer.Get(), Writer(*communicator.Get()).Get());
    EXPECT_TRUE(communicator->WriterGiven());
}

TEST_F(CommunicatorTest, GivesStreamsThatAnswerIUnknownAloneWhenSwitched) {
    Switches switches;
    switches.reader = StreamKind::Unrecognised;
    switches.writer = StreamKind::Unrecognised;
    Use(switches);
    const auto communicator = Make();
    ComPtr<IXpsDocumentProvider> provider;
    ComPtr<IXpsDocumentConsumer> consumer;
    ComPtr<IUnknown> identity;
    EXPECT_EQ(Reader(*communicator.Get()).QueryTo(provider), E_NOINTERFACE);
    EXPECT_EQ(Writer(*communicator.Get()).QueryTo(consumer), E_NOINTERFACE);
    EXPECT_EQ(Reader(*communicator.Get()).QueryTo(identity), S_OK);
    EXPECT_EQ(Reader(*communicator.Get())->QueryInterface(__uuidof(IXpsDocumentProvider), nullptr),
              E_POINTER);
}

TEST_F(CommunicatorTest, GivesNothingWhenSwitched) {
    Switches switches;
    switches.reader = StreamKind::None;
    switches.writer = StreamKind::None;
    Use(switches);
    const auto communicator = Make();
    EXPECT_FALSE(Reader(*communicator.Get()));
    EXPECT_FALSE(Writer(*communicator.Get()));
    EXPECT_FALSE(communicator->WriterGiven());
}

TEST_F(CommunicatorTest, FailsAsPlanned) {
    Switches switches = Failing("RequestReader", E_ACCESSDENIED);
    switches.faults.push_back({"RequestWriter", "", 1, E_OUTOFMEMORY, false});
    Use(switches);
    const auto communicator = Make();
    EXPECT_FALSE(Reader(*communicator.Get(), E_ACCESSDENIED));
    EXPECT_FALSE(Writer(*communicator.Get(), E_OUTOFMEMORY));
    EXPECT_FALSE(communicator->WriterGiven());
}

TEST_F(CommunicatorTest, RefusesNullPointers) {
    const auto communicator = Make();
    EXPECT_EQ(communicator->RequestReader(nullptr), E_POINTER);
    EXPECT_EQ(communicator->RequestWriter(nullptr), E_POINTER);
}

}  // namespace
}  // namespace devkit::pipeline
