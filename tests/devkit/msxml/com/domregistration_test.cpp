#include "devkit/msxml/com/domregistration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "devkit/msxml/com/conformance.h"
#include "devkit/msxml/com/domdocument.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"
#include "platform/variant.h"

namespace devkit::msxml {
namespace {

using platform::ComPtr;

// Whether CoCreateInstance gives this library's document on the calling thread.
bool ComGivesOurs(DWORD context) {
    const long before = LiveObjectCount();
    ComPtr<IXMLDOMDocument2> pDocument;
    const HRESULT result = CoCreateInstance(platform::CLSID_DomDocument60, nullptr, context,
                                            __uuidof(IXMLDOMDocument2), pDocument.PutVoid());
    return result == S_OK && LiveObjectCount() == before + 1;
}

TEST(DomRegistration, OwnDocumentPassesTheProbe) { EXPECT_TRUE(DomConforms(*MakeDomClassObject().Get())); }

TEST(DomRegistration, TheClassObjectMakesNoPartOfAnother) {
    const ComPtr<IClassFactory> pFactory = MakeDomClassObject();
    ComPtr<IUnknown> pObject;
    EXPECT_EQ(CLASS_E_NOAGGREGATION,
              pFactory->CreateInstance(pFactory.Get(), __uuidof(IUnknown), pObject.PutVoid()));
    EXPECT_EQ(E_POINTER, pFactory->CreateInstance(nullptr, __uuidof(IUnknown), nullptr));
    EXPECT_EQ(S_OK, pFactory->LockServer(TRUE));
}

TEST(DomRegistration, ServesTheMultithreadedApartmentWhileItLives) {
    EXPECT_FALSE(ComGivesOurs(CLSCTX_INPROC_SERVER));
    {
        const DomRegistration registration;
        EXPECT_TRUE(ComGivesOurs(CLSCTX_INPROC_SERVER));
        EXPECT_TRUE(ComGivesOurs(CLSCTX_ALL));
    }
    EXPECT_FALSE(ComGivesOurs(CLSCTX_INPROC_SERVER));
}

TEST(DomRegistration, ServesEveryThreadOfTheMultithreadedApartment) {
    const DomRegistration registration;
    bool isOurs = false;
    std::thread([&] {
        ASSERT_HRESULT_SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
        isOurs = ComGivesOurs(CLSCTX_ALL);
        CoUninitialize();
    }).join();
    EXPECT_TRUE(isOurs);
}

TEST(DomRegistration, ServesASinglethreadedApartmentThatHasItsOwn) {
    bool before = true;
    bool during = false;
    bool after = true;
    std::thread([&] {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        before = ComGivesOurs(CLSCTX_ALL);
        {
            const DomRegistration registration;
            during = ComGivesOurs(CLSCTX_ALL) && ComGivesOurs(CLSCTX_INPROC_SERVER);
        }
        after = ComGivesOurs(CLSCTX_ALL);
        CoUninitialize();
    }).join();
    EXPECT_FALSE(before);
    EXPECT_TRUE(during);
    EXPECT_FALSE(after);
}

TEST(DomRegistration, AnApartmentsRegistrationIsNotAnothers) {
    const DomRegistration registration;
    bool inOther = true;
    std::thread([&] {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        inOther = ComGivesOurs(CLSCTX_ALL);
        CoUninitialize();
    }).join();
    EXPECT_FALSE(inOther);
}

// Creates readers for a while with COM's table as it is; the shortest of several times.
std::chrono::steady_clock::duration TimeOfReaders() {
    auto shortest = std::chrono::steady_clock::duration::max();
    for (int round = 0; round < 20; ++round) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < 10; ++i) {
            ComPtr<ISAXXMLReader> pReader;
            EXPECT_EQ(S_OK, CoCreateInstance(platform::CLSID_SaxXmlReader60, nullptr, CLSCTX_ALL,
                                             __uuidof(ISAXXMLReader), pReader.PutVoid()));
        }
        shortest = std::min(shortest, std::chrono::steady_clock::now() - start);
    }
    return shortest;
}

TEST(SaxRegistration, SparesWineTheSearchOfItsRegistry) {
    if (SystemDomConforms()) GTEST_SKIP() << "this system keeps what it has found";
    const auto searching = TimeOfReaders();
    const SaxRegistration registration;
    const auto found = TimeOfReaders();
    EXPECT_LT(found * 3, searching * 2);
}

TEST(SaxRegistration, LeavesTheReaderTheSystemsOwn) {
    const auto read = [] {
        ComPtr<ISAXXMLReader> pReader;
        EXPECT_EQ(S_OK, CoCreateInstance(platform::CLSID_SaxXmlReader60, nullptr, CLSCTX_ALL,
                                         __uuidof(ISAXXMLReader), pReader.PutVoid()));
        const platform::Variant text(L"<a><b/>");
        return pReader->parse(text.Get());
    };
    const HRESULT without = read();
    EXPECT_TRUE(FAILED(without));
    {
        const SaxRegistration registration;
        EXPECT_EQ(without, read());
    }
    EXPECT_EQ(without, read());
}

TEST(DomRegistration, ProbeOfTheSystemIgnoresARegistration) {
    const bool conforms = SystemDomConforms();
    const DomRegistration registration;
    EXPECT_EQ(conforms, SystemDomConforms());
}

}  // namespace
}  // namespace devkit::msxml
