#include "base/xps/fixedpagesaxconvertor.h"

#include <ostream>

#include "base/io/printwritestreambuffer.h"
#include "base/logging/check.h"
#include "base/xps/blockstreambuffer.h"
#include "base/xps/sequentialreadstream.h"
#include "platform/variant.h"

namespace base::xps {
namespace {

using platform::ComPtr;

ComPtr<ISAXXMLReader> CreateReader() {
    ComPtr<ISAXXMLReader> reader;
    logging::ThrowIfFailed(CoCreateInstance(platform::CLSID_SaxXmlReader60, nullptr, CLSCTX_ALL,
                                            __uuidof(ISAXXMLReader), reader.PutVoid()));
    return reader;
}

// The reader keeps a reference to its handler, and may itself be kept by the system: the handler must not
// outlive the sink that it writes to.
class InstalledHandler {
  public:
    InstalledHandler(ISAXXMLReader& reader, ISAXContentHandler* pHandler) : m_reader(reader) {
        logging::ThrowIfFailed(reader.putContentHandler(pHandler));
    }
    InstalledHandler(const InstalledHandler&) = delete;
    InstalledHandler& operator=(const InstalledHandler&) = delete;
    ~InstalledHandler() { m_reader.putContentHandler(nullptr); }

  private:
    ISAXXMLReader& m_reader;
};

}  // namespace

void FixedPageSaxConvertor::Convert(FixedPageSource& source) const {
    const ComPtr<ISAXXMLReader> reader = CreateReader();

    const ComPtr<IPrintWriteStream> writeStream = source.GetPageWriteStream();
    io::PrintWriteStreamBuffer streamBuffer(writeStream.Get());
    BlockStreamBuffer blocks(streamBuffer);
    std::ostream sink(&blocks);

    const ComPtr<ISAXContentHandler> handler = source.CreateContentHandler(sink);
    const InstalledHandler installed(*reader.Get(), handler.Get());

    const ComPtr<IPrintReadStream> readStream = source.GetPageReadStream();
    const auto input = ComPtr<ISequentialStream>::Adopt(new SequentialReadStream(readStream));
    const HRESULT parsed = reader->parse(platform::Variant(input.Get()).Get());
    // The handler ends the elements that are open when it goes, but a page that failed gets no more text.
    if (FAILED(parsed)) sink.setstate(std::ios_base::failbit);
    logging::ThrowIfFailed(parsed);

    blocks.pubsync();
    writeStream->Close();
    // What stands behind the page's old markup is the page's business; a stream that cannot go back has been
    // read all the same.
    readStream->Seek(0, STREAM_SEEK_SET, nullptr);
}

}  // namespace base::xps
