#include "devkit/pipeline/runcontext.h"

#include <gtest/gtest.h>

#include <thread>

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

TEST(RunContext, RecordsABreachAndGivesItsCode) {
    RunContext context;
    EXPECT_EQ(kCallOutOfOrder, context.Breach(Check::Leak, "one"));
    EXPECT_EQ(E_INVALIDARG, context.Breach(Check::Kind, "two", E_INVALIDARG));
    EXPECT_EQ((std::vector<std::string>{"one", "two"}), context.Breaches().Lines());
}

TEST(RunContext, KeepsInputFailuresApartFromBreaches) {
    RunContext context;
    context.InputFailed("/1.fpage: damaged");
    EXPECT_EQ(std::vector<std::string>{"/1.fpage: damaged"}, context.InputFailures());
    EXPECT_TRUE(context.Breaches().Lines().empty());
}

TEST(RunContext, ACancellationEndsAWait) {
    RunContext context;
    EXPECT_FALSE(context.IsCancelled());
    const auto start = std::chrono::steady_clock::now();
    std::thread canceller([&] { context.Cancel(); });
    context.WaitUnlessCancelled(std::chrono::seconds(60));
    canceller.join();
    EXPECT_TRUE(context.IsCancelled());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(50));
}

class Control final : public ComObject<IPrintPipelineManagerControl, IPrintWriteStreamFlush> {
  public:
    explicit Control(ContextPtr context) : ComObject(std::move(context), "Control") {}
    HRESULT STDMETHODCALLTYPE RequestShutdown(HRESULT, IImgErrorInfo*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE FilterFinished() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE FlushData() override { return S_FALSE; }
};

class ComObjectTest : public PipelineTest {
  protected:
    // How many more of the kit's objects live than at the start of the test.
    [[nodiscard]] std::size_t Living() const { return common::LiveObjectCount() - m_before; }

  private:
    const std::size_t m_before = common::LiveObjectCount();
};

TEST_F(ComObjectTest, IsCountedAmongTheLivingUntilTheLastRelease) {
    ComPtr<Control> object = MakeObject<Control>(Context());
    EXPECT_EQ(1U, Living());
    EXPECT_EQ(Lines{"Control, 1 reference"}, Context()->LiveObjects());
    const ComPtr<Control> second(object);
    EXPECT_EQ(Lines{"Control, 2 references"}, Context()->LiveObjects());
    object.Reset();
    EXPECT_EQ(1U, Living());
}

TEST_F(ComObjectTest, RefusesAnInterfaceWhereThatIsPlannedAndNeverItsIdentity) {
    Use(Failing("IUnknown::QueryInterface", E_ACCESSDENIED, {}, 2));
    const ComPtr<Control> object = MakeObject<Control>(Context());
    ComPtr<IPrintPipelineManagerControl> control;
    EXPECT_EQ(S_OK, object.QueryTo(control));
    ComPtr<IUnknown> identity;
    EXPECT_EQ(S_OK, object.QueryTo(identity));
    ComPtr<IPrintWriteStreamFlush> flush;
    EXPECT_EQ(E_ACCESSDENIED, object.QueryTo(flush));
    EXPECT_FALSE(flush);
    EXPECT_EQ(S_OK, object.QueryTo(flush));
    EXPECT_TRUE(flush);
    EXPECT_EQ(0U, Context()->Calls().Count(""));
    EXPECT_TRUE(Context()->Calls().UnstruckFaults().empty());
}

TEST_F(ComObjectTest, OutlivesTheOwnerOfItsContext) {
    const ComPtr<Control> object = MakeObject<Control>(std::make_shared<RunContext>());
    EXPECT_EQ(1U, Living());
}

}  // namespace
}  // namespace devkit::pipeline
