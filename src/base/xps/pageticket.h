#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <source_location>
#include <string>
#include <string_view>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"

// The print ticket part of a page: its document, and the name of a new one.
namespace base::xps {

// std::invalid_argument for a null stream, HresultError with E_FAIL for a ticket that is not well formed and
// with the failing call's own code otherwise. The messages name the caller's source.
[[nodiscard]] platform::ComPtr<IXMLDOMDocument2> LoadPageTicket(
    IPrintReadStream* pReader, const std::source_location& where = std::source_location::current());

// The ticket without any feature that a page gets which has none. It is parsed once and copied for each page;
// what it keeps of it belongs to the apartment in which the first copy was made. HresultError for a failing
// call.
class EmptyTicket {
  public:
    [[nodiscard]] platform::ComPtr<IXMLDOMDocument2> Copy();
    void Release() noexcept { m_pParsed.Reset(); }

  private:
    platform::ComPtr<IXMLDOMDocument2> m_pParsed;
};

// Writes the document; the stream stays open. What the document says of the writing is not looked at.
// std::invalid_argument when either is null; the message names the caller's source.
void SaveTicket(IXMLDOMDocument2* pDOMDocument, IPrintWriteStream* pWriter,
                const std::source_location& where = std::source_location::current());

// The name of the ticket that replaces the one of the given name: its folder, a backslash whatever separator
// the old name has, and its file name behind "pagevalidator_" and the number. A name without a separator is
// folder and file name both.
[[nodiscard]] std::wstring NewTicketName(std::wstring_view oldName, std::int32_t number);

// 1, 2, 3 and so on: never the same number twice in a process, on whatever thread.
[[nodiscard]] std::int32_t NextTicketNumber() noexcept;

}  // namespace base::xps
