#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/bstr.h"
#include "platform/prntvpt.h"
#include "platform/variant.h"
#include "testfilter.h"

// What a filter takes for granted that the platform may have otherwise.

namespace testfilter {
namespace {

using platform::ComPtr;

std::atomic<int> g_atWork = 0;

// The functions of the print ticket provider that the process has loaded.
struct Provider {
    HMODULE module = LoadLibraryW(L"prntvpt.dll");
    decltype(&PTOpenProvider) open = Find<decltype(&PTOpenProvider)>("PTOpenProvider");
    decltype(&PTCloseProvider) close = Find<decltype(&PTCloseProvider)>("PTCloseProvider");
    decltype(&PTMergeAndValidatePrintTicket) merge =
        Find<decltype(&PTMergeAndValidatePrintTicket)>("PTMergeAndValidatePrintTicket");

    Provider() = default;
    Provider(const Provider&) = delete;
    Provider& operator=(const Provider&) = delete;
    ~Provider() { FreeLibrary(module); }

    template <typename Function>
    [[nodiscard]] Function Find(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    }
};

ComPtr<IStream> StreamOf(const std::string& text) {
    ComPtr<IStream> stream;
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()))) return stream;
    ULONG written = 0;
    static_cast<void>(stream->Write(text.data(), static_cast<ULONG>(text.size()), &written));
    static_cast<void>(stream->Seek({}, STREAM_SEEK_SET, nullptr));
    return stream;
}

std::string TextOf(IStream& stream) {
    std::string text;
    static_cast<void>(stream.Seek({}, STREAM_SEEK_SET, nullptr));
    std::array<char, 4096> block{};
    for (ULONG count = 1; count != 0;) {
        if (FAILED(stream.Read(block.data(), static_cast<ULONG>(block.size()), &count))) break;
        text.append(block.data(), count);
    }
    return text;
}

// An end flag that comes by itself counts as a failure.
HRESULT ReadFull(IFixedPage* pPage) {
    ComPtr<IPrintReadStream> stream;
    HRESULT hr = pPage->GetStream(stream.Put());
    std::array<char, 1024> block{};
    for (BOOL isEnd = FALSE; SUCCEEDED(hr) && !isEnd;) {
        ULONG count = 0;
        hr = stream->ReadBytes(block.data(), static_cast<ULONG>(block.size()), &count, &isEnd);
        if (SUCCEEDED(hr) && count == 0) hr = E_FAIL;
    }
    return hr;
}

// Throws where the word is not in the ticket.
HRESULT FindInTicket(IPartPrintTicket* pTicket) {
    ComPtr<IPrintReadStream> stream;
    std::string text;
    HRESULT hr = pTicket->GetStream(stream.Put());
    if (SUCCEEDED(hr)) hr = ReadAll(stream.Get(), text);
    if (SUCCEEDED(hr)) static_cast<void>(text.substr(text.find("PrintTicket")));
    return hr;
}

// A line that is none of the host's into the pipe of the host, whose handle ends the command line.
void WriteToHost() {
    const std::wstring line = GetCommandLineW();
    const auto number = std::wcstoull(line.substr(line.rfind(L' ') + 1).c_str(), nullptr, 10);
    DWORD written = 0;
    WriteFile(reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(number)), "paper\n", 6, &written, nullptr);
}

}  // namespace

HRESULT STDMETHODCALLTYPE TestFilter::QueryInterface(REFIID iid, void** ppObject) {
    if (ModeIs("answer-any-query") && ppObject != nullptr)
        return ComIdentity::QueryInterface(__uuidof(IPrintPipelineFilter), ppObject);
    return ComIdentity::QueryInterface(iid, ppObject);
}

TestFilter::~TestFilter() {
    if (Is("thread-bound") && m_thread != GetCurrentThreadId()) *static_cast<volatile int*>(nullptr) = 1;
}

HRESULT TestFilter::PresumeOfStreams() {
    if (Is("trust-streams")) {
        m_reader->AddRef();
        m_reader->Release();
        m_writer->AddRef();
        m_writer->Release();
    }
    return m_reader && m_writer ? S_OK : E_POINTER;
}

HRESULT TestFilter::PresumeOfJob() {
    if (Is("insist-on-apartment")) {
        const HRESULT entered = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        if (FAILED(entered)) return entered;
        CoUninitialize();
    }
    if (Is("trust-driver")) {
        platform::Variant driver;
        static_cast<void>(m_bag->GetProperty(L"DriverPropertyBag", driver.Put()));
        driver.Unknown()->AddRef();
        driver.Unknown()->Release();
    }
    if (Is("write-to-host")) WriteToHost();
    if (Is("one-at-a-time")) {
        // Long enough for another one to begin.
        const bool isAlone = ++g_atWork == 1;
        Sleep(200);
        --g_atWork;
        return isAlone ? S_OK : E_FAIL;
    }
    const bool isOfPrinter = Is("one-printer") || Is("trust-property") || Is("close-provider-twice") ||
                             Is("provider-failure-unsaid") || Is("trust-provider");
    return isOfPrinter ? PresumeOfPrinter() : S_OK;
}

HRESULT TestFilter::PresumeOfPrinter() {
    platform::Variant printer;
    const HRESULT hr = m_bag->GetProperty(L"PrinterName", printer.Put());
    const bool isWanted = Is("one-printer") || Is("trust-property");
    if (FAILED(hr) || printer.Text() == nullptr) return isWanted ? E_FAIL : S_OK;
    if (Is("one-printer")) return std::wstring_view(printer.Text()) == L"SimPrinter" ? S_OK : E_FAIL;
    return Is("trust-property") ? S_OK : UseProvider(printer.Text());
}

HRESULT TestFilter::UseProvider(const wchar_t* printer) {
    const Provider provider;
    HPTPROVIDER handle = nullptr;
    HRESULT hr = provider.open(printer, 1, &handle);
    if (FAILED(hr)) return hr;
    if (Is("trust-provider")) {
        const std::string ticket =
            "<psf:PrintTicket xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/"
            "printschemaframework\" version=\"1\"/>";
        const ComPtr<IStream> result = StreamOf({});
        hr = provider.merge(handle, StreamOf(ticket).Get(), StreamOf(ticket).Get(), kPTJobScope, result.Get(),
                            nullptr);
        const std::string text = SUCCEEDED(hr) ? TextOf(*result.Get()) : ticket;
        static_cast<void>(provider.close(handle));
        // Throws where it stands otherwise.
        static_cast<void>(text.substr(text.find("<psf:PrintTicket")));
        return hr;
    }
    static_cast<void>(provider.close(handle));
    if (Is("close-provider-twice")) static_cast<void>(provider.close(handle));
    return S_OK;
}

bool TestFilter::LeavesUnsaid(HRESULT hr) const {
    return FAILED(hr) && (Is("provider-failure-unsaid") || Is("trust-property"));
}

HRESULT TestFilter::PresumeOfSequence(IFixedDocumentSequence* pSequence) {
    ComPtr<IPartPrintTicket> ticket;
    if (!Is("trust-job-ticket") || FAILED(pSequence->GetPrintTicket(ticket.Put())) || !ticket) return S_OK;
    return FindInTicket(ticket.Get());
}

HRESULT TestFilter::PresumeOfPage(IFixedPage* pPage) {
    if (Is("tires") && m_pages > 150) return E_FAIL;
    if (Is("full-reads")) return ReadFull(pPage);
    if (Is("trust-markup")) {
        ComPtr<IPrintReadStream> stream;
        std::string markup;
        HRESULT hr = pPage->GetStream(stream.Put());
        if (SUCCEEDED(hr)) hr = ReadAll(stream.Get(), markup);
        if (SUCCEEDED(hr)) static_cast<void>(markup.substr(markup.find('<')));
        return hr;
    }
    ComPtr<IPartPrintTicket> ticket;
    if (Is("trust-ticket") && SUCCEEDED(pPage->GetPrintTicket(ticket.Put()))) {
        ticket->AddRef();
        ticket->Release();
    }
    if (Is("trust-page-ticket") && SUCCEEDED(pPage->GetPrintTicket(ticket.Put())) && ticket)
        return FindInTicket(ticket.Get());
    return S_OK;
}

}  // namespace testfilter
