#include "devkit/validate/probes.h"

#include "platform/windows.h"

#include <array>
#include <memory>
#include <string>
#include <utility>

#include "devkit/common/file.h"
#include "devkit/common/hresult.h"
#include "devkit/common/processusage.h"
#include "devkit/filterhost/hostedrun.h"
#include "devkit/filterhost/ticketprovider.h"
#include "devkit/pipeline/communicator.h"
#include "devkit/pipeline/filtermodule.h"
#include "devkit/pipeline/pipelinecontrol.h"
#include "devkit/pipeline/propertybags.h"
#include "devkit/validate/memoryprobe.h"
#include "platform/comobject.h"

namespace devkit::validate {
namespace {

using common::ProcessUsage;
using filterhost::EventSink;
using filterhost::FilterSettings;
using pipeline::FilterModule;
using platform::ComPtr;

// No class and no interface has it.
// {D7B3C0E1-5E0B-4F6E-9A4C-0F2E6B1D8A57}
constexpr GUID kUnknown = {0xd7b3c0e1, 0x5e0b, 0x4f6e, {0x9a, 0x4c, 0x0f, 0x2e, 0x6b, 0x1d, 0x8a, 0x57}};

// Tells of a module: which call goes on, and what is wrong.
class Witness {
  public:
    explicit Witness(const EventSink& sink) : m_sink(sink) {}

    // The call by its name, so that a crash in it is told with it.
    template <typename Call>
    auto In(const std::string& name, Call&& call) const {
        m_sink(filterhost::events::CallBegun{name});
        auto answer = call();
        m_sink(filterhost::events::CallEnded{name});
        return answer;
    }
    void Expect(bool isTrue, const std::string& text) const {
        if (!isTrue) m_sink(filterhost::events::Failed{text, filterhost::FilterFailed});
    }
    void ExpectRefusal(HRESULT answer, const void* pObject, const std::string& what) const {
        Expect(FAILED(answer), what + " answers " + common::Describe(answer));
        Expect(FAILED(answer) == (pObject == nullptr), what + " leaves an object with its failure");
    }
    void ExpectUnloadable(FilterModule& module, const std::string& when) const {
        const HRESULT answer = In("DllCanUnloadNow", [&] { return module.CanUnloadNow(); });
        Expect(answer == S_OK, "DllCanUnloadNow answers " + common::Describe(answer) + " " + when);
    }

  private:
    const EventSink& m_sink;
};

void ProbeClassObject(FilterModule& module, const FilterSettings& settings, const Witness& witness) {
    const auto ask = [&](const std::string& what, const CLSID& clsid, const IID& iid) {
        IUnknown* pObject = nullptr;
        const HRESULT answer = witness.In("DllGetClassObject", [&] {
            return module.GetClassObject(clsid, iid, reinterpret_cast<void**>(&pObject));
        });
        witness.ExpectRefusal(answer, pObject, "DllGetClassObject " + what);
    };
    ask("for a class that the module does not have", kUnknown, __uuidof(IClassFactory));
    ask("for an interface that a class object does not have", settings.clsid, kUnknown);
    const HRESULT answer = witness.In("DllGetClassObject", [&] {
        return module.GetClassObject(settings.clsid, __uuidof(IClassFactory), nullptr);
    });
    witness.ExpectRefusal(answer, nullptr, "DllGetClassObject without a place for the object");
    witness.ExpectUnloadable(module, "when nothing was made");
}

void ProbeFactory(FilterModule& module, const FilterSettings& settings, const Witness& witness) {
    ComPtr<IClassFactory> factory;
    // A module may give out the filter itself.
    if (FAILED(module.GetClassObject(settings.clsid, __uuidof(IClassFactory), factory.PutVoid()))) return;
    class Outer final : public platform::ComIdentity<platform::ReferenceCount, IUnknown> {};
    const auto outer = platform::MakeObject<Outer>();
    const auto make = [&](const std::string& what, IUnknown* pOuter, const IID& iid) {
        IUnknown* pObject = nullptr;
        const HRESULT answer = witness.In("CreateInstance", [&] {
            return factory->CreateInstance(pOuter, iid, reinterpret_cast<void**>(&pObject));
        });
        witness.ExpectRefusal(answer, pObject, "CreateInstance " + what);
    };
    make("for an interface that the filter does not have", nullptr, kUnknown);
    make("inside another object", outer.Get(), __uuidof(IPrintPipelineFilter));
    const HRESULT answer = witness.In("CreateInstance", [&] {
        return factory->CreateInstance(nullptr, __uuidof(IPrintPipelineFilter), nullptr);
    });
    witness.ExpectRefusal(answer, nullptr, "CreateInstance without a place for the object");
    for (const BOOL lock : {TRUE, FALSE}) witness.In("LockServer", [&] { return factory->LockServer(lock); });
    factory.Reset();
    witness.ExpectUnloadable(module, "after a lock that was taken back");
}

void ProbeIdentity(FilterModule& module, const FilterSettings&, const Witness& witness) {
    ComPtr<IPrintPipelineFilter> filter = module.CreateFilter();
    const auto ask = [&](IUnknown& object, const IID& iid, void** ppObject) {
        return witness.In("QueryInterface", [&] { return object.QueryInterface(iid, ppObject); });
    };
    std::array<ComPtr<IUnknown>, 2> identities;
    for (ComPtr<IUnknown>& identity : identities) {
        const HRESULT answer = ask(*filter.Get(), __uuidof(IUnknown), identity.PutVoid());
        witness.Expect(SUCCEEDED(answer), "QueryInterface for IUnknown answers " + common::Describe(answer));
    }
    witness.Expect(identities[0].Get() == identities[1].Get(), "two queries for IUnknown give two objects");
    if (identities[0]) {
        ComPtr<IPrintPipelineFilter> back;
        static_cast<void>(ask(*identities[0].Get(), __uuidof(IPrintPipelineFilter), back.PutVoid()));
        witness.Expect(back.Get() == filter.Get(), "its IUnknown does not lead back to the filter");
    }
    IUnknown* pObject = nullptr;
    const HRESULT unknown = ask(*filter.Get(), kUnknown, reinterpret_cast<void**>(&pObject));
    witness.ExpectRefusal(unknown, pObject, "QueryInterface for an interface that the filter does not have");
    const HRESULT without = ask(*filter.Get(), __uuidof(IUnknown), nullptr);
    witness.ExpectRefusal(without, nullptr, "QueryInterface without a place for the object");
}

// The pipeline's objects that InitializeFilter is given, without a job behind them.
struct PipelineObjects {
    pipeline::ContextPtr context = std::make_shared<pipeline::RunContext>();
    ComPtr<pipeline::Communicator> communicator =
        pipeline::MakeObject<pipeline::Communicator>(context, pipeline::StreamEnd(), pipeline::StreamEnd());
    ComPtr<pipeline::PropertyBag> bag = pipeline::MakeObject<pipeline::PropertyBag>(context);
    ComPtr<pipeline::PipelineControl> control = pipeline::MakeObject<pipeline::PipelineControl>(context);

    // "never released" of each that somebody else holds.
    [[nodiscard]] std::vector<std::string> Reset() {
        communicator.Reset();
        bag.Reset();
        control.Reset();
        return context->LiveObjects();
    }
};

void ProbeNullInitialisation(FilterModule& module, const FilterSettings&, const Witness& witness) {
    constexpr std::array<const char*, 4> kWithout = {"the communicator", "the property bag", "the control",
                                                     "anything"};
    for (std::size_t i = 0; i < kWithout.size(); ++i) {
        const std::string what = std::string("InitializeFilter without ") + kWithout[i];
        const bool isBare = i == kWithout.size() - 1;
        PipelineObjects objects;
        ComPtr<IPrintPipelineFilter> filter = module.CreateFilter();
        const HRESULT answer = witness.In(what, [&] {
            return filter->InitializeFilter(i == 0 || isBare ? nullptr : objects.communicator.Get(),
                                            i == 1 || isBare ? nullptr : objects.bag.Get(),
                                            i == 2 || isBare ? nullptr : objects.control.Get());
        });
        witness.Expect(FAILED(answer), what + " answers " + common::Describe(answer));
        witness.In("the last release", [&] { return filter.Reset(), 0; });
        for (const std::string& left : objects.Reset())
            witness.Expect(false, what + " never releases " + left);
    }
}

void ProbeUninitialised(FilterModule& module, const FilterSettings&, const Witness& witness) {
    ComPtr<IPrintPipelineFilter> first = module.CreateFilter();
    ComPtr<IPrintPipelineFilter> second = module.CreateFilter();
    witness.Expect(first.Get() != second.Get(), "two filters are one object");
    witness.Expect(module.CanUnloadNow() != S_OK, "DllCanUnloadNow answers S_OK while a filter lives");
    witness.In("the last release", [&] { return first.Reset(), 0; });
    witness.Expect(module.CanUnloadNow() != S_OK, "DllCanUnloadNow answers S_OK while a filter lives");
    witness.In("the last release", [&] { return second.Reset(), 0; });
    witness.ExpectUnloadable(module, "after the last release");
}

// Whether the DLL is loaded by its path, whatever else holds it.
bool IsLoaded(const std::filesystem::path& dll) { return GetModuleHandleW(dll.c_str()) != nullptr; }

void ProbeReloading(const FilterSettings& settings, const Witness& witness) {
    constexpr int kTimes = 3;
    const bool wasLoaded = IsLoaded(settings.dll);
    for (int i = 0; i < kTimes; ++i) {
        auto pModule = witness.In(
            "the loading", [&] { return std::make_unique<FilterModule>(settings.dll, settings.clsid); });
        witness.In("the making of the filter", [&] { return pModule->CreateFilter().Reset(), 0; });
        witness.ExpectUnloadable(*pModule, "after the last release");
        witness.In("the unloading", [&] { return pModule.reset(), 0; });
        witness.Expect(wasLoaded || !IsLoaded(settings.dll),
                       common::PathText(settings.dll.filename()) + " stays loaded");
    }
}

using ModuleProbe = void (*)(FilterModule& module, const FilterSettings& settings, const Witness& witness);

// Over each filter of the settings, with the provider that it would be bound to.
filterhost::Probe OfModule(ModuleProbe probe) {
    return [probe](const filterhost::Order& order, const EventSink& sink) {
        const filterhost::TicketProvider provider(order.host);
        for (const FilterSettings& each : order.host.filters) {
            FilterModule module(each.dll, each.clsid);
            probe(module, each, Witness(sink));
        }
    };
}

// The host itself keeps what its last some thousand objects took, so it is looked at when it is full.
void ProbeManyJobs(const filterhost::Order& order, const EventSink& sink) {
    constexpr unsigned kWarmingUp = 80;
    constexpr unsigned kJobs = 80;
    constexpr SIZE_T kBytesOfAJob = 4096;  // a page of memory
    const EventSink nobody = [](const filterhost::Event&) {};
    // Not unloaded before the process is at its end when the filter has left a thread in it.
    auto run = std::make_unique<filterhost::HostedRun>(order.host, nobody);
    ProcessUsage before;
    for (unsigned job = 1; job <= kWarmingUp + kJobs; ++job) {
        if (!run->Run(order.job, nobody)) {
            static_cast<void>(run.release());
            sink(filterhost::events::Crashed{
                {0, "the filter did not come to the end of job " + std::to_string(job)}});
            return;
        }
        sink(filterhost::events::Alive{});
        if (job == kWarmingUp) before = ProcessUsage::Now();
    }
    const ProcessUsage after = ProcessUsage::Now();
    const Witness witness(sink);
    witness.Expect(after.handles <= before.handles + kJobs / 10,
                   std::to_string(kJobs) + " jobs took " +
                       std::to_string(static_cast<long>(after.handles) - static_cast<long>(before.handles)) +
                       " handles more");
    witness.Expect(after.privateBytes <= before.privateBytes + kJobs * kBytesOfAJob,
                   std::to_string(kJobs) + " jobs took " +
                       std::to_string((static_cast<long long>(after.privateBytes) -
                                       static_cast<long long>(before.privateBytes)) /
                                      1024) +
                       " KiB more");
}

}  // namespace

const filterhost::Probes& AllProbes() {
    static const filterhost::Probes kAll = {
        {probes::kClassObject, OfModule(&ProbeClassObject)},
        {probes::kFactory, OfModule(&ProbeFactory)},
        {probes::kIdentity, OfModule(&ProbeIdentity)},
        {probes::kNullInitialisation, OfModule(&ProbeNullInitialisation)},
        {probes::kUninitialised, OfModule(&ProbeUninitialised)},
        {probes::kReloading,
         [](const filterhost::Order& order, const EventSink& sink) {
             const filterhost::TicketProvider provider(order.host);
             for (const FilterSettings& each : order.host.filters) ProbeReloading(each, Witness(sink));
         }},
        {probes::kManyJobs, &ProbeManyJobs},
        {probes::kFailingMemory, &ProbeFailingMemory},
    };
    return kAll;
}

}  // namespace devkit::validate
