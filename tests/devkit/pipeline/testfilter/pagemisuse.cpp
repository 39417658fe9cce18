#include <algorithm>
#include <array>
#include <string>

#include "platform/bstr.h"
#include "platform/variant.h"
#include "testfilter.h"

namespace testfilter {
namespace {

using platform::Bstr;
using platform::ComPtr;

// The tickets of the modes, as what stands between the tags of the root where nothing else is said.
struct BadTicket {
    const char* mode;
    const char* content;
};
constexpr std::array kBadTickets{
    BadTicket{"ticket:no-xml", "<"},
    BadTicket{"ticket:twice",
              "<psf:Feature name=\"psk:PageX\"><psf:Option/></psf:Feature>"
              "<psf:Feature name=\"psk:PageX\"><psf:Option/></psf:Feature>"},
    BadTicket{"ticket:two-prefixes",
              "<psf:Feature name=\"psk:PageX\"><psf:Option/></psf:Feature>"
              "<psf:Feature name=\"ns0:PageX\"><psf:Option/></psf:Feature>"},
    BadTicket{"ticket:bare-name", "<psf:Feature name=\"PageX\"><psf:Option/></psf:Feature>"},
    BadTicket{"ticket:misplaced", "<psf:Option name=\"psk:PageX\"/>"},
    BadTicket{"ticket:no-option", "<psf:Feature name=\"psk:PageX\"/>"},
    BadTicket{"ticket:no-value", "<psf:ParameterInit name=\"psk:PageX\"/>"},
    BadTicket{"ticket:no-integer",
              "<psf:ParameterInit name=\"psk:PageX\"><psf:Value xsi:type=\"xsd:integer\">wide</psf:Value>"
              "</psf:ParameterInit>"},
    BadTicket{"ticket:no-scope", "<psf:Feature name=\"psk:X\"><psf:Option/></psf:Feature>"},
    BadTicket{
        "ticket:foreign-sheet",
        "<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:BusinessCard\"/></psf:Feature>"},
    BadTicket{"ticket:huge-sheet",
              "<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:CustomMediaSize\">"
              "<psf:ScoredProperty name=\"psk:MediaSizeWidth\"><psf:Value xsi:type=\"xsd:integer\">9000000"
              "</psf:Value></psf:ScoredProperty>"
              "<psf:ScoredProperty name=\"psk:MediaSizeHeight\"><psf:Value xsi:type=\"xsd:integer\">9000000"
              "</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>"},
};

std::string TicketOf(const std::string& mode) {
    const auto bad = std::ranges::find(kBadTickets, mode, &BadTicket::mode);
    return "<psf:PrintTicket xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/"
           "printschemaframework\" xmlns:psk=\"http://schemas.microsoft.com/windows/2003/08/printing/"
           "printschemakeywords\" xmlns:ns0=\"http://schemas.microsoft.com/windows/2003/08/printing/"
           "printschemakeywords\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
           "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" version=\"1\">" +
           std::string(bad == kBadTickets.end() ? "" : bad->content) + "</psf:PrintTicket>";
}

// What one call gives, as if that were always all.
HRESULT ReadOnce(IPrintReadStream* pStream, std::string& text) {
    text.resize(std::size_t{1} << 20);
    ULONG count = 0;
    BOOL isEnd = FALSE;
    const HRESULT hr = pStream->ReadBytes(text.data(), static_cast<ULONG>(text.size()), &count, &isEnd);
    text.resize(count);
    return hr;
}

void ReplaceFirst(std::string& text, const std::string& what, const std::string& with) {
    if (const std::size_t place = text.find(what); place != std::string::npos)
        text.replace(place, what.size(), with);
}

}  // namespace

HRESULT TestFilter::MisuseResources(IFixedPage* pPage) {
    if (Is("delete-unknown")) return pPage->DeleteResource(L"/nowhere.png");
    if (Is("delete-used")) return m_pages == 1 ? DeleteFont(pPage) : S_OK;
    if (Is("overwrite-property"))
        return m_bag->AddProperty(L"PrinterName", &platform::Variant(L"mine").Get());
    if (Is("delete-property")) return m_bag->DeleteProperty(L"PrinterHandle") ? S_OK : E_FAIL;
    if (Is("part-unclosed") || Is("foreign-part") || Is("bare-font")) return MisuseParts(pPage);
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

HRESULT TestFilter::MisuseParts(IFixedPage* pPage) {
    if (Is("foreign-part")) return pPage->SetPagePart(m_bag.Get());
    ComPtr<IPartFont> font;
    ComPtr<IPrintWriteStream> stream;
    HRESULT hr =
        m_writer->GetNewEmptyPart(L"/plain.odttf", __uuidof(IPartFont), font.PutVoid(), stream.Put());
    if (FAILED(hr)) return hr;
    if (Is("bare-font")) {
        stream->Close();
        if (hr = font->SetFontOptions(Font_Obfusticate); FAILED(hr)) return hr;
    }
    hr = pPage->SetPagePart(font.Get());
    if (!Is("bare-font")) stream->Close();
    return hr;
}

// Takes the page's first font from it.
HRESULT TestFilter::DeleteFont(IFixedPage* pPage) {
    ComPtr<IXpsPartIterator> parts;
    HRESULT hr = pPage->GetXpsPartIterator(parts.Put());
    for (; SUCCEEDED(hr) && !parts->IsDone(); parts->Next()) {
        Bstr name;
        ComPtr<IUnknown> part;
        ComPtr<IPartFont> font;
        hr = parts->Current(name.Put(), part.Put());
        if (SUCCEEDED(hr) && SUCCEEDED(part.QueryTo(font))) return pPage->DeleteResource(name.Get());
    }
    return FAILED(hr) ? hr : E_FAIL;
}

HRESULT TestFilter::MisuseThumbnail(IXpsDocument* pDocument) {
    if (Is("foreign-thumbnail"))
        return pDocument->SetThumbnail(static_cast<IPartThumbnail*>(static_cast<void*>(m_bag.Get())));
    ComPtr<IPartThumbnail> thumbnail;
    ComPtr<IPrintWriteStream> stream;
    HRESULT hr =
        m_writer->GetNewEmptyPart(L"/small.png", __uuidof(IPartThumbnail), thumbnail.PutVoid(), stream.Put());
    if (SUCCEEDED(hr)) hr = pDocument->SetThumbnail(thumbnail.Get());
    if (stream) stream->Close();
    return hr;
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
        hr = WriteAll(stream.Get(), TicketOf(m_mode));
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
    if (SUCCEEDED(hr)) hr = Is("read-once") ? ReadOnce(reader.Get(), markup) : ReadAll(reader.Get(), markup);
    if (FAILED(hr)) return hr;
    if (Is("blank-page")) {
        const std::size_t content = markup.find('>', markup.find("<FixedPage"));
        if (content != std::string::npos) markup = markup.substr(0, content + 1) + "</FixedPage>";
    } else if (Is("write-time")) {
        ReplaceFirst(markup, "</FixedPage>", "<!-- " + std::to_string(GetTickCount64()) + " --></FixedPage>");
    } else if (Is("break-markup")) {
        markup.resize(markup.size() / 2);
    } else if (Is("no-width")) {
        ReplaceFirst(markup, "Width=", "Breadth=");
    } else if (Is("no-height")) {
        ReplaceFirst(markup, "Height=", "Tallness=");
    } else if (Is("name-unrelated")) {
        ReplaceFirst(
            markup, "</FixedPage>",
            "<Path><Path.Fill><ImageBrush ImageSource=\"/nowhere.png\"/></Path.Fill></Path></FixedPage>");
    } else {
        ReplaceFirst(markup, "Width=\"816\"", "Width=\"1056\"");
        ReplaceFirst(markup, "Height=\"1056\"", "Height=\"816\"");
    }
    if (Is("rewrite-long")) markup += "<!-- " + std::string(std::size_t{6} << 20, 'x') + " -->";
    ULONG written = 0;
    hr = Is("write-once") ? writer->WriteBytes(markup.data(), static_cast<ULONG>(markup.size()), &written)
                          : WriteAll(writer.Get(), markup);
    if (!Is("rewrite-unclosed")) writer->Close();
    return hr;
}

}  // namespace testfilter
