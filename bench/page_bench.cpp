#include <benchmark/benchmark.h>

#include <string>

#include "base/logging/check.h"
#include "base/xml/xmlutility.h"
#include "base/xps/filterpipeline/defaultprinttickets.h"
#include "base/xps/fixedpagevalidator.h"
#include "base/xps/printschema/privateprefix.h"
#include "mockparts.h"
#include "mockpipeline.h"
#include "platform/bstr.h"

namespace bench {
namespace {

using base::logging::ThrowIfFailed;
using platform::ComPtr;
using tests::MakeMock;
namespace printschema = base::xps::printschema;

// What a user's default ticket says beside the printer's own default.
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
constexpr char kPageTicket[] =
    R"(<?xml version="1.0" encoding="UTF-8"?><psf:PrintTicket version="1")"
    R"( xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework")"
    R"( xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords">)"
    R"(<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Portrait"/></psf:Feature>)"
    R"(<psf:Feature name="psk:PageOutputColor"><psf:Option name="psk:Color"/></psf:Feature>)"
    R"(</psf:PrintTicket>)";

// A job that has come to a page with a ticket of its own, on a sheet that the printer takes as it is.
class Job {
  public:
    Job() {
        printschema::SetPrivatePrefix(L"krk");
        m_defaultTicket = base::xml::LoadDomFromString(base::xps::filterpipeline::DefaultPrintTicketText(7));
        const platform::Bstr printer(L"Printer");
        const auto userTicket = MakeMock<tests::MockReadStream>(m_calls, kUserTicket);
        ThrowIfFailed(m_provider.Open(userTicket.Get(), printer.Get(), nullptr));
        ThrowIfFailed(m_provider.SetJobTicket(
            MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/s").Get(), m_defaultTicket.Get()));
        ThrowIfFailed(m_provider.SetDocumentTicket(MakeMock<tests::MockFixedDocument>(m_calls, L"/d").Get(),
                                                   m_defaultTicket.Get()));
    }

    void Merge() {
        ThrowIfFailed(m_provider.SetPageTicket(m_page.Get(), m_defaultTicket.Get()));
        m_calls.Clear();
    }

    void ReadSettings() {
        ComPtr<IXMLDOMDocument2> ticket;
        ThrowIfFailed(m_provider.GetTicket(kPTPageScope, ticket.Put()));
        m_pageScaling.Read(ticket.Get());
        m_feedDirection.Read(ticket.Get());
        m_mediaSize.Read(ticket.Get());
        m_pageOrientation.Read(ticket.Get());
        m_printableMediaSize.Read(ticket.Get());
    }

    void Decide() {
        base::xps::FixedPageValidator(m_provider, m_consumer.Get(), m_page.Get(), m_feedDirection,
                                      m_mediaSize, m_pageOrientation, m_pageScaling, m_printableMediaSize)
            .Validate();
    }

    [[nodiscard]] bool IsUnchanged() const { return m_consumer->NewParts().empty(); }

  private:
    tests::CallRecorder m_calls;
    printschema::PrintTicketProvider m_provider;
    ComPtr<IXMLDOMDocument2> m_defaultTicket;
    ComPtr<tests::MockFixedPage> m_page = MakeMock<tests::MockFixedPage>(
        m_calls, L"/p", "<FixedPage/>",
        ComPtr<IPartPrintTicket>(MakeMock<tests::MockPrintTicket>(m_calls, L"/t", kPageTicket).Get()));
    ComPtr<tests::MockDocumentConsumer> m_consumer = MakeMock<tests::MockDocumentConsumer>(m_calls);
    printschema::ScalingData m_pageScaling;
    printschema::InputBinData m_feedDirection;
    printschema::MediaSizeData m_mediaSize;
    printschema::PageOrientationData m_pageOrientation;
    printschema::PrintableMediaSizeData m_printableMediaSize;
};

void PageMerge(benchmark::State& state) {
    Job job;
    for (auto _ : state) job.Merge();
}

void PageSettings(benchmark::State& state) {
    Job job;
    job.Merge();
    for (auto _ : state) job.ReadSettings();
}

void PageDecision(benchmark::State& state) {
    Job job;
    job.Merge();
    job.ReadSettings();
    for (auto _ : state) job.Decide();
    if (!job.IsUnchanged()) state.SkipWithError("the page was to need nothing");
}

BENCHMARK(PageMerge)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(PageSettings)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(PageDecision)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
}  // namespace bench
