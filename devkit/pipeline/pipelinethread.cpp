#include "devkit/pipeline/pipelinethread.h"

#include <stdexcept>

#include "devkit/common/hresult.h"
#include "devkit/pipeline/apartmentwatch.h"
#include "devkit/pipeline/usertoken.h"

namespace devkit::pipeline {
namespace {

// Where the thread stands in COM; equal before and after an operation that balances its calls.
struct Standing {
    HRESULT hr = S_OK;
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;

    [[nodiscard]] static Standing Now() noexcept {
        Standing standing;
        standing.hr = CoGetApartmentType(&standing.type, &standing.qualifier);
        return standing;
    }
    bool operator==(const Standing&) const = default;
};

class SingleThreadedApartment {
  public:
    explicit SingleThreadedApartment(bool wanted) : m_entered(wanted) {
        if (!wanted) return;
        const HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        if (FAILED(hr)) throw std::runtime_error("CoInitializeEx answers " + common::Describe(hr));
    }
    SingleThreadedApartment(const SingleThreadedApartment&) = delete;
    SingleThreadedApartment& operator=(const SingleThreadedApartment&) = delete;
    ~SingleThreadedApartment() {
        if (m_entered) CoUninitialize();
    }

  private:
    bool m_entered;
};

}  // namespace

HRESULT RunPipelineThread(IPrintPipelineFilter& filter, RunContext& context, bool singleThreaded,
                          const std::function<std::shared_ptr<void>()>& setUp,
                          const std::function<std::shared_ptr<void>()>& onApartmentEntered) noexcept {
    // So that who tells of a stack that the filter used up has room for it.
    ULONG guarantee = 64 * 1024;
    SetThreadStackGuarantee(&guarantee);
    try {
        const SingleThreadedApartment apartment(singleThreaded);
        const std::shared_ptr<void> company = setUp == nullptr ? nullptr : setUp();
        const ApartmentWatch watch(
            [&context] {
                context.Breach(Check::Uninitialize,
                               "CoUninitialize came without its CoInitializeEx in StartOperation");
            },
            onApartmentEntered);
        const Standing before = Standing::Now();
        const HRESULT hr = CallFilter(context, "StartOperation", [&] {
            const OperationClock::Operation operation(context.Clock());
            return filter.StartOperation();
        });
        if (Standing::Now() != before)
            context.Breach(Check::Apartment, "StartOperation left its thread in another COM apartment");
        if (IsImpersonating()) {
            context.Breach(Check::Impersonating, "StartOperation left its thread impersonating");
            RevertToSelf();
        }
        return hr;
    } catch (const std::exception& error) {
        return context.Breach(Check::ThreadSetup,
                              std::string("the pipeline thread could not be set up: ") + error.what(),
                              E_FAIL);
    }
}

}  // namespace devkit::pipeline
