#include "devkit/msxml/com/domregistration.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "devkit/common/importtable.h"
#include "devkit/msxml/com/conformance.h"
#include "devkit/msxml/com/domdocument.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"
#include "platform/variant.h"

namespace devkit::msxml {
namespace {

using common::ReplaceWith;
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

// Counts how often COM opens a key of the registry while it lives. One at a time.
class CountedSearches {
  public:
    CountedSearches() {
        EXPECT_EQ(2U,
                  common::ReplaceImports(m_com, {{"NtOpenKey", ReplaceWith(&OpenKey, s_openKey)},
                                                 {"RegOpenKeyExW", ReplaceWith(&OpenSubkey, s_openSubkey)}}));
        s_count = 0;
    }
    CountedSearches(const CountedSearches&) = delete;
    CountedSearches& operator=(const CountedSearches&) = delete;
    ~CountedSearches() {
        decltype(s_openKey) openKey = nullptr;
        decltype(s_openSubkey) openSubkey = nullptr;
        common::ReplaceImports(m_com, {{"NtOpenKey", ReplaceWith(s_openKey, openKey)},
                                       {"RegOpenKeyExW", ReplaceWith(s_openSubkey, openSubkey)}});
    }
    [[nodiscard]] static int Count() { return s_count; }

  private:
    static LONG NTAPI OpenKey(HANDLE* pKey, ACCESS_MASK access, const void* pAttributes) {
        ++s_count;
        return s_openKey(pKey, access, pAttributes);
    }
    static LSTATUS WINAPI OpenSubkey(HKEY key, LPCWSTR name, DWORD options, REGSAM access, HKEY* pSubkey) {
        ++s_count;
        return s_openSubkey(key, name, options, access, pSubkey);
    }

    static inline std::atomic<int> s_count = 0;
    static inline decltype(&OpenKey) s_openKey = nullptr;
    static inline decltype(&OpenSubkey) s_openSubkey = nullptr;
    HMODULE m_com = GetModuleHandleW(L"combase.dll");
};

int SearchesForAReader() {
    const CountedSearches searches;
    ComPtr<ISAXXMLReader> pReader;
    EXPECT_EQ(S_OK, CoCreateInstance(platform::CLSID_SaxXmlReader60, nullptr, CLSCTX_ALL,
                                     __uuidof(ISAXXMLReader), pReader.PutVoid()));
    return searches.Count();
}

TEST(SaxRegistration, SparesWineTheSearchOfItsRegistry) {
    if (SystemDomConforms()) GTEST_SKIP() << "this system keeps what it has found";
    SearchesForAReader();  // the first one opens what stays open
    const int without = SearchesForAReader();
    const SaxRegistration registration;
    const int with = SearchesForAReader();
    EXPECT_LT(with, without);
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
