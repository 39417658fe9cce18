#include "base/xps/fixedpagevalidator.h"

#include <algorithm>
#include <limits>
#include <string>

#include "base/logging/check.h"
#include "base/xps/fixedpagecontenthandler.h"
#include "base/xps/fixedpagesaxconvertor.h"
#include "base/xps/pageticket.h"
#include "base/xps/printschema/mediasizetable.h"
#include "platform/bstr.h"

namespace base::xps {

using platform::ComPtr;
using printschema::InputBinData;
using printschema::MediaSizeData;
using printschema::PageOrientationData;
using printschema::ScalingData;
using printschema::Scope;

namespace {

// Without its fraction, and within what a ticket can state.
std::int32_t ToPercent(double factor) noexcept {
    constexpr double kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(factor * 100, kMost));
}

}  // namespace

FixedPageValidator::FixedPageValidator(printschema::PrintTicketProvider& provider,
                                       IXpsDocumentConsumer* pXpsDocuConsumer, IFixedPage* pPage,
                                       const InputBinData& feedDirection, const MediaSizeData& mediaSize,
                                       const PageOrientationData& pageOrientation,
                                       const ScalingData& pageScaling,
                                       const printschema::PrintableMediaSizeData& printableMediaSize)
    : m_feedDirection(feedDirection),
      m_mediaSize(mediaSize),
      m_pageOrientation(pageOrientation),
      m_pageScaling(pageScaling),
      m_printableRange(printableMediaSize.GetRange()),
      m_pXpsDocuConsumer(pXpsDocuConsumer),
      m_pPage(pPage) {
    logging::ThrowIfNull(pXpsDocuConsumer, "pXpsDocuConsumer is null.");
    logging::ThrowIfNull(pPage, "pPage is null.");
    m_fallback = MediaSizeData::SelectPrintableMediaSize(provider, m_printableRange, Scope::Document);
    NormalizeOrientation();
}

void FixedPageValidator::Validate() {
    const bool mustTurn = MustTurn();
    if (mustTurn) m_mediaSize.Rotate();
    const bool isOutOfRange = !m_printableRange.Contains(m_mediaSize.GetSize());
    if (isOutOfRange) UseFallbackMedia();
    if (mustTurn || isOutOfRange) RewriteTicket();
    if (mustTurn) FixedPageSaxConvertor().Convert(*this);
}

ComPtr<IPrintReadStream> FixedPageValidator::GetPageReadStream() {
    ComPtr<IPrintReadStream> stream;
    logging::ThrowIfFailed(m_pPage->GetStream(stream.Put()));
    if (!stream) logging::ThrowHresult(E_POINTER);
    return stream;
}

ComPtr<IPrintWriteStream> FixedPageValidator::GetPageWriteStream() {
    ComPtr<IPrintWriteStream> stream;
    logging::ThrowIfFailed(m_pPage->GetWriteStream(stream.Put()));
    if (!stream) logging::ThrowHresult(E_POINTER);
    return stream;
}

ComPtr<ISAXContentHandler> FixedPageValidator::CreateContentHandler(std::ostream& sink) {
    constexpr float kAngle = 270;
    constexpr float kScale = 1;
    return ComPtr<ISAXContentHandler>::Adopt(new FixedPageContentHandler(sink, kAngle, kScale));
}

void FixedPageValidator::NormalizeOrientation() {
    if (!m_pageOrientation.IsSet()) return;
    const std::int32_t orientation = m_pageOrientation.GetOptionId();
    if (orientation != PageOrientationData::Landscape &&
        orientation != PageOrientationData::ReverseLandscape) {
        return;
    }
    m_mediaSize.Rotate();
    m_pageOrientation.SetOptionId(PageOrientationData::Next(orientation));
}

bool FixedPageValidator::MustTurn() const noexcept {
    switch (m_feedDirection.GetFeedDirection()) {
        case InputBinData::LongEdgeFirst:
            return m_mediaSize.IsPortrait();
        case InputBinData::ShortEdgeFirst:
            return m_mediaSize.IsLandscape();
        default:
            return false;
    }
}

void FixedPageValidator::UseFallbackMedia() {
    if (m_pageScaling.GetOptionId() == ScalingData::FitApplicationMediaSizeToPageMediaSize) {
        const std::int32_t percent =
            ToPercent(printschema::MediaScaleFactor(m_mediaSize.GetSize(), m_fallback, m_pImageableArea));
        m_pageScaling.SetOptionId(ScalingData::Custom);
        m_pageScaling.SetOffset({0, 0});
        m_pageScaling.SetScale({percent, percent});
    }
    // The catalogue's size, which for a custom sheet is 0 x 0 and not the fallback's own.
    m_mediaSize.SetFromRecord(*printschema::MediaSizeTable::Instance().ById(m_fallback.id));
}

void FixedPageValidator::RewriteTicket() {
    ComPtr<IXMLDOMDocument2> document;
    std::wstring oldName = L".xml";
    ComPtr<IPartPrintTicket> oldTicket;
    // Some pipelines fail for a page without a ticket, others succeed with none.
    const HRESULT found = m_pPage->GetPrintTicket(oldTicket.Put());
    if (SUCCEEDED(found) && oldTicket) {
        ComPtr<IPrintReadStream> reader;
        logging::ThrowIfFailed(oldTicket->GetStream(reader.Put()));
        document = LoadPageTicket(reader.Get());
        platform::Bstr uri;
        logging::ThrowIfFailed(oldTicket->GetUri(uri.Put()));
        oldName = uri.View();
        logging::ThrowIfFailed(m_pPage->DeleteResource(oldName.c_str()));
    } else {
        EmptyTicket own;
        document = (m_pEmptyTicket != nullptr ? m_pEmptyTicket : &own)->Copy();
    }

    {
        const printschema::PrintTicketHandler ticket(document.Get());
        m_mediaSize.WriteTo(ticket, Scope::Page);
        m_pageOrientation.WriteTo(ticket, Scope::Page);
        m_pageScaling.WriteTo(ticket, Scope::Page);
    }

    const std::wstring newName = NewTicketName(oldName, NextTicketNumber());
    ComPtr<IPartPrintTicket> newTicket;
    ComPtr<IPrintWriteStream> writer;
    logging::ThrowIfFailed(m_pXpsDocuConsumer->GetNewEmptyPart(newName.c_str(), __uuidof(IPartPrintTicket),
                                                               newTicket.PutVoid(), writer.Put()));
    SaveTicket(document.Get(), writer.Get());
    writer->Close();
    logging::ThrowIfFailed(m_pPage->SetPrintTicket(newTicket.Get()));
}

}  // namespace base::xps
