#include "devkit/pipeline/communicator.h"

#include "devkit/pipeline/documentconsumer.h"
#include "devkit/pipeline/documentprovider.h"
#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class CommunicatorTest : public PipelineTest {
  protected:
    ComPtr<Communicator> Make() {
        return MakeObject<Communicator>(
            Context(),
            StreamEnd::Of<IXpsDocumentProvider>(MakeObject<DocumentProvider>(
                Context(), std::make_shared<JobParts>(SampleJob()), std::vector<ExtraPart>(), nullptr)),
            StreamEnd::Of<IXpsDocumentConsumer>(MakeObject<DocumentConsumer>(Context())));
    }
    static ComPtr<IUnknown> Reader(Communicator& communicator, HRESULT expected = S_OK) {
        void* reader = nullptr;
        EXPECT_EQ(expected, communicator.RequestReader(&reader));
        return ComPtr<IUnknown>::Adopt(static_cast<IXpsDocumentProvider*>(reader));
    }
    static ComPtr<IUnknown> Writer(Communicator& communicator, HRESULT expected = S_OK) {
        void* writer = nullptr;
        EXPECT_EQ(expected, communicator.RequestWriter(&writer));
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
    EXPECT_EQ(S_OK, reader.QueryTo(provider));
    EXPECT_EQ(S_OK, writer.QueryTo(consumer));
    EXPECT_EQ(Reader(*communicator.Get()).Get(), reader.Get());
    EXPECT_EQ(Writer(*communicator.Get()).Get(), writer.Get());
    EXPECT_TRUE(communicator->WriterGiven());
}

TEST_F(CommunicatorTest, GivesStreamsThatAnswerIUnknownAloneWhenSwitched) {
    Behaviour behaviour;
    behaviour.reader = StreamKind::Unrecognised;
    behaviour.writer = StreamKind::Unrecognised;
    Use(behaviour);
    const auto communicator = Make();
    ComPtr<IXpsDocumentProvider> provider;
    ComPtr<IXpsDocumentConsumer> consumer;
    ComPtr<IUnknown> identity;
    EXPECT_EQ(E_NOINTERFACE, Reader(*communicator.Get()).QueryTo(provider));
    EXPECT_EQ(E_NOINTERFACE, Writer(*communicator.Get()).QueryTo(consumer));
    EXPECT_EQ(S_OK, Reader(*communicator.Get()).QueryTo(identity));
    EXPECT_EQ(E_POINTER,
              Reader(*communicator.Get())->QueryInterface(__uuidof(IXpsDocumentProvider), nullptr));
}

TEST_F(CommunicatorTest, GivesNothingWhenSwitched) {
    Behaviour behaviour;
    behaviour.reader = StreamKind::None;
    behaviour.writer = StreamKind::None;
    Use(behaviour);
    const auto communicator = Make();
    EXPECT_FALSE(Reader(*communicator.Get()));
    EXPECT_FALSE(Writer(*communicator.Get()));
    EXPECT_FALSE(communicator->WriterGiven());
}

TEST_F(CommunicatorTest, FailsAsPlanned) {
    Behaviour behaviour = Failing("RequestReader", E_ACCESSDENIED);
    behaviour.faults.push_back({"RequestWriter", "", 1, E_OUTOFMEMORY, false});
    Use(behaviour);
    const auto communicator = Make();
    EXPECT_FALSE(Reader(*communicator.Get(), E_ACCESSDENIED));
    EXPECT_FALSE(Writer(*communicator.Get(), E_OUTOFMEMORY));
    EXPECT_FALSE(communicator->WriterGiven());
}

TEST_F(CommunicatorTest, GivesByteStreamsAsTheInterfacesThatTheyAre) {
    const auto target = std::make_shared<Writing>();
    const auto communicator = MakeObject<Communicator>(
        Context(),
        StreamEnd::Of<IPrintReadStream>(
            MakeObject<ReadStream>(Context(), "input", std::make_shared<const std::string>("bytes"))),
        StreamEnd::Of<IPrintWriteStream>(MakeObject<WriteStream>(Context(), "output", target)));
    void* end = nullptr;
    ASSERT_EQ(S_OK, communicator->RequestReader(&end));
    const auto reader = ComPtr<IPrintReadStream>::Adopt(static_cast<IPrintReadStream*>(end));
    EXPECT_EQ("bytes", ReadAll(reader.Get()));
    ASSERT_EQ(S_OK, communicator->RequestWriter(&end));
    const auto writer = ComPtr<IPrintWriteStream>::Adopt(static_cast<IPrintWriteStream*>(end));
    ULONG count = 0;
    EXPECT_EQ(S_OK, writer->WriteBytes("new", 3, &count));
    writer->Close();
    ASSERT_TRUE(target->Written());
    EXPECT_EQ("new", *target->Written());
}

TEST_F(CommunicatorTest, RefusesNullPointers) {
    const auto communicator = Make();
    EXPECT_EQ(E_POINTER, communicator->RequestReader(nullptr));
    EXPECT_EQ(E_POINTER, communicator->RequestWriter(nullptr));
}

}  // namespace
}  // namespace devkit::pipeline
