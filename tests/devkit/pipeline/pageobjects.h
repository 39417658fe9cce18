#pragma once

#include "devkit/pipeline/documentconsumer.h"
#include "devkit/pipeline/documentprovider.h"
#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {

// The objects of the sample job, as a filter gets them.
class PartsTest : public PipelineTest {
  protected:
    // Part N of the job, counted from 1.
    platform::ComPtr<IUnknown> PartNumber(unsigned number, std::shared_ptr<JobInput> job = SampleJob()) {
        const auto provider = MakeObject<DocumentProvider>(
            Context(), std::make_shared<JobParts>(std::move(job)), std::vector<ExtraPart>(), nullptr);
        platform::ComPtr<IUnknown> part;
        for (unsigned i = 0; i < number; ++i) EXPECT_EQ(S_OK, provider->GetXpsPart(part.Put()));
        return part;
    }
    template <typename Interface>
    platform::ComPtr<Interface> PartNumberAs(unsigned number) {
        platform::ComPtr<Interface> part;
        EXPECT_EQ(S_OK, PartNumber(number).QueryTo(part));
        return part;
    }
    platform::ComPtr<IXpsDocument> XpsDocument() { return PartNumberAs<IXpsDocument>(1); }
    platform::ComPtr<IFixedDocumentSequence> Sequence() { return PartNumberAs<IFixedDocumentSequence>(2); }
    platform::ComPtr<IFixedDocument> FirstDocument() { return PartNumberAs<IFixedDocument>(3); }
    platform::ComPtr<IFixedPage> FirstPage() { return PartNumberAs<IFixedPage>(4); }
    platform::ComPtr<IFixedPage> SecondPage() { return PartNumberAs<IFixedPage>(5); }

    // A new part of the interface's kind, its stream closed after `bytes` were written.
    template <typename Interface>
    platform::ComPtr<Interface> NewPart(const wchar_t* uri, const std::string& bytes) {
        platform::ComPtr<Interface> part;
        platform::ComPtr<IPrintWriteStream> stream;
        const auto consumer = MakeObject<DocumentConsumer>(Context());
        EXPECT_EQ(S_OK, consumer->GetNewEmptyPart(uri, __uuidof(Interface), part.PutVoid(), stream.Put()));
        ULONG count = 0;
        EXPECT_EQ(S_OK, stream->WriteBytes(bytes.data(), static_cast<ULONG>(bytes.size()), &count));
        stream->Close();
        return part;
    }
};

// The name of the ticket, "(none)" for E_ELEMENT_NOT_FOUND.
template <typename Ticketed>
std::wstring TicketNameOf(Ticketed& part) {
    platform::ComPtr<IPartPrintTicket> ticket;
    const HRESULT hr = part.GetPrintTicket(ticket.Put());
    if (hr == E_ELEMENT_NOT_FOUND) return L"(none)";
    return FAILED(hr) ? L"(failed)" : UriOf(ticket.Get());
}

}  // namespace devkit::pipeline
