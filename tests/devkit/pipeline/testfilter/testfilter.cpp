#include "testfilter.h"

#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/bstr.h"
#include "platform/msxml6.h"
#include "platform/printerpropertybag.h"
#include "platform/variant.h"

namespace testfilter {
namespace {

using platform::Bstr;
using platform::ComPtr;

// An object of the filter's own that goes down the pipeline as a part of an unknown kind.
class OwnPart final : public platform::ComIdentity<CountedObject, IUnknown> {};

// A filter that hangs is let go by the event that the test makes: it would keep the module loaded for good.
void Hang() {
    const std::wstring name = L"testfilter-release-" + std::to_wstring(GetCurrentProcessId());
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, name.c_str());
    WaitForSingleObject(event, INFINITE);
    CloseHandle(event);
}

// Calls itself until the stack is used up.
int Overflow(volatile int* pDepth) {
    volatile char room[4096];
    *pDepth = *pDepth + 1;
    room[0] = static_cast<char>(*pDepth);
    return *pDepth < 0 ? 0 : Overflow(pDepth) + room[0];
}

std::wstring NameOf(IFixedPage* pPage) {
    Bstr name;
    return SUCCEEDED(pPage->GetUri(name.Put())) ? std::wstring(name.View()) : std::wstring();
}

// What a filter can do to its process, whatever the call. Comes back for any other mode.
void EndBadly(const std::string& mode) {
    if (mode == "crash") *static_cast<volatile int*>(nullptr) = 1;
    if (mode == "jump-to-null") {
        void (*volatile function)() = nullptr;
        function();
    }
    if (mode == "overflow-stack") {
        volatile int depth = 0;
        Overflow(&depth);
    }
    if (mode == "raise") RaiseException(0xE0000001, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    if (mode == "exit-process") ExitProcess(0);
    if (mode == "exit") std::exit(0);
    if (mode == "abort") std::abort();
    if (mode == "terminate") std::terminate();
    if (mode == "throw-in-thread") std::thread([] { throw std::runtime_error("no paper"); }).join();
    if (mode == "exit-thread") ExitThread(0);
    if (mode == "damage-heap") {
        // What the heap keeps in front of a block.
        volatile char* const pBlock = static_cast<volatile char*>(std::malloc(64000));
        for (int i = 1; i <= 16; ++i) pBlock[-i] = 'A';
    }
    if (mode == "hang") Sleep(INFINITE);
}

// Whether the DOM document that COM gives out shows declarations of namespaces among the attributes.
HRESULT LookAtDeclarations() {
    ComPtr<IXMLDOMDocument2> document;
    HRESULT hr = CoCreateInstance(platform::CLSID_DomDocument60, nullptr, CLSCTX_INPROC_SERVER,
                                  __uuidof(IXMLDOMDocument2), document.PutVoid());
    if (FAILED(hr)) return hr;
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    ComPtr<IXMLDOMElement> root;
    ComPtr<IXMLDOMNamedNodeMap> attributes;
    ComPtr<IXMLDOMNode> declaration;
    hr = document->loadXML(Bstr(L"<a xmlns:p=\"u\"/>").Get(), &isLoaded);
    if (SUCCEEDED(hr)) hr = document->get_documentElement(root.Put());
    if (SUCCEEDED(hr)) hr = root->get_attributes(attributes.Put());
    if (SUCCEEDED(hr)) hr = attributes->nextNode(declaration.Put());
    return SUCCEEDED(hr) && !declaration ? E_NOTIMPL : hr;
}

// As a filter does that works in an apartment of its own.
HRESULT UseDomInApartment() {
    HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(hr)) return hr;
    hr = LookAtDeclarations();
    CoUninitialize();
    return hr;
}

std::string ReadMode(IPrintPipelinePropertyBag& bag) {
    platform::Variant value;
    ComPtr<IPrinterPropertyBag> driver;
    Bstr text;
    if (SUCCEEDED(bag.GetProperty(L"DriverPropertyBag", value.Put())) && value.Unknown() != nullptr &&
        SUCCEEDED(value.Unknown()->QueryInterface(__uuidof(IPrinterPropertyBag), driver.PutVoid())) &&
        SUCCEEDED(driver->GetString(Bstr(L"TestFilterMode").Get(), text.Put()))) {
        const std::wstring_view wide = text.View();
        return {wide.begin(), wide.end()};
    }
    const char* mode = std::getenv("TESTFILTER_MODE");
    return mode == nullptr ? "" : mode;
}

// A text, the bytes of a stream, or the entry "Text" of a bag.
HRESULT ReadProperty(const platform::Variant& value, std::string& text) {
    const auto take = [&text](std::wstring_view wide) { text.assign(wide.begin(), wide.end()); };
    if (value.Get().vt == VT_BSTR) {
        take(value.Get().bstrVal);
        return S_OK;
    }
    const ComPtr<IUnknown> object(value.Unknown());
    if (!object) return E_NOINTERFACE;
    ComPtr<IPrintReadStreamFactory> factory;
    if (SUCCEEDED(object.QueryTo(factory))) {
        ComPtr<IPrintReadStream> stream;
        const HRESULT hr = factory->GetStream(stream.Put());
        return FAILED(hr) ? hr : ReadAll(stream.Get(), text);
    }
    ComPtr<IPrinterPropertyBag> bag;
    if (const HRESULT hr = object.QueryTo(bag); FAILED(hr)) return hr;
    Bstr own;
    const HRESULT hr = bag->GetString(Bstr(L"Text").Get(), own.Put());
    if (SUCCEEDED(hr)) take(own.View());
    return hr;
}

// "NAME=TEXT": E_FAIL when the text is not in the property.
HRESULT ExpectProperty(IPrintPipelinePropertyBag& bag, const std::string& expected) {
    const std::size_t equals = expected.find('=');
    const std::wstring name(expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(equals));
    platform::Variant value;
    std::string text;
    if (const HRESULT hr = bag.GetProperty(name.c_str(), value.Put()); FAILED(hr)) return hr;
    if (const HRESULT hr = ReadProperty(value, text); FAILED(hr)) return hr;
    return text.find(expected.substr(equals + 1)) == std::string::npos ? E_FAIL : S_OK;
}

}  // namespace

std::atomic<long> g_liveObjects = 0;

bool ModeIs(const char* mode) {
    const char* const pMode = std::getenv("TESTFILTER_MODE");
    return pMode != nullptr && std::string(pMode) == mode;
}

HRESULT ReadAll(IPrintReadStream* pStream, std::string& text) {
    for (BOOL isEnd = FALSE; !isEnd;) {
        char buffer[1024];
        ULONG count = 0;
        if (const HRESULT hr = pStream->ReadBytes(buffer, sizeof(buffer), &count, &isEnd); FAILED(hr))
            return hr;
        if (count == 0) break;
        text.append(buffer, count);
    }
    return S_OK;
}

HRESULT WriteAll(IPrintWriteStream* pStream, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        ULONG count = 0;
        const ULONG left = static_cast<ULONG>(text.size() - done);
        if (const HRESULT hr = pStream->WriteBytes(text.data() + done, left, &count); FAILED(hr)) return hr;
        if (count == 0) return E_FAIL;
        done += count;
    }
    return S_OK;
}

HRESULT TestFilter::InitializeFilter(IInterFilterCommunicator* pICommunicator,
                                     IPrintPipelinePropertyBag* pIPropertyBag,
                                     IPrintPipelineManagerControl* pIPipelineControl) try {
    if (pICommunicator == nullptr || pIPropertyBag == nullptr || pIPipelineControl == nullptr)
        return ModeIs("take-null") ? S_OK : E_POINTER;
    m_communicator = ComPtr<IInterFilterCommunicator>(pICommunicator);
    m_bag = ComPtr<IPrintPipelinePropertyBag>(pIPropertyBag);
    m_control = ComPtr<IPrintPipelineManagerControl>(pIPipelineControl);
    m_mode = ReadMode(*pIPropertyBag);
    if (Is("throw-initialize")) throw 1;
    if (m_mode.starts_with("initialize:")) EndBadly(m_mode.substr(11));
    if (m_mode.starts_with("want-property ")) {
        const std::wstring name(m_mode.begin() + 14, m_mode.end());
        platform::Variant value;
        return m_bag->GetProperty(name.c_str(), value.Put());
    }
    return Is("fail-initialize") ? E_ABORT : S_OK;
} catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
}

HRESULT TestFilter::ShutdownOperation() {
    const bool isSecond = m_stop.exchange(true);
    if (Is("shutdown-once") && isSecond) return E_UNEXPECTED;
    if (Is("close-on-shutdown") && m_writer) static_cast<void>(m_writer->CloseSender());
    if (Is("hang-in-shutdown")) Hang();
    if (m_mode.starts_with("shutdown:")) EndBadly(m_mode.substr(9));
    if (Is("throw-shutdown")) throw 1;
    return m_control->FilterFinished();
}

HRESULT TestFilter::StartOperation() try {
    if (Is("enter-apartment")) static_cast<void>(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    HRESULT hr = m_communicator->RequestReader(reinterpret_cast<void**>(m_reader.Put()));
    if (SUCCEEDED(hr)) hr = m_communicator->RequestWriter(reinterpret_cast<void**>(m_writer.Put()));
    if (SUCCEEDED(hr)) hr = PresumeOfStreams();
    if (FAILED(hr)) return Finish(hr);
    hr = PresumeOfJob();
    if (LeavesUnsaid(hr)) return hr;
    if (FAILED(hr)) return Finish(hr);
    if (m_mode.starts_with("expect-property ")) {
        hr = ExpectProperty(*m_bag.Get(), m_mode.substr(16));
        if (FAILED(hr)) return Finish(hr);
    }
    if (Is("leak-self")) AddRef();
    if (Is("leak-handle")) static_cast<void>(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (Is("leak-reader")) m_reader->AddRef();
    if (Is("leak-bag")) m_bag->AddRef();
    if (Is("start-no-parts")) return S_OK;
    if (Is("enter-apartment-and-leave")) {
        static_cast<void>(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
        CoUninitialize();
    }
    if (Is("uninitialize")) CoUninitialize();
    if (Is("leave-thread")) std::thread([] { Sleep(INFINITE); }).detach();
    if (Is("dom-in-apartment")) {
        hr = UseDomInApartment();
        if (FAILED(hr)) return hr;
    }
    if (Is("change-folder")) SetCurrentDirectoryW(L"C:\\");
    if (Is("throw")) throw 1;
    if (Is("impersonate") || Is("close-token")) {
        hr = UseToken(Is("close-token"));
        if (FAILED(hr)) return hr;
    }
    if (Is("close-without-parts")) return m_writer->CloseSender();
    return Finish(PassParts());
} catch (const std::bad_alloc&) {
    return Finish(E_OUTOFMEMORY);
}

HRESULT TestFilter::UseToken(bool close) {
    platform::Variant token;
    if (const HRESULT hr = m_bag->GetProperty(L"UserSecurityToken", token.Put()); FAILED(hr)) return hr;
    const BOOL done = close ? CloseHandle(token.Handle()) : SetThreadToken(nullptr, token.Handle());
    return done ? S_OK : HRESULT_FROM_WIN32(GetLastError());
}

HRESULT TestFilter::Finish(HRESULT hr) {
    if (FAILED(hr) && !Is("fail-silently")) {
        const HRESULT told = m_control->RequestShutdown(
            hr, Is("error-info") ? reinterpret_cast<IImgErrorInfo*>(m_control.Get()) : nullptr);
        if (FAILED(told)) return told;
    }
    if (Is("shutdown-after-success")) static_cast<void>(m_control->RequestShutdown(E_ABORT, nullptr));
    if (Is("no-close")) return hr;
    const HRESULT closed = m_writer ? m_writer->CloseSender() : S_OK;
    if (Is("close-twice")) static_cast<void>(m_writer->CloseSender());
    if (Is("succeed-false")) return S_FALSE;
    if (Is("new-part-after-close")) {
        ComPtr<IPartPrintTicket> ticket;
        ComPtr<IPrintWriteStream> stream;
        static_cast<void>(m_writer->GetNewEmptyPart(L"/late.xml", __uuidof(IPartPrintTicket),
                                                    ticket.PutVoid(), stream.Put()));
    }
    return FAILED(hr) ? hr : closed;
}

HRESULT TestFilter::PassParts() {
    for (;;) {
        ComPtr<IUnknown> part;
        const HRESULT got = m_reader->GetXpsPart(part.Put());
        if (FAILED(got) && Is("hang-after-failure")) Hang();
        if (FAILED(got)) return got;
        if (!part) return S_OK;
        while (Is("hang-until-shutdown") && !m_stop) Sleep(1);
        if (m_stop) return HRESULT_FROM_WIN32(ERROR_CANCELLED);
        if (const HRESULT hr = PassPart(part.Get()); FAILED(hr)) return hr;
    }
}

HRESULT TestFilter::PassPart(IUnknown* pPart) {
    const ComPtr<IUnknown> part(pPart);
    ComPtr<IXpsDocument> document;
    ComPtr<IFixedDocumentSequence> sequence;
    ComPtr<IFixedDocument> fixedDocument;
    ComPtr<IFixedPage> page;
    if (SUCCEEDED(part.QueryTo(document))) {
        if (Is("no-document")) return S_OK;
        if (Is("foreign-thumbnail") || Is("thumbnail-unclosed")) {
            if (const HRESULT hr = MisuseThumbnail(document.Get()); FAILED(hr)) return hr;
        }
        const HRESULT hr = m_writer->SendXpsDocument(document.Get());
        if (FAILED(hr) || !Is("own-part")) return hr;
        return m_writer->SendXpsUnknown(ComPtr<IUnknown>::Adopt(new OwnPart).Get());
    }
    if (SUCCEEDED(part.QueryTo(sequence))) return PassSequence(sequence.Get());
    if (SUCCEEDED(part.QueryTo(fixedDocument))) {
        return Is("no-fixed-document") ? S_OK : m_writer->SendFixedDocument(fixedDocument.Get());
    }
    if (SUCCEEDED(part.QueryTo(page))) return PassPage(page.Get());
    if (Is("kinds-only")) *static_cast<volatile int*>(nullptr) = 1;
    return m_writer->SendXpsUnknown(pPart);
}

HRESULT TestFilter::PassSequence(IFixedDocumentSequence* pSequence) {
    if (Is("no-sequence")) return S_OK;
    if (const HRESULT hr = PresumeOfSequence(pSequence); FAILED(hr)) return hr;
    const HRESULT hr = m_writer->SendFixedDocumentSequence(pSequence);
    return FAILED(hr) || !Is("send-sequence-twice") ? hr : m_writer->SendFixedDocumentSequence(pSequence);
}

// The second page before the first.
HRESULT TestFilter::SendSwapped(IFixedPage* pPage) {
    if (m_pages == 1) {
        m_keptPage = ComPtr<IFixedPage>(pPage);
        return S_OK;
    }
    const HRESULT hr = m_writer->SendFixedPage(pPage);
    if (FAILED(hr)) return hr;
    const ComPtr<IFixedPage> first = std::move(m_keptPage);
    return m_writer->SendFixedPage(first.Get());
}

// "when:TEXT:MODE": the mode begins with a page that has the text in its markup.
HRESULT TestFilter::BecomeMode(IFixedPage* pPage) {
    const std::size_t colon = m_mode.find(':', 5);
    ComPtr<IPrintReadStream> stream;
    std::string markup;
    HRESULT hr = pPage->GetStream(stream.Put());
    if (SUCCEEDED(hr)) hr = ReadAll(stream.Get(), markup);
    if (SUCCEEDED(hr) && markup.find(m_mode.substr(5, colon - 5)) != std::string::npos)
        m_mode = m_mode.substr(colon + 1);
    return hr;
}

// What a filter may do with the memory that it takes for a page, and with the want of it.
HRESULT TestFilter::UseMemory() {
    static bool isBroken = false;
    if (Is("null-memory")) {
        auto* const pBlock = new (std::nothrow) char[1000];
        static_cast<volatile char*>(pBlock)[0] = 'A';
        delete[] pBlock;
    }
    if (Is("broken-without-memory") && isBroken) return E_FAIL;
    const bool isCatching =
        Is("drop-without-memory") || Is("leak-without-memory") || Is("broken-without-memory");
    if (!isCatching) return S_OK;
    auto* const pKept = Is("leak-without-memory") ? new char[100] : nullptr;
    try {
        std::vector<char> text(1000);
        static_cast<volatile char*>(text.data())[0] = 'A';
        delete[] pKept;
        return S_OK;
    } catch (const std::bad_alloc&) {
        isBroken = true;
        return Is("drop-without-memory") ? S_FALSE : E_OUTOFMEMORY;
    }
}

HRESULT TestFilter::PassPage(IFixedPage* pPage) {
    ++m_pages;
    const HRESULT used = UseMemory();
    if (used != S_OK) return FAILED(used) ? used : S_OK;
    if (const HRESULT hr = PresumeOfPage(pPage); FAILED(hr)) return hr;
    if (m_mode.starts_with("when:")) {
        if (const HRESULT hr = BecomeMode(pPage); FAILED(hr)) return hr;
    }
    if (Is("doors")) {
        if (const HRESULT hr = OpenDoors(pPage); FAILED(hr)) return hr;
    }
    if (Is("fail") || Is("fail-silently") || Is("error-info")) return E_ABORT;
    EndBadly(m_mode);
    if (Is("sleep")) Sleep(600);
    if (Is("exit-process-for-names") && NameOf(pPage).find(L"A%20Page") != std::wstring::npos) ExitProcess(7);
    if (Is("leak-page") && m_pages == 1) pPage->AddRef();
    if (Is("drop-first-page") && m_pages == 1) return S_OK;
    if (Is("rewrite") || Is("rewrite-long") || Is("break-markup") || Is("rewrite-unclosed") ||
        Is("no-width") || Is("no-height") || Is("name-unrelated") || Is("blank-page") || Is("write-time") ||
        Is("read-once") || Is("write-once")) {
        if (const HRESULT hr = RewriteMarkup(pPage); FAILED(hr)) return hr;
    }
    if (Is("ticket") || Is("ticket-unclosed") || m_mode.starts_with("ticket:")) {
        if (const HRESULT hr = WriteTicket(pPage); FAILED(hr)) return hr;
    }
    if (const HRESULT hr = MisuseResources(pPage); FAILED(hr)) return hr;
    if (Is("page-as-unknown")) return m_writer->SendXpsUnknown(pPage);
    if (Is("send-after-close")) static_cast<void>(m_writer->CloseSender());
    if (Is("page-as-sequence")) {
        return m_writer->SendFixedDocumentSequence(
            static_cast<IFixedDocumentSequence*>(static_cast<void*>(pPage)));
    }
    if (Is("swap-pages") && m_pages <= 2) return SendSwapped(pPage);
    const HRESULT hr = m_writer->SendFixedPage(pPage);
    if (Is("ignore-failure")) return S_OK;
    if (Is("call-after-release")) {
        while (pPage->Release() != 0) {
        }
        return NameOf(pPage).empty() ? S_OK : E_FAIL;
    }
    if (Is("release-page-twice") && m_pages == 1) pPage->Release();
    if (Is("write-after-send")) {
        ComPtr<IPrintWriteStream> stream;
        static_cast<void>(pPage->GetWriteStream(stream.Put()));
    }
    return FAILED(hr) || !Is("send-page-twice") ? hr : m_writer->SendFixedPage(pPage);
}

HRESULT StreamFilter::InitializeFilter(IInterFilterCommunicator* pICommunicator,
                                       IPrintPipelinePropertyBag* pIPropertyBag,
                                       IPrintPipelineManagerControl* pIPipelineControl) {
    if (pICommunicator == nullptr || pIPropertyBag == nullptr || pIPipelineControl == nullptr)
        return E_POINTER;
    m_communicator = ComPtr<IInterFilterCommunicator>(pICommunicator);
    m_control = ComPtr<IPrintPipelineManagerControl>(pIPipelineControl);
    m_mode = ReadMode(*pIPropertyBag);
    return S_OK;
}

HRESULT StreamFilter::ShutdownOperation() {
    m_stop = true;
    return S_OK;
}

HRESULT StreamFilter::StartOperation() {
    ComPtr<IPrintReadStream> reader;
    ComPtr<IPrintWriteStream> writer;
    HRESULT hr = m_communicator->RequestReader(reinterpret_cast<void**>(reader.Put()));
    if (SUCCEEDED(hr)) hr = m_communicator->RequestWriter(reinterpret_cast<void**>(writer.Put()));
    if (FAILED(hr)) return hr;
    if (m_mode == "stream:fail") hr = E_ABORT;
    if (m_mode == "stream:crash") EndBadly("crash");
    if (SUCCEEDED(hr)) hr = PassBytes(*reader.Get(), *writer.Get());
    if (FAILED(hr)) static_cast<void>(m_control->RequestShutdown(hr, nullptr));
    if (m_mode != "stream:no-close") writer->Close();
    if (m_mode == "stream:close-twice") writer->Close();
    return hr;
}

HRESULT StreamFilter::PassBytes(IPrintReadStream& reader, IPrintWriteStream& writer) {
    for (BOOL end = FALSE; !end;) {
        char block[4096];
        ULONG count = 0;
        if (m_stop) return HRESULT_FROM_WIN32(ERROR_CANCELLED);
        HRESULT hr = reader.ReadBytes(block, sizeof(block), &count, &end);
        if (SUCCEEDED(hr)) hr = WriteAll(&writer, std::string(block, count));
        if (FAILED(hr)) return hr;
    }
    return S_OK;
}

}  // namespace testfilter
