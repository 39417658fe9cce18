#include "bench/pagejob.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "base/logging/check.h"
#include "base/xml/xmlutility.h"
#include "base/xps/filterpipeline/defaultprinttickets.h"
#include "pagevalidatefilter/pagevalidatexpsfilter.h"
#include "platform/prntvpt.h"
#include "platform/variant.h"

namespace bench {
namespace {

using base::logging::ThrowIfFailed;
using platform::ComPtr;
using tests::MakeMock;
using Clock = std::chrono::steady_clock;

// What a user's default ticket says beside the printer's own default: A4, which the printer takes as it is.
constexpr char kUserTicket[] =
    R"(<?xml version="1.0" encoding="UTF-8"?><psf:PrintTicket version="1" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance")"
    R"( xmlns:xsd="http://www.w3.org/2001/XMLSchema")"
    R"( xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework")"
    R"( xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords">)"
    R"(<psf:Feature name="psk:PageMediaSize"><psf:Option name="psk:ISOA4">)"
    R"(<psf:ScoredProperty name="psk:MediaSizeHeight"><psf:Value xsi:type="xsd:integer">297000</psf:Value>)"
    R"(</psf:ScoredProperty><psf:ScoredProperty name="psk:MediaSizeWidth">)"
    R"(<psf:Value xsi:type="xsd:integer">210000</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>)"
    R"(<psf:Feature name="psk:JobInputBin"><psf:Option name="psk:AutoSelect">)"
    R"(<psf:ScoredProperty name="psk:FeedDirection"><psf:Value xsi:type="xsd:QName">psk:ShortEdgeFirst</psf:Value>)"
    R"(</psf:ScoredProperty></psf:Option></psf:Feature>)"
    R"(<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Portrait"/></psf:Feature>)"
    R"(<psf:Feature name="psk:JobDuplexAllDocumentsContiguously"><psf:Option name="psk:OneSided"/></psf:Feature>)"
    R"(</psf:PrintTicket>)";

std::string PageTicket(const char* color) {
    return std::string(
               R"(<?xml version="1.0" encoding="UTF-8"?><psf:PrintTicket version="1")"
               R"( xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework")"
               R"( xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords">)"
               R"(<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Portrait"/></psf:Feature>)"
               R"(<psf:Feature name="psk:PageOutputColor"><psf:Option name="psk:)") +
           color + R"("/></psf:Feature></psf:PrintTicket>)";
}

ComPtr<IXMLDOMDocument2> LoadFrom(IStream* pStream) {
    ComPtr<IXMLDOMDocument2> document;
    ThrowIfFailed(CoCreateInstance(platform::CLSID_DomDocument60, nullptr, CLSCTX_ALL,
                                   __uuidof(IXMLDOMDocument2), document.PutVoid()));
    ThrowIfFailed(document->put_async(VARIANT_FALSE));
    VARIANT_BOOL wellFormed = VARIANT_FALSE;
    ThrowIfFailed(document->load(platform::Variant(static_cast<IUnknown*>(pStream)).Get(), &wellFormed));
    if (wellFormed != VARIANT_TRUE) throw std::runtime_error("a ticket is not well-formed");
    return document;
}

ComPtr<IStream> EmptyStream() {
    ComPtr<IStream> stream;
    ThrowIfFailed(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()));
    return stream;
}

void ToStart(IStream* pStream) { ThrowIfFailed(pStream->Seek({}, STREAM_SEEK_SET, nullptr)); }

ComPtr<IXMLDOMDocument2> LoadTicket(IPartPrintTicket* pTicket) {
    ComPtr<IPrintReadStream> source;
    ThrowIfFailed(pTicket->GetStream(source.Put()));
    const ComPtr<IStream> bytes = EmptyStream();
    for (BOOL end = FALSE; !end;) {
        std::array<char, 4096> block;
        ULONG count = 0;
        ThrowIfFailed(source->ReadBytes(block.data(), static_cast<ULONG>(block.size()), &count, &end));
        ThrowIfFailed(bytes->Write(block.data(), count, nullptr));
    }
    ToStart(bytes.Get());
    return LoadFrom(bytes.Get());
}

ComPtr<IStream> StreamOn(IXMLDOMDocument2* pDocument) {
    ComPtr<IStream> stream;
    ThrowIfFailed(pDocument->QueryInterface(__uuidof(IStream), stream.PutVoid()));
    ToStart(stream.Get());
    return stream;
}

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

PageJob::PageJob(int pages, PageTickets tickets)
    : m_pageCount(pages),
      m_reader(MakeMock<tests::MockDocumentProvider>(m_calls)),
      m_writer(MakeMock<tests::MockDocumentConsumer>(m_calls)) {
    m_reader->Add(MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/s").Get());
    m_reader->Add(MakeMock<tests::MockFixedDocument>(m_calls, L"/d").Get());
    for (int page = 0; page < pages; ++page) {
        ComPtr<IPartPrintTicket> ticket;
        if (tickets != PageTickets::None) {
            const bool other = tickets == PageTickets::Other && page % 2 != 0;
            ticket = ComPtr<IPartPrintTicket>(
                MakeMock<tests::MockPrintTicket>(m_calls, L"/t", PageTicket(other ? "Monochrome" : "Color"))
                    .Get());
        }
        m_reader->Add(MakeMock<tests::MockFixedPage>(m_calls, L"/p", "<FixedPage/>", ticket).Get());
    }
}

double PageJob::RunFilter() {
    const auto communicator = MakeMock<tests::MockCommunicator>(m_calls);
    communicator->SetReader(m_reader.Get());
    communicator->SetWriter(m_writer.Get());
    const auto driverBag = MakeMock<tests::MockPrinterPropertyBag>(m_calls);
    driverBag->SetText(L"KoraNsPrefix", L"krk");
    const auto bag = MakeMock<tests::MockPropertyBag>(m_calls);
    bag->SetObject(L"DriverPropertyBag", driverBag.Get());
    bag->SetObject(L"PerUserPrintTicket", MakeMock<tests::MockReadStreamFactory>(m_calls, kUserTicket).Get());
    bag->SetText(L"PrinterName", L"Printer");
    bag->SetHandle(L"UserSecurityToken", m_user.get());
    const auto control = MakeMock<tests::MockPipelineControl>(m_calls);
    const auto filter = ComPtr<pagevalidatefilter::PageValidateXpsFilter>::Adopt(
        new pagevalidatefilter::PageValidateXpsFilter());
    ThrowIfFailed(filter->InitializeFilter(communicator.Get(), bag.Get(), control.Get()));

    const auto start = Clock::now();
    ThrowIfFailed(filter->StartOperation());
    const double seconds = SecondsSince(start);
    if (m_writer->Sent().size() != static_cast<std::size_t>(m_pageCount) + 2 || !m_writer->NewParts().empty())
        throw std::runtime_error("the pages were to be sent as they are");
    return seconds;
}

double PageJob::RunBare() {
    const auto userTicket = MakeMock<tests::MockPrintTicket>(m_calls, L"/t", kUserTicket);
    const ComPtr<IXMLDOMDocument2> wider = LoadTicket(userTicket.Get());
    const auto start = Clock::now();
    for (;;) {
        ComPtr<IUnknown> part;
        ThrowIfFailed(m_reader->GetXpsPart(part.Put()));
        if (!part) break;
        ComPtr<IFixedPage> page;
        if (SUCCEEDED(part.QueryTo(page))) Carry(page.Get(), wider.Get());
    }
    const double seconds = SecondsSince(start);
    if (m_writer->Sent().size() != static_cast<std::size_t>(m_pageCount))
        throw std::runtime_error("the pages were to be sent");
    return seconds;
}

void PageJob::Carry(IFixedPage* pPage, IXMLDOMDocument2* pWider) {
    ComPtr<IPartPrintTicket> ticket;
    const HRESULT found = pPage->GetPrintTicket(ticket.Put());
    if (found != E_ELEMENT_NOT_FOUND) {
        ThrowIfFailed(found);
        const ComPtr<IXMLDOMDocument2> own = LoadTicket(ticket.Get());
        const ComPtr<IStream> result = EmptyStream();
        ThrowIfFailed(PTMergeAndValidatePrintTicket(
            nullptr, StreamOn(pWider).Get(), StreamOn(own.Get()).Get(), kPTPageScope, result.Get(), nullptr));
        ToStart(result.Get());
        static_cast<void>(LoadFrom(result.Get()));
    }
    ThrowIfFailed(m_writer->SendFixedPage(pPage));
}

}  // namespace bench
