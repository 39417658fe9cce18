#include "testfilter.h"

#include <string>

namespace testfilter {
namespace {

using platform::ComPtr;

HRESULT ReadAll(IPrintReadStream* pStream, std::string& text) {
    text.clear();
    for (BOOL end = FALSE; !end;) {
        char block[4096];
        ULONG count = 0;
        if (const HRESULT hr = pStream->ReadBytes(block, sizeof(block), &count, &end); FAILED(hr)) return hr;
        text.append(block, count);
    }
    return S_OK;
}

void ReplaceFirst(std::string& text, const std::string& what, const std::string& with) {
    if (const std::size_t place = text.find(what); place != std::string::npos)
        text.replace(place, what.size(), with);
}

}  // namespace

HRESULT TestFilter::MisuseResources(IFixedPage* pPage) {
    if (Is("delete-unknown")) return pPage->DeleteResource(L"/nowhere.png");
    if (Is("null-page")) return m_writer->SendFixedPage(nullptr);
    if (Is("null-part")) return pPage->SetPagePart(nullptr);
    if (Is("own-ticket"))
        return pPage->SetPrintTicket(static_cast<IPartPrintTicket*>(static_cast<void*>(m_bag.Get())));
    if (Is("read-null") || Is("read-to-nowhere")) return Misread(pPage);
    if (Is("write-null") || Is("write-from-nowhere") || Is("write-after-close") || Is("close-stream-twice") ||
        Is("two-write-streams")) {
        return Miswrite(pPage);
    }
    if (Is("unused-part")) {
        ComPtr<IPartPrintTicket> ticket;
        ComPtr<IPrintWriteStream> stream;
        const HRESULT hr = m_writer->GetNewEmptyPart(L"/unused.xml", __uuidof(IPartPrintTicket),
                                                     ticket.PutVoid(), stream.Put());
        if (SUCCEEDED(hr)) stream->Close();
        return hr;
    }
    if (Is("null-name")) {
        ComPtr<IPartPrintTicket> ticket;
        ComPtr<IPrintWriteStream> stream;
        return m_writer->GetNewEmptyPart(nullptr, __uuidof(IPartPrintTicket), ticket.PutVoid(), stream.Put());
    }
    if (Is("unused-open-part")) {
        ComPtr<IPartPrintTicket> ticket;
        ComPtr<IPrintWriteStream> stream;
        return m_writer->GetNewEmptyPart(L"/unused.xml", __uuidof(IPartPrintTicket), ticket.PutVoid(),
                                         stream.Put());
    }
    if (Is("new-sequence")) {
        ComPtr<IFixedDocumentSequence> sequence;
        ComPtr<IPrintWriteStream> stream;
        return m_writer->GetNewEmptyPart(L"/new.fdseq", __uuidof(IFixedDocumentSequence), sequence.PutVoid(),
                                         stream.Put());
    }
    return S_OK;
}

HRESULT TestFilter::Misread(IFixedPage* pPage) {
    ComPtr<IPrintReadStream> stream;
    HRESULT hr = pPage->GetStream(stream.Put());
    if (FAILED(hr)) return hr;
    ULONG count = 0;
    BOOL end = FALSE;
    void* const pNowhere = reinterpret_cast<void*>(Is("read-null") ? 0 : 16);
    return stream->ReadBytes(pNowhere, 10, &count, &end);
}

HRESULT TestFilter::Miswrite(IFixedPage* pPage) {
    ComPtr<IPrintWriteStream> stream;
    ComPtr<IPrintWriteStream> second;
    HRESULT hr = pPage->GetWriteStream(stream.Put());
    if (FAILED(hr)) return hr;
    ULONG count = 0;
    if (Is("write-null")) hr = stream->WriteBytes(nullptr, 10, &count);
    if (Is("write-from-nowhere")) hr = stream->WriteBytes(reinterpret_cast<void*>(16), 10, &count);
    if (Is("two-write-streams")) hr = pPage->GetWriteStream(second.Put());
    stream->Close();
    if (Is("write-after-close")) hr = stream->WriteBytes("x", 1, &count);
    if (Is("close-stream-twice")) stream->Close();
    return hr;
}

HRESULT TestFilter::WriteTicket(IFixedPage* pPage) {
    const std::wstring name = L"/Tickets\\made_" + std::to_wstring(m_pages) + L".xml";
    ComPtr<IPartPrintTicket> ticket;
    ComPtr<IPrintWriteStream> stream;
    HRESULT hr =
        m_writer->GetNewEmptyPart(name.c_str(), __uuidof(IPartPrintTicket), ticket.PutVoid(), stream.Put());
    if (SUCCEEDED(hr)) {
        hr = WriteAll(stream.Get(),
                      "<psf:PrintTicket xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/"
                      "printschemaframework\" version=\"1\"/>");
    }
    if (FAILED(hr)) return hr;
    if (!Is("ticket-unclosed")) stream->Close();
    return pPage->SetPrintTicket(ticket.Get());
}

HRESULT TestFilter::RewriteMarkup(IFixedPage* pPage) {
    ComPtr<IPrintReadStream> reader;
    ComPtr<IPrintWriteStream> writer;
    std::string markup;
    HRESULT hr = pPage->GetStream(reader.Put());
    if (SUCCEEDED(hr)) hr = pPage->GetWriteStream(writer.Put());
    if (SUCCEEDED(hr)) hr = ReadAll(reader.Get(), markup);
    if (FAILED(hr)) return hr;
    if (Is("break-markup")) {
        markup.resize(markup.size() / 2);
    } else {
        ReplaceFirst(markup, "Width=\"816\"", "Width=\"1056\"");
        ReplaceFirst(markup, "Height=\"1056\"", "Height=\"816\"");
    }
    hr = WriteAll(writer.Get(), markup);
    if (!Is("rewrite-unclosed")) writer->Close();
    return hr;
}

}  // namespace testfilter
