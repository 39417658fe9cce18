#include "platform/comobject.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/filterpipeline.h"

namespace platform {
namespace {

// What a Count may do beside counting.
class Registered : public ReferenceCount {
  public:
    static inline int s_living = 0;

  protected:
    explicit Registered(int amount) : m_amount(amount) { s_living += m_amount; }
    ~Registered() { s_living -= m_amount; }

  private:
    const int m_amount;
};

class Control final : public ComIdentity<Registered, IPrintPipelineManagerControl, IPrintWriteStreamFlush> {
  public:
    explicit Control(int& livingAtTheEnd) : ComIdentity(2), m_livingAtTheEnd(livingAtTheEnd) {}
    HRESULT STDMETHODCALLTYPE RequestShutdown(HRESULT, IImgErrorInfo*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE FilterFinished() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE FlushData() override { return S_FALSE; }

  private:
    ~Control() override { m_livingAtTheEnd = s_living; }

    int& m_livingAtTheEnd;
};

class Font final : public ComIdentity<ReferenceCount, IPartFont2> {
  public:
    HRESULT STDMETHODCALLTYPE GetUri(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPartCompression(EXpsCompressionOptions*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPartCompression(EXpsCompressionOptions) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFontProperties(BSTR*, EXpsFontOptions*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetFontContent(const wchar_t*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetFontOptions(EXpsFontOptions) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFontRestriction(EXpsFontRestriction*) override { return E_NOTIMPL; }
};

template <typename Interface, typename Object>
[[nodiscard]] ComPtr<Interface> Ask(const ComPtr<Object>& object) {
    ComPtr<Interface> answer;
    EXPECT_EQ(S_OK, object.QueryTo(answer));
    return answer;
}

TEST(ComObject, CountsReferencesFromOne) {
    const ComPtr<Font> font = MakeObject<Font>();
    EXPECT_EQ(1U, font->References());
    EXPECT_EQ(2U, font->AddRef());
    EXPECT_EQ(2U, font->References());
    EXPECT_EQ(1U, font->Release());
}

TEST(ComObject, CountsWhatAllThreadsDo) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    const ComPtr<Font> font = MakeObject<Font>();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                font->AddRef();
                font->AddRef();
                font->Release();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(static_cast<ULONG>(kThreads * kRounds + 1), font->References());
    while (font->References() > 1) font->Release();
}

TEST(ComObject, IsDestroyedByTheLastReleaseBeforeItsCountIs) {
    int livingAtTheEnd = -1;
    ComPtr<Control> object = MakeObject<Control>(livingAtTheEnd);
    ComPtr<Control> second(object);
    EXPECT_EQ(2, Control::s_living);
    object.Reset();
    EXPECT_EQ(-1, livingAtTheEnd);
    second.Reset();
    EXPECT_EQ(2, livingAtTheEnd);
    EXPECT_EQ(0, Control::s_living);
}

TEST(ComObject, AnswersEachInterfaceWithAReferenceAndOneIdentity) {
    int livingAtTheEnd = 0;
    const ComPtr<Control> object = MakeObject<Control>(livingAtTheEnd);
    const auto flush = Ask<IPrintWriteStreamFlush>(object);
    ASSERT_TRUE(flush);
    EXPECT_EQ(2U, object->References());
    EXPECT_EQ(S_FALSE, flush->FlushData());
    EXPECT_EQ(Ask<IUnknown>(object).Get(), Ask<IUnknown>(flush).Get());
    EXPECT_EQ(object.Get(), Ask<IPrintPipelineManagerControl>(flush).Get());
}

TEST(ComObject, AnswersTheInterfacesThatItsOwnExtend) {
    const ComPtr<Font> font = MakeObject<Font>();
    EXPECT_EQ(font.Get(), Ask<IPartFont2>(font).Get());
    EXPECT_EQ(font.Get(), Ask<IPartFont>(font).Get());
    EXPECT_EQ(font.Get(), Ask<IPartBase>(font).Get());
    EXPECT_EQ(1U, font->References());
}

TEST(ComObject, RefusesAnUnknownInterfaceWithNull) {
    const ComPtr<Font> font = MakeObject<Font>();
    void* answer = font.Get();
    EXPECT_EQ(E_NOINTERFACE, font->QueryInterface(__uuidof(IPartImage), &answer));
    EXPECT_EQ(nullptr, answer);
    EXPECT_EQ(1U, font->References());
}

TEST(ComObject, RefusesANullOutPointer) {
    const ComPtr<Font> font = MakeObject<Font>();
    EXPECT_EQ(E_POINTER, font->QueryInterface(__uuidof(IUnknown), nullptr));
    EXPECT_EQ(1U, font->References());
}

}  // namespace
}  // namespace platform
