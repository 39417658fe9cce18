#include "devkit/msxml/domregistration.h"

#include <gtest/gtest.h>

#include <thread>

#include "devkit/msxml/classfactory.h"
#include "devkit/msxml/conformance.h"
#include "devkit/msxml/domdocument.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

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

TEST(DomRegistration, OwnDocumentPassesTheProbe) {
    const ComPtr<IClassFactory> pFactory(new ClassFactory);
    EXPECT_TRUE(DomConforms(*pFactory.Get()));
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
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
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
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        inOther = ComGivesOurs(CLSCTX_ALL);
        CoUninitialize();
    }).join();
    EXPECT_FALSE(inOther);
}

TEST(DomRegistration, ProbeOfTheSystemIgnoresARegistration) {
    const bool conforms = SystemDomConforms();
    const DomRegistration registration;
    EXPECT_EQ(SystemDomConforms(), conforms);
}

}  // namespace
}  // namespace devkit::msxml
