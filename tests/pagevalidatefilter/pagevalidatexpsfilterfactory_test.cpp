#include "pagevalidatefilter/pagevalidatexpsfilterfactory.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "mockobject.h"
#include "pagevalidatefilter/module.h"
#include "pagevalidatefilter/pagevalidatexpsfilter.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

// The entry points are declared by a header that MinGW lacks.
STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** ppObject);
STDAPI DllCanUnloadNow();

namespace pagevalidatefilter {
namespace {

using platform::ComPtr;

class FactoryTest : public testing::Test {
  protected:
    FactoryTest() { EXPECT_EQ(0, ModuleCount()); }
    ~FactoryTest() override {
        m_pFactory.Reset();
        EXPECT_EQ(0, ModuleCount());
    }

    void GetFactory() {
        ASSERT_EQ(S_OK, DllGetClassObject(CLSID_PageValidateXpsFilter, __uuidof(IClassFactory),
                                          m_pFactory.PutVoid()));
    }

    ComPtr<IClassFactory> m_pFactory;
};

TEST_F(FactoryTest, DllGetClassObjectGivesTheFactory) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    EXPECT_EQ(1, ModuleCount());
    EXPECT_EQ(2u, m_pFactory->AddRef());
    EXPECT_EQ(1u, m_pFactory->Release());
}

TEST_F(FactoryTest, DllGetClassObjectGivesEachCallerAFactoryOfItsOwn) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    ComPtr<IUnknown> pOther;
    EXPECT_EQ(S_OK, DllGetClassObject(CLSID_PageValidateXpsFilter, __uuidof(IUnknown), pOther.PutVoid()));
    EXPECT_NE(static_cast<IUnknown*>(m_pFactory.Get()), pOther.Get());
    EXPECT_EQ(2, ModuleCount());
}

TEST_F(FactoryTest, DllGetClassObjectOfAnotherClassIsNotAvailable) {
    void* pObject = this;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, DllGetClassObject(CLSID_NULL, __uuidof(IClassFactory), &pObject));
    EXPECT_EQ(nullptr, pObject);
}

TEST_F(FactoryTest, DllGetClassObjectWithoutAnOutPointerReturnsEPointer) {
    EXPECT_EQ(E_POINTER, DllGetClassObject(CLSID_PageValidateXpsFilter, __uuidof(IClassFactory), nullptr));
    EXPECT_EQ(E_POINTER, DllGetClassObject(CLSID_NULL, __uuidof(IClassFactory), nullptr));
}

TEST_F(FactoryTest,
       DllGetClassObjectWithAnUnsupportedInterfaceReturnsENoInterfaceAndLeavesTheModuleCountAsItWas) {
    void* pObject = this;
    EXPECT_EQ(E_NOINTERFACE,
              DllGetClassObject(CLSID_PageValidateXpsFilter, __uuidof(IPrintPipelineFilter), &pObject));
    EXPECT_EQ(nullptr, pObject);
    EXPECT_EQ(0, ModuleCount());
}

TEST_F(FactoryTest, DllCanUnloadNowOnlyWhenNothingLives) {
    EXPECT_EQ(S_OK, DllCanUnloadNow());
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    EXPECT_EQ(S_FALSE, DllCanUnloadNow());
    m_pFactory.Reset();
    EXPECT_EQ(S_OK, DllCanUnloadNow());
}

TEST_F(FactoryTest, AnswersIUnknownAndIClassFactoryAlone) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    ComPtr<IUnknown> pUnknown;
    EXPECT_EQ(S_OK, m_pFactory->QueryInterface(__uuidof(IUnknown), pUnknown.PutVoid()));
    EXPECT_EQ(m_pFactory.Get(), pUnknown.Get());
    void* pObject = this;
    EXPECT_EQ(E_NOINTERFACE, m_pFactory->QueryInterface(__uuidof(IPrintPipelineFilter), &pObject));
    EXPECT_EQ(nullptr, pObject);
    EXPECT_EQ(E_POINTER, m_pFactory->QueryInterface(__uuidof(IUnknown), nullptr));
}

TEST_F(FactoryTest, CreateInstanceGivesAFilterThatCountsAsALiveObject) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    ComPtr<IPrintPipelineFilter> pFilter;
    ASSERT_EQ(S_OK, m_pFactory->CreateInstance(nullptr, __uuidof(IPrintPipelineFilter), pFilter.PutVoid()));
    EXPECT_EQ(2, ModuleCount());
    EXPECT_EQ(2u, pFilter->AddRef());
    EXPECT_EQ(1u, pFilter->Release());
    pFilter.Reset();
    EXPECT_EQ(1, ModuleCount());
}

TEST_F(FactoryTest, CreateInstanceWithAnOuterObjectReturnsNoAggregationWithoutCreatingAnything) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    const auto pOuter = tests::MakeMock<tests::MockUnknown>();
    void* pObject = this;
    EXPECT_EQ(CLASS_E_NOAGGREGATION, m_pFactory->CreateInstance(pOuter.Get(), __uuidof(IUnknown), &pObject));
    EXPECT_EQ(nullptr, pObject);
    EXPECT_EQ(CLASS_E_NOAGGREGATION, m_pFactory->CreateInstance(pOuter.Get(), __uuidof(IUnknown), nullptr));
    EXPECT_EQ(1, ModuleCount());
    EXPECT_EQ(1u, pOuter->References());
}

TEST_F(FactoryTest, CreateInstanceWithoutAnOutPointerReturnsEPointer) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    EXPECT_EQ(E_POINTER, m_pFactory->CreateInstance(nullptr, __uuidof(IUnknown), nullptr));
    EXPECT_EQ(1, ModuleCount());
}

TEST_F(FactoryTest, CreateInstanceWithAnUnsupportedInterfaceDestroysTheFilter) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    void* pObject = this;
    EXPECT_EQ(E_NOINTERFACE, m_pFactory->CreateInstance(nullptr, __uuidof(IXpsDocumentProvider), &pObject));
    EXPECT_EQ(nullptr, pObject);
    EXPECT_EQ(1, ModuleCount());
}

TEST_F(FactoryTest, TwoLocksOnOneFactoryRaiseTheModuleCountByOneOnlyAndTheTwoUnlocksLowerItByOne) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    EXPECT_EQ(S_OK, m_pFactory->LockServer(TRUE));
    EXPECT_EQ(2, ModuleCount());
    EXPECT_EQ(S_OK, m_pFactory->LockServer(TRUE));
    EXPECT_EQ(2, ModuleCount());
    EXPECT_EQ(S_OK, m_pFactory->LockServer(FALSE));
    EXPECT_EQ(2, ModuleCount());
    EXPECT_EQ(S_OK, m_pFactory->LockServer(FALSE));
    EXPECT_EQ(1, ModuleCount());
}

TEST_F(FactoryTest, AnUnlockWithoutALockChangesNothing) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    EXPECT_EQ(S_OK, m_pFactory->LockServer(FALSE));
    EXPECT_EQ(1, ModuleCount());
    EXPECT_EQ(S_OK, m_pFactory->LockServer(TRUE));
    EXPECT_EQ(2, ModuleCount());
    EXPECT_EQ(S_OK, m_pFactory->LockServer(FALSE));
    EXPECT_EQ(1, ModuleCount());
}

TEST_F(FactoryTest, AnyThreadMayLockUnlockAndCreate) {
    ASSERT_NO_FATAL_FAILURE(GetFactory());
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 500; ++round) {
                m_pFactory->LockServer(TRUE);
                ComPtr<IUnknown> pFilter;
                m_pFactory->CreateInstance(nullptr, __uuidof(IUnknown), pFilter.PutVoid());
                m_pFactory->LockServer(FALSE);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(1, ModuleCount());
}

}  // namespace
}  // namespace pagevalidatefilter
