#include "devkit/pipeline/comobject.h"

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

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
    [[nodiscard]] std::size_t Living() const { return LiveObjectCount() - m_before; }

  private:
    const std::size_t m_before = LiveObjectCount();
};

TEST_F(ComObjectTest, CountsReferencesFromOne) {
    const ComPtr<Control> object = MakeObject<Control>(Context());
    EXPECT_EQ(object->AddRef(), 2U);
    EXPECT_EQ(object->Release(), 1U);
}

TEST_F(ComObjectTest, IsCountedAmongTheLivingUntilTheLastRelease) {
    ComPtr<Control> object = MakeObject<Control>(Context());
    EXPECT_EQ(Living(), 1U);
    EXPECT_EQ(Context()->LiveObjects(), Lines{"Control, 1 reference"});
    const ComPtr<Control> second(object);
    EXPECT_EQ(Context()->LiveObjects(), Lines{"Control, 2 references"});
    object.Reset();
    EXPECT_EQ(Living(), 1U);
}

TEST_F(ComObjectTest, OutlivesTheOwnerOfItsContext) {
    const ComPtr<Control> object = MakeObject<Control>(std::make_shared<RunContext>());
    EXPECT_EQ(Living(), 1U);
}

TEST_F(ComObjectTest, AnswersEachInterfaceAndOneIdentity) {
    const ComPtr<Control> object = MakeObject<Control>(Context());
    ComPtr<IPrintWriteStreamFlush> flush;
    ASSERT_EQ(object.QueryTo(flush), S_OK);
    EXPECT_EQ(flush->FlushData(), S_FALSE);
    ComPtr<IUnknown> fromFlush;
    ComPtr<IUnknown> fromObject;
    ASSERT_EQ(flush.QueryTo(fromFlush), S_OK);
    ASSERT_EQ(object.QueryTo(fromObject), S_OK);
    EXPECT_EQ(fromFlush.Get(), fromObject.Get());
}

TEST_F(ComObjectTest, RefusesAnUnknownInterfaceWithNull) {
    const ComPtr<Control> object = MakeObject<Control>(Context());
    void* answer = object.Get();
    EXPECT_EQ(object->QueryInterface(__uuidof(IFixedPage), &answer), E_NOINTERFACE);
    EXPECT_EQ(answer, nullptr);
}

TEST_F(ComObjectTest, RefusesANullOutPointer) {
    const ComPtr<Control> object = MakeObject<Control>(Context());
    EXPECT_EQ(object->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
}

}  // namespace
}  // namespace devkit::pipeline
