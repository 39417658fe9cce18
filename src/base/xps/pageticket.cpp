#include "base/xps/pageticket.h"

#include <atomic>

#include "base/io/printreadstreamtoistream.h"
#include "base/io/printwritestreamtoistream.h"
#include "base/logging/check.h"
#include "base/logging/log.h"
#include "base/xml/xmlutility.h"
#include "base/xps/printschema/schemabase.h"
#include "base/xps/printschema/ticketdocument.h"
#include "platform/variant.h"

namespace base::xps {

using platform::ComPtr;

namespace {

[[nodiscard]] ComPtr<IXMLDOMDocument2> ParseEmptyTicket() {
    return xml::LoadDomFromString(logging::Format(
        LR"(<?xml version="1.0" encoding="UTF-8" ?><psf:PrintTicket version="1" xmlns:xsd="%s" xmlns:xsi="%s")"
        LR"( xmlns:psf="%s" xmlns:psk="%s"></psf:PrintTicket>)",
        printschema::kXmlSchemaNamespace, printschema::kXmlSchemaInstanceNamespace,
        printschema::kFrameworkNamespace, printschema::kKeywordsNamespace));
}

}  // namespace

ComPtr<IXMLDOMDocument2> LoadPageTicket(IPrintReadStream* pReader, const std::source_location& where) {
    logging::ThrowIfNull(pReader, "pReader is null.", where);
    const ComPtr<IStream> stream = io::CreatePrintReadStreamToIStream(pReader);
    ComPtr<IXMLDOMDocument2> document;
    logging::ThrowIfFailed(printschema::LoadTicketFromHere(stream.Get(), document), where);
    return document;
}

ComPtr<IXMLDOMDocument2> EmptyTicket::Copy() {
    if (!m_pParsed) m_pParsed = ParseEmptyTicket();
    ComPtr<IXMLDOMNode> pClone;
    ComPtr<IXMLDOMDocument2> pCopy;
    logging::ThrowIfFailed(m_pParsed->cloneNode(VARIANT_TRUE, pClone.Put()));
    logging::ThrowIfFailed(pClone.QueryTo(pCopy));
    return pCopy;
}

void SaveTicket(IXMLDOMDocument2* pDOMDocument, IPrintWriteStream* pWriter,
                const std::source_location& where) {
    logging::ThrowIfNull(pDOMDocument, "pDOMDocument is null.", where);
    logging::ThrowIfNull(pWriter, "pWriter is null.", where);
    const ComPtr<IStream> stream = io::CreatePrintWriteStreamToIStream(pWriter);
    static_cast<void>(pDOMDocument->save(platform::Variant(stream.Get()).Get()));
}

std::wstring NewTicketName(std::wstring_view oldName, std::int32_t number) {
    const std::size_t separator = oldName.find_last_of(L"/\\");
    const bool isSplit = separator != std::wstring_view::npos;
    const std::wstring folder(isSplit ? oldName.substr(0, separator) : oldName);
    const std::wstring fileName(isSplit ? oldName.substr(separator + 1) : oldName);
    return folder + L"\\" + logging::Format(L"pagevalidator_%d_%s", number, fileName.c_str());
}

std::int32_t NextTicketNumber() noexcept {
    static std::atomic<std::int32_t> s_last = 0;
    return ++s_last;
}

}  // namespace base::xps
