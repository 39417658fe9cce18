#include "devkit/pipeline/apartmentwatch.h"

#include <utility>

#include "devkit/common/error.h"
#include "platform/comobject.h"

namespace devkit::pipeline {
namespace {

// What COM tells of the thread. The answer of PostInitialize is what CoInitializeEx answers.
class Spy final : public platform::ComIdentity<platform::ReferenceCount, IInitializeSpy> {
  public:
    Spy(std::function<void()> onUnpaired, std::function<std::shared_ptr<void>()> onEntered)
        : m_onUnpaired(std::move(onUnpaired)), m_onEntered(std::move(onEntered)) {}

    HRESULT STDMETHODCALLTYPE PreInitialize(DWORD, DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE PostInitialize(HRESULT entered, DWORD, DWORD) override {
        if (SUCCEEDED(entered)) ++m_depth;
        if (entered == S_OK && m_onEntered) {
            static_cast<void>(common::Guarded([this] {
                m_company = m_onEntered();
                return S_OK;
            }));
        }
        return entered;
    }
    HRESULT STDMETHODCALLTYPE PreUninitialize(DWORD) override {
        if (m_depth == 0) {
            return common::Guarded([this] {
                m_onUnpaired();
                return S_OK;
            });
        }
        if (--m_depth == 0) m_company.reset();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE PostUninitialize(DWORD) override { return S_OK; }

  private:
    const std::function<void()> m_onUnpaired;
    const std::function<std::shared_ptr<void>()> m_onEntered;
    std::shared_ptr<void> m_company;
    unsigned m_depth = 0;
};

}  // namespace

ApartmentWatch::ApartmentWatch(std::function<void()> onUnpaired,
                               std::function<std::shared_ptr<void>()> onEntered) {
    const auto spy = platform::MakeObject<Spy>(std::move(onUnpaired), std::move(onEntered));
    m_isRegistered = SUCCEEDED(CoRegisterInitializeSpy(spy.Get(), &m_cookie));
    static_cast<void>(spy.QueryTo(m_spy));
}

ApartmentWatch::~ApartmentWatch() {
    if (m_isRegistered) CoRevokeInitializeSpy(m_cookie);
}

}  // namespace devkit::pipeline
