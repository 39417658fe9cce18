#include "devkit/pipeline/readstreamfactory.h"

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class ReadStreamFactoryTest : public PipelineTest {
  protected:
    ComPtr<ReadStreamFactory> Factory() {
        return MakeObject<ReadStreamFactory>(Context(), "ticket",
                                             std::make_shared<const std::string>("<t/>"));
    }
};

TEST_F(ReadStreamFactoryTest, GivesANewStreamAtItsStartEachTime) {
    const auto factory = Factory();
    ComPtr<IPrintReadStream> first;
    ComPtr<IPrintReadStream> second;
    ASSERT_EQ(factory->GetStream(first.Put()), S_OK);
    EXPECT_EQ(ReadAll(first.Get()), "<t/>");
    ASSERT_EQ(factory->GetStream(second.Put()), S_OK);
    EXPECT_EQ(ReadAll(second.Get()), "<t/>");
}

TEST_F(ReadStreamFactoryTest, RefusesNullAndFailsAsPlanned) {
    Use(Failing("IPrintReadStreamFactory::GetStream", E_OUTOFMEMORY));
    const auto factory = Factory();
    ComPtr<IPrintReadStream> stream;
    EXPECT_EQ(factory->GetStream(nullptr), E_POINTER);
    EXPECT_EQ(factory->GetStream(stream.Put()), E_OUTOFMEMORY);
    EXPECT_FALSE(stream);
}

}  // namespace
}  // namespace devkit::pipeline
