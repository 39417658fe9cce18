#include "base/xps/filterpipeline/xpsfilterbase.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/logging/exceptions.h"
#include "base/xps/printschema/privateprefix.h"
#include "mockpipeline.h"
#include "mockproperties.h"
#include "platform/comptr.h"
#include "thrown.h"

namespace base::xps::filterpipeline {
namespace {

using platform::ComPtr;
using tests::MakeMock;

using Calls = std::vector<std::string>;

// A filter whose three operations note their call and then do what a test wants.
class FakeFilter final : public XpsFilterBase {
  public:
    explicit FakeFilter(tests::CallRecorder& calls) : m_calls(calls) { ++s_destroyable; }

    void DoOperation() override { Run("DoOperation", doOperation); }
    void OnOperationEnd() override { Run("OnOperationEnd", onOperationEnd); }
    void OnShutdownOperation() override { Run("OnShutdownOperation", onShutdownOperation); }

    using XpsFilterBase::FilterFinished;
    using XpsFilterBase::GetPropertyBag;
    using XpsFilterBase::RequestReader;
    using XpsFilterBase::RequestShutdown;
    using XpsFilterBase::RequestWriter;
    using XpsFilterBase::s_liveInstances;

    std::function<void()> doOperation;
    std::function<void()> onOperationEnd;
    std::function<void()> onShutdownOperation;

    static inline int s_destroyable = 0;

  private:
    ~FakeFilter() override { --s_destroyable; }

    void Run(const char* name, const std::function<void()>& body) {
        static_cast<void>(m_calls.Enter(name));
        if (body) body();
    }

    tests::CallRecorder& m_calls;
};

// What an operation may throw, and what its caller must return for it.
struct Mapping {
    const char* name;
    std::function<void()> thrower;
    HRESULT mapped;
};

const std::vector<Mapping>& Mappings() {
    static const std::vector<Mapping> mappings = {
        {"bad_alloc", [] { throw std::bad_alloc(); }, E_OUTOFMEMORY},
        {"HresultError", [] { throw exception::HresultError(STG_E_ACCESSDENIED, "f", 1); },
         STG_E_ACCESSDENIED},
        {"logic_error", [] { throw std::logic_error("x"); }, E_FAIL},
        {"NotSupportedException", [] { throw exception::NotSupportedException("x"); }, E_FAIL},
        {"int", [] { throw 7; }, E_UNEXPECTED},
    };
    return mappings;
}

class XpsFilterBaseTest : public testing::Test {
  protected:
    HRESULT Initialize() {
        const HRESULT hr = m_pFilter->InitializeFilter(m_pCommunicator.Get(), m_pBag.Get(), m_pControl.Get());
        m_calls.Clear();
        return hr;
    }
    static std::wstring PrivatePrefix() { return printschema::PrivatePrefix(); }

    tests::CallRecorder m_calls;
    ComPtr<tests::MockCommunicator> m_pCommunicator = MakeMock<tests::MockCommunicator>(m_calls);
    ComPtr<tests::MockPropertyBag> m_pBag = MakeMock<tests::MockPropertyBag>(m_calls);
    ComPtr<tests::MockPipelineControl> m_pControl = MakeMock<tests::MockPipelineControl>(m_calls);
    ComPtr<FakeFilter> m_pFilter = ComPtr<FakeFilter>::Adopt(new FakeFilter(m_calls));
};

TEST_F(XpsFilterBaseTest, WithoutAPipelineControlNobodyIsTold) {
    m_pFilter->RequestShutdown(E_ABORT);
    m_pFilter->FilterFinished();
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, AnswersIUnknownAndIPrintPipelineFilterAlone) {
    ComPtr<IUnknown> pUnknown;
    EXPECT_EQ(S_OK, m_pFilter->QueryInterface(__uuidof(IUnknown), pUnknown.PutVoid()));
    EXPECT_EQ(m_pFilter.Get(), pUnknown.Get());
    ComPtr<IPrintPipelineFilter> pFilter;
    EXPECT_EQ(S_OK, m_pFilter->QueryInterface(__uuidof(IPrintPipelineFilter), pFilter.PutVoid()));
    EXPECT_EQ(m_pFilter.Get(), pFilter.Get());
    void* pOther = &pFilter;
    EXPECT_EQ(E_NOINTERFACE, m_pFilter->QueryInterface(__uuidof(IClassFactory), &pOther));
    EXPECT_EQ(nullptr, pOther);
    EXPECT_EQ(E_POINTER, m_pFilter->QueryInterface(__uuidof(IUnknown), nullptr));
    EXPECT_EQ(4u, m_pFilter->AddRef());
    EXPECT_EQ(3u, m_pFilter->Release());
}

TEST_F(XpsFilterBaseTest, LivesUntilTheLastReleaseAndIsCounted) {
    const LONG before = FakeFilter::s_liveInstances;
    const int objects = FakeFilter::s_destroyable;
    auto* pFilter = new FakeFilter(m_calls);
    EXPECT_EQ(before + 1, FakeFilter::s_liveInstances);
    EXPECT_EQ(2u, pFilter->AddRef());
    EXPECT_EQ(1u, pFilter->Release());
    EXPECT_EQ(objects + 1, FakeFilter::s_destroyable);
    EXPECT_EQ(0u, pFilter->Release());
    EXPECT_EQ(objects, FakeFilter::s_destroyable);
    EXPECT_EQ(before, FakeFilter::s_liveInstances);
}

TEST_F(XpsFilterBaseTest, InitializeFilterWithAnyNullArgumentReturnsEFailAndALaterStartOperationToo) {
    for (int given = 0; given < 7; ++given) {
        EXPECT_EQ(E_FAIL, m_pFilter->InitializeFilter((given & 1) != 0 ? m_pCommunicator.Get() : nullptr,
                                                      (given & 2) != 0 ? m_pBag.Get() : nullptr,
                                                      (given & 4) != 0 ? m_pControl.Get() : nullptr))
            << given;
        EXPECT_EQ(E_FAIL, m_pFilter->StartOperation()) << given;
    }
    EXPECT_EQ(1u, m_pCommunicator->References());
    EXPECT_EQ(1u, m_pBag->References());
    EXPECT_EQ(1u, m_pControl->References());
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, InitializeFilterKeepsTheThreeObjectsUntilTheFilterGoes) {
    EXPECT_EQ(S_OK, Initialize());
    EXPECT_EQ(2u, m_pCommunicator->References());
    EXPECT_EQ(2u, m_pBag->References());
    EXPECT_EQ(2u, m_pControl->References());
    EXPECT_EQ(m_pBag.Get(), m_pFilter->GetPropertyBag());
    EXPECT_EQ(S_OK, Initialize());
    EXPECT_EQ(2u, m_pBag->References());
    m_pFilter.Reset();
    EXPECT_EQ(1u, m_pCommunicator->References());
    EXPECT_EQ(1u, m_pBag->References());
    EXPECT_EQ(1u, m_pControl->References());
}

TEST_F(XpsFilterBaseTest, APropertyBagWithoutDriverPropertyBagStillYieldsSOkWithAnEmptyPrefix) {
    printschema::SetPrivatePrefix(L"old");
    EXPECT_EQ(S_OK, m_pFilter->InitializeFilter(m_pCommunicator.Get(), m_pBag.Get(), m_pControl.Get()));
    EXPECT_EQ(L"", PrivatePrefix());
    EXPECT_EQ(Calls{"GetProperty DriverPropertyBag"}, m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, InitializeFilterSetsThePrivatePrefixFromTheDriversPropertyBag) {
    const auto pDriverBag = MakeMock<tests::MockPrinterPropertyBag>(m_calls);
    pDriverBag->SetText(L"KoraNsPrefix", L"krk");
    m_pBag->SetObject(L"DriverPropertyBag", pDriverBag.Get());
    EXPECT_EQ(S_OK, m_pFilter->InitializeFilter(m_pCommunicator.Get(), m_pBag.Get(), m_pControl.Get()));
    EXPECT_EQ(L"krk:", PrivatePrefix());
    EXPECT_EQ((Calls{"GetProperty DriverPropertyBag", "GetString KoraNsPrefix"}), m_calls.Calls());
    EXPECT_EQ(2u, pDriverBag->References());
}

TEST_F(XpsFilterBaseTest, ADriverPropertyBagThatCannotBeReadYieldsSOkWithAnEmptyPrefix) {
    const auto expectEmpty = [&](const char* what) {
        printschema::SetPrivatePrefix(L"old");
        EXPECT_EQ(S_OK, Initialize()) << what;
        EXPECT_EQ(L"", PrivatePrefix()) << what;
    };
    const auto pDriverBag = MakeMock<tests::MockPrinterPropertyBag>(m_calls);
    m_pBag->SetObject(L"DriverPropertyBag", pDriverBag.Get());
    expectEmpty("no such string");
    pDriverBag->SetText(L"KoraNsPrefix", L"krk");
    m_calls.Fail("GetString KoraNsPrefix", E_FAIL);
    expectEmpty("a string that fails to be read and is left behind");
    m_calls.Fail("GetProperty DriverPropertyBag", E_FAIL);
    expectEmpty("a bag that fails to be read and is left behind");
    EXPECT_EQ(2u, pDriverBag->References());
    m_pBag->SetObject(L"DriverPropertyBag", MakeMock<tests::MockUnknown>().Get());
    expectEmpty("another kind of object");
    m_pBag->SetObject(L"DriverPropertyBag", nullptr);
    expectEmpty("a null object");
    m_pBag->SetText(L"DriverPropertyBag", L"krk");
    expectEmpty("no object");
}

TEST_F(XpsFilterBaseTest, StartOperationBeforeInitializeFilterReturnsEFailAndRunsNothing) {
    EXPECT_EQ(E_FAIL, m_pFilter->StartOperation());
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, StartOperationRunsTheBodyAndThenItsEnd) {
    ASSERT_EQ(S_OK, Initialize());
    EXPECT_EQ(S_OK, m_pFilter->StartOperation());
    EXPECT_EQ((Calls{"DoOperation", "OnOperationEnd"}), m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, AnExceptionOfTheBodyIsReturnedAfterTheEndRanAndAfterItWasReported) {
    ASSERT_EQ(S_OK, Initialize());
    for (const Mapping& mapping : Mappings()) {
        m_calls.Clear();
        m_pFilter->doOperation = mapping.thrower;
        EXPECT_EQ(mapping.mapped, m_pFilter->StartOperation()) << mapping.name;
        EXPECT_EQ(
            (Calls{"DoOperation", "OnOperationEnd", "RequestShutdown " + tests::HresultText(mapping.mapped)}),
            m_calls.Calls());
    }
}

TEST_F(XpsFilterBaseTest, ASuccessCodeThrownByMistakeIsReturnedAsItIsAndNotReported) {
    ASSERT_EQ(S_OK, Initialize());
    m_pFilter->doOperation = [] { throw exception::HresultError(S_FALSE, "f", 1); };
    EXPECT_EQ(S_FALSE, m_pFilter->StartOperation());
    EXPECT_EQ((Calls{"DoOperation", "OnOperationEnd"}), m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, AnExceptionOfTheEndIsReturnedAtOnceAlsoInPlaceOfTheBodys) {
    ASSERT_EQ(S_OK, Initialize());
    for (const bool bodyFails : {false, true}) {
        if (bodyFails) m_pFilter->doOperation = [] { throw exception::HresultError(E_ABORT, "f", 1); };
        for (const Mapping& mapping : Mappings()) {
            m_calls.Clear();
            m_pFilter->onOperationEnd = mapping.thrower;
            EXPECT_EQ(mapping.mapped, m_pFilter->StartOperation()) << mapping.name;
            EXPECT_EQ((Calls{"DoOperation", "OnOperationEnd"}), m_calls.Calls());
        }
    }
}

TEST_F(XpsFilterBaseTest, AReportThatFailsGivesTheResult) {
    ASSERT_EQ(S_OK, Initialize());
    m_pFilter->doOperation = [] { throw exception::HresultError(E_ABORT, "f", 1); };
    m_calls.Fail("RequestShutdown 0x80004004", RPC_E_DISCONNECTED);
    EXPECT_EQ(RPC_E_DISCONNECTED, m_pFilter->StartOperation());
    EXPECT_EQ(1u, m_calls.Count("RequestShutdown 0x80004004"));
}

// The apartment kind of the calling thread, -1 when it is in none of its own.
int Apartment() {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (CoGetApartmentType(&type, &qualifier) != S_OK) return -1;
    return qualifier == APTTYPEQUALIFIER_IMPLICIT_MTA ? -1 : type;
}

TEST_F(XpsFilterBaseTest, TheOperationRunsInTheMultithreadedApartmentAndLeavesItOnEveryPath) {
    ASSERT_EQ(S_OK, Initialize());
    int inBody = -2;
    int inEnd = -2;
    std::function<void()> bodyThrower;
    std::function<void()> endThrower;
    m_pFilter->doOperation = [&] {
        inBody = Apartment();
        if (bodyThrower) bodyThrower();
    };
    m_pFilter->onOperationEnd = [&] {
        inEnd = Apartment();
        if (endThrower) endThrower();
    };
    for (const bool bodyFails : {false, true}) {
        for (const bool endFails : {false, true}) {
            bodyThrower = bodyFails ? Mappings()[0].thrower : nullptr;
            endThrower = endFails ? Mappings()[1].thrower : nullptr;
            inBody = inEnd = -2;
            std::thread([&] {
                EXPECT_EQ(-1, Apartment());
                EXPECT_EQ(endFails    ? STG_E_ACCESSDENIED
                          : bodyFails ? E_OUTOFMEMORY
                                      : S_OK,
                          m_pFilter->StartOperation());
                EXPECT_EQ(-1, Apartment());
            }).join();
            EXPECT_EQ(APTTYPE_MTA, inBody);
            EXPECT_EQ(APTTYPE_MTA, inEnd);
        }
    }
}

TEST_F(XpsFilterBaseTest, AThreadAlreadyInASingleThreadedApartmentProcessesNormallyAndIsNotUninitialised) {
    ASSERT_EQ(S_OK, Initialize());
    std::thread([&] {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        const int before = Apartment();
        EXPECT_NE(APTTYPE_MTA, before);
        int inBody = -2;
        m_pFilter->doOperation = [&] { inBody = Apartment(); };
        EXPECT_EQ(S_OK, m_pFilter->StartOperation());
        EXPECT_EQ(before, inBody);
        EXPECT_EQ(before, Apartment());
        CoUninitialize();
        EXPECT_EQ(-1, Apartment());
    }).join();
    EXPECT_EQ((Calls{"DoOperation", "OnOperationEnd"}), m_calls.Calls());
}

// As a bag does that the filter has no memory to ask.
class BagWithoutMemory : public tests::MockPrinterPropertyBag {
  public:
    using MockPrinterPropertyBag::MockPrinterPropertyBag;
    HRESULT STDMETHODCALLTYPE GetString(BSTR, BSTR*) override { throw std::bad_alloc(); }
};

TEST_F(XpsFilterBaseTest, InitializeFilterWithoutMemoryForThePrefixReturnsSOkWithAnEmptyPrefix) {
    printschema::SetPrivatePrefix(L"old");
    m_pBag->SetObject(L"DriverPropertyBag", MakeMock<BagWithoutMemory>(m_calls).Get());
    EXPECT_EQ(S_OK, Initialize());
    EXPECT_EQ(L"", PrivatePrefix());
    EXPECT_EQ(S_OK, m_pFilter->StartOperation());
}

TEST_F(XpsFilterBaseTest, ShutdownOperationReturnsEFailAlsoForAnExceptionThatCarriesASuccess) {
    ASSERT_EQ(S_OK, Initialize());
    m_calls.Clear();
    m_pFilter->onShutdownOperation = [] { throw exception::HresultError(S_OK, "f", 1); };
    EXPECT_EQ(E_FAIL, m_pFilter->ShutdownOperation());
    EXPECT_EQ(1u, m_calls.Count("FilterFinished"));
}

TEST_F(XpsFilterBaseTest, ShutdownOperationStopsTheSubclassAndThenTellsThePipeline) {
    ASSERT_EQ(S_OK, Initialize());
    EXPECT_EQ(S_OK, m_pFilter->ShutdownOperation());
    EXPECT_EQ((Calls{"OnShutdownOperation", "FilterFinished"}), m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, ShutdownOperationBeforeInitializeFilterTellsNobody) {
    EXPECT_EQ(S_OK, m_pFilter->ShutdownOperation());
    EXPECT_EQ(Calls{"OnShutdownOperation"}, m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, ShutdownOperationReturnsEFailAndNotTheUnderlyingCodeWhenFilterFinishedFails) {
    ASSERT_EQ(S_OK, Initialize());
    m_calls.Fail("FilterFinished", RPC_E_DISCONNECTED);
    EXPECT_EQ(E_FAIL, m_pFilter->ShutdownOperation());
    EXPECT_TRUE(m_calls.HasFailed());
}

TEST_F(XpsFilterBaseTest, ShutdownOperationReturnsEFailForAnyExceptionAndStillTellsThePipeline) {
    ASSERT_EQ(S_OK, Initialize());
    for (const Mapping& mapping : Mappings()) {
        m_calls.Clear();
        m_pFilter->onShutdownOperation = mapping.thrower;
        EXPECT_EQ(E_FAIL, m_pFilter->ShutdownOperation()) << mapping.name;
        EXPECT_EQ((Calls{"OnShutdownOperation", "FilterFinished"}), m_calls.Calls());
    }
    m_pFilter->onShutdownOperation = [] { throw exception::HresultError(S_FALSE, "f", 1); };
    EXPECT_EQ(E_FAIL, m_pFilter->ShutdownOperation());
}

TEST_F(XpsFilterBaseTest, RequestReaderAndRequestWriterRefuseANullAddress) {
    const std::string expected = "base/xps/filterpipeline/xpsfilterbase.h(LINE) : ppStream is null.\n";
    EXPECT_EQ(expected, tests::Thrown<std::invalid_argument>(
                            [&] { m_pFilter->RequestReader<IXpsDocumentProvider>(nullptr); }));
    EXPECT_EQ(expected, tests::Thrown<std::invalid_argument>(
                            [&] { m_pFilter->RequestWriter<IXpsDocumentConsumer>(nullptr); }));
}

TEST_F(XpsFilterBaseTest, RequestReaderAndRequestWriterBeforeInitializeFilterThrowABareMessage) {
    ComPtr<IXpsDocumentProvider> pReader;
    ComPtr<IXpsDocumentConsumer> pWriter;
    const std::string expected = "This function must be called after SetUp() call.";
    EXPECT_EQ(expected, tests::Thrown<std::logic_error>([&] { m_pFilter->RequestReader(pReader.Put()); }));
    EXPECT_EQ(expected, tests::Thrown<std::logic_error>([&] { m_pFilter->RequestWriter(pWriter.Put()); }));
}

TEST_F(XpsFilterBaseTest, RequestReaderAndRequestWriterGiveTheCommunicatorsObjects) {
    const auto pProvider = MakeMock<tests::MockDocumentProvider>(m_calls);
    const auto pConsumer = MakeMock<tests::MockDocumentConsumer>(m_calls);
    m_pCommunicator->SetReader(pProvider.Get());
    m_pCommunicator->SetWriter(pConsumer.Get());
    ASSERT_EQ(S_OK, Initialize());
    ComPtr<IXpsDocumentProvider> pReader;
    m_pFilter->RequestReader(pReader.Put());
    EXPECT_EQ(pProvider.Get(), pReader.Get());
    EXPECT_EQ(3u, pProvider->References());
    ComPtr<IXpsDocumentConsumer> pWriter;
    m_pFilter->RequestWriter(pWriter.Put());
    EXPECT_EQ(pConsumer.Get(), pWriter.Get());
    EXPECT_EQ(3u, pConsumer->References());
    EXPECT_EQ((Calls{"RequestReader", "RequestWriter"}), m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, ACommunicatorThatRefusesIsAFailureWithItsCode) {
    ASSERT_EQ(S_OK, Initialize());
    ComPtr<IXpsDocumentProvider> pReader;
    m_calls.Fail("RequestReader", E_ACCESSDENIED);
    EXPECT_EQ(E_ACCESSDENIED, tests::ThrownCode([&] { m_pFilter->RequestReader(pReader.Put()); }));
    ComPtr<IXpsDocumentConsumer> pWriter;
    m_calls.Fail("RequestWriter", E_PENDING);
    EXPECT_EQ(E_PENDING, tests::ThrownCode([&] { m_pFilter->RequestWriter(pWriter.Put()); }));
    EXPECT_EQ((Calls{"RequestReader", "RequestWriter"}), m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, AnObjectOfAnotherKindIsKeptAndShutdownIsRequestedWithSOk) {
    const auto pOther = MakeMock<tests::MockUnknown>();
    m_pCommunicator->SetReader(pOther.Get());
    ASSERT_EQ(S_OK, Initialize());
    ComPtr<IXpsDocumentProvider> pReader;
    m_pFilter->RequestReader(pReader.Put());
    EXPECT_EQ(static_cast<void*>(pOther.Get()), static_cast<void*>(pReader.Get()));
    EXPECT_EQ(3u, pOther->References());
    EXPECT_EQ((Calls{"RequestReader", "RequestShutdown 0x00000000"}), m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, NoObjectAtAllRequestsShutdownWithSOkAndThrowsNothing) {
    ASSERT_EQ(S_OK, Initialize());
    ComPtr<IXpsDocumentConsumer> pWriter;
    m_pFilter->RequestWriter(pWriter.Put());
    EXPECT_EQ(nullptr, pWriter.Get());
    EXPECT_EQ((Calls{"RequestWriter", "RequestShutdown 0x00000000"}), m_calls.Calls());
}

TEST_F(XpsFilterBaseTest, GetDriverInfoBeforeInitializeFilterThrows) {
    EXPECT_EQ("base/xps/filterpipeline/xpsfilterbase.cpp(LINE) : invalid function call sequence.\n",
              tests::Thrown<std::logic_error>([&] { static_cast<void>(m_pFilter->GetDriverInfo()); }));
}

TEST_F(XpsFilterBaseTest, GetDriverInfoWithoutAPrinterHandleIsAFailureWithTheBagsCode) {
    ASSERT_EQ(S_OK, Initialize());
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, tests::ThrownCode([&] { static_cast<void>(m_pFilter->GetDriverInfo()); }));
    EXPECT_EQ(Calls{"GetProperty PrinterHandle"}, m_calls.Calls());
}

}  // namespace
}  // namespace base::xps::filterpipeline
