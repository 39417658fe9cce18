#include "bench/glyphpage.h"

#include <algorithm>
#include <cstring>

#include "base/logging/check.h"
#include "base/xps/fixedpagecontenthandler.h"
#include "base/xps/sequentialreadstream.h"
#include "platform/variant.h"

namespace bench {
namespace {

using platform::ComPtr;

// One line of text as office programs print it.
std::string GlyphRun(int line) {
    std::string indices;
    std::string text;
    for (int i = 0; i < 24; ++i) {
        if (i != 0) indices += ';';
        indices += std::to_string(36 + (line * 7 + i * 5) % 90);
        indices += ',';
        indices += std::to_string(20 + (line + i) % 60);
        indices += ".5";
        text += static_cast<char>('a' + (line + i) % 26);
    }
    return R"(<Glyphs Fill="#ff000000" FontUri="/Resources/Fonts/7c3b2a10-5c44-4a8e-9d20-0c6f9f2f1b11.odttf")"
           R"( FontRenderingEmSize="10.08" StyleSimulations="None" OriginX=")" +
           std::to_string(96 + line % 40) + R"(" OriginY=")" + std::to_string(120 + line) +
           R"(.5" BidiLevel="0" Indices=")" + indices + R"(" UnicodeString=")" + text +
           " &amp; caf\xC3\xA9\" xml:lang=\"en-US\" />\r\n";
}

class NothingHandler final : public base::xps::FixedPageSaxHandlerBase {};

}  // namespace

GlyphPageStream::GlyphPageStream(std::uint64_t size)
    : m_head(R"(<FixedPage xmlns="http://schemas.microsoft.com/xps/2005/06" Width="816" Height="1056" )"
             R"(xml:lang="en-US">)"),
      m_tail("</FixedPage>") {
    for (int line = 0; line < 256; ++line) m_body += GlyphRun(line);
    const std::uint64_t bodies = (size + m_body.size() - 1) / m_body.size();
    m_size = m_head.size() + bodies * m_body.size() + m_tail.size();
}

HRESULT STDMETHODCALLTYPE GlyphPageStream::Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) {
    if (offset != 0 || origin != STREAM_SEEK_SET) return E_NOTIMPL;
    m_position = 0;
    if (pNewPosition != nullptr) *pNewPosition = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE GlyphPageStream::ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                                     BOOL* pEndOfFile) {
    const std::uint64_t bodyEnd = m_size - m_tail.size();
    ULONG count = 0;
    while (count < cbWanted && m_position < m_size) {
        const std::string& piece = m_position < m_head.size() ? m_head
                                   : m_position < bodyEnd     ? m_body
                                                              : m_tail;
        const std::uint64_t at = m_position < m_head.size() ? m_position
                                 : m_position < bodyEnd     ? (m_position - m_head.size()) % m_body.size()
                                                            : m_position - bodyEnd;
        const std::size_t part =
            std::min<std::size_t>(cbWanted - count, piece.size() - static_cast<std::size_t>(at));
        std::memcpy(static_cast<char*>(pBuffer) + count, piece.data() + at, part);
        count += static_cast<ULONG>(part);
        m_position += part;
    }
    *pcbRead = count;
    *pEndOfFile = m_position == m_size;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE DiscardingWriteStream::WriteBytes(const void*, ULONG cb, ULONG* pcbWritten) {
    m_written += cb;
    *pcbWritten = cb;
    return S_OK;
}

ComPtr<IPrintReadStream> GlyphPage::GetPageReadStream() { return ComPtr<IPrintReadStream>(&input); }

ComPtr<IPrintWriteStream> GlyphPage::GetPageWriteStream() { return ComPtr<IPrintWriteStream>(&output); }

ComPtr<ISAXContentHandler> GlyphPage::CreateContentHandler(std::ostream& sink) {
    return ComPtr<ISAXContentHandler>::Adopt(new base::xps::FixedPageContentHandler(sink, 270, 1));
}

void ParseOnly(GlyphPageStream& page) {
    ComPtr<ISAXXMLReader> reader;
    base::logging::ThrowIfFailed(CoCreateInstance(platform::CLSID_SaxXmlReader60, nullptr, CLSCTX_ALL,
                                                  __uuidof(ISAXXMLReader), reader.PutVoid()));
    const auto handler = ComPtr<ISAXContentHandler>::Adopt(new NothingHandler());
    base::logging::ThrowIfFailed(reader->putContentHandler(handler.Get()));
    const auto input = ComPtr<ISequentialStream>::Adopt(
        new base::xps::SequentialReadStream(ComPtr<IPrintReadStream>(&page)));
    base::logging::ThrowIfFailed(reader->parse(platform::Variant(input.Get()).Get()));
    page.Seek(0, STREAM_SEEK_SET, nullptr);
}

}  // namespace bench
