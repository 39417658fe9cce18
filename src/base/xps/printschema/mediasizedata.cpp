#include "base/xps/printschema/mediasizedata.h"

#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "base/logging/check.h"
#include "base/logging/exceptions.h"
#include "base/xps/printschema/privateprefix.h"
#include "platform/comptr.h"

namespace base::xps::printschema {

using logging::Throw;
using logging::ThrowIfFailed;
using platform::ComPtr;

namespace {

const Qname kHeightName = {SchemaNamespace::Keywords, L"MediaSizeHeight"};
const Qname kWidthName = {SchemaNamespace::Keywords, L"MediaSizeWidth"};

void AppendLength(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, const Qname& name,
                  std::int32_t micrometres) {
    ComPtr<IXMLDOMElement> pProperty;
    ThrowIfFailed(handler.CreateIntegerScoredProperty(name, micrometres, pProperty.Put()));
    ComPtr<IXMLDOMNode> pAppended;
    ThrowIfFailed(pOption->appendChild(pProperty.Get(), pAppended.Put()));
}

// By the user's locale, which counts as metric when it cannot be asked. Any setting but exactly "1" means the
// metric system.
[[nodiscard]] bool IsUserLocaleMetric() noexcept {
    wchar_t setting[2] = {};
    const int length =
        GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_IMEASURE, setting, static_cast<int>(std::size(setting)));
    return length == 0 || std::wstring_view(setting) != L"1";
}

[[nodiscard]] MediaSizeOption UsualMediaSize() {
    const std::int32_t id =
        IsUserLocaleMetric() ? MediaSizeSchema::ISOA4 : MediaSizeSchema::NorthAmericaLetter;
    return *MediaSizeTable::Instance().ById(id);
}

// Of the scope's effective ticket, which is read once for as long as it stays what it is.
[[nodiscard]] TicketMedia MediaOf(PrintTicketProvider& provider, Scope scope) {
    const EPrintTicketScope ticketScope = ToPrintTicketScope(scope);
    std::wstring privatePrefix = PrivatePrefix();
    const TicketMedia* const pKept = provider.KeptMedia(ticketScope);
    if (pKept != nullptr && pKept->privatePrefix == privatePrefix) return *pKept;
    ComPtr<IXMLDOMDocument2> pTicket;
    ThrowIfFailed(provider.ReadTicket(ticketScope, pTicket.Put()));
    MediaSizeData mediaSize;
    mediaSize.Read(pTicket.Get());
    TicketMedia media = {std::move(privatePrefix), mediaSize.GetSize(), mediaSize.ToRecord()};
    provider.KeepMedia(ticketScope, media);
    return media;
}

}  // namespace

MediaSizeData::MediaSizeData() : PrintTicketFunctionOption(0, MediaSizeSchema::ISOA4) {
    MediaSizeData::SetOptionId(MediaSizeSchema::ISOA4);
}

MediaSizeData::MediaSizeData(const MediaSizeOption& record) : PrintTicketFunctionOption(0, record.id) {
    MediaSizeData::SetOptionId(record.id);
    SetSize(record.size);
}

void MediaSizeData::SetOptionId(std::int32_t id) {
    if (MediaSizeTable::IsStandardSize(id)) {
        SetSize(MediaSizeTable::Instance().ById(id)->size);
    } else {
        PrintTicketFunctionOption::SetOptionId(id);
    }
}

Scope MediaSizeData::GetScope() const { return ScopeOfSingleName(); }

std::uint32_t MediaSizeData::FeatureIndexOfScope(Scope scope) const { return IndexOfSingleName(scope); }

const SchemaBase& MediaSizeData::GetFeatureNames() const { return PageMediaSizeFeatureNames::Instance(); }

const SchemaBase& MediaSizeData::GetOptionNames() const { return MediaSizeOptionNames::Instance(); }

std::int32_t MediaSizeData::OptionIdOrUnknown() const {
    try {
        return GetOptionId();
    } catch (const exception::InvalidOptionIdError&) {
        return MediaSizeSchema::OptionUnknown;
    }
}

std::int32_t MediaSizeData::FeatureIdOrUnknown() const {
    try {
        return GetFeatureId();
    } catch (const exception::InvalidFeatureIdError&) {
        return MediaSizeSchema::OptionUnknown;
    }
}

void MediaSizeData::SetSize(const MediaDimensions& size) {
    const std::int32_t found = MediaSizeTable::Instance().BySize(size)->id;
    if (MediaSizeTable::IsStandardSize(found)) {
        PrintTicketFunctionOption::SetOptionId(found);
    } else if (found == MediaSizeSchema::OptionUnknown) {
        const std::int32_t current = OptionIdOrUnknown();
        if (current == MediaSizeSchema::OptionUnknown || MediaSizeTable::IsStandardSize(current)) {
            PrintTicketFunctionOption::SetOptionId(MediaSizeSchema::CustomMediaSize);
        }
    }
    m_size = size;
}

void MediaSizeData::Rotate() { SetSize({m_size.height, m_size.width}); }

void MediaSizeData::SetFromRecord(const MediaSizeOption& record) {
    SetFeatureId(0);
    PrintTicketFunctionOption::SetOptionId(record.id);
    SetSize(record.size);
}

MediaSizeOption MediaSizeData::ToRecord() const {
    const MediaSizeTable& table = MediaSizeTable::Instance();
    const std::int32_t id = OptionIdOrUnknown();
    const MediaSizeTable::Record& row = table.ById(id);
    if (MediaSizeTable::IsStandardSize(id)) return *row;
    const bool isKnown = row->id != MediaSizeSchema::OptionUnknown;
    MediaSizeOption record = isKnown ? *row : *table.ById(MediaSizeSchema::CustomMediaSize);
    record.size = m_size;
    return record;
}

MediaSizeOption MediaSizeData::SelectPrintableMediaSize(PrintTicketProvider& provider,
                                                        const PrintableMediaRange& range, Scope start) {
    for (const Scope scope : {Scope::Page, Scope::Document, Scope::Job}) {
        if (scope > start) continue;
        const TicketMedia media = MediaOf(provider, scope);
        if (range.Contains(media.size)) return media.record;
    }
    MediaSizeOption usual = UsualMediaSize();
    if (range.Contains(usual.size)) return usual;
    MediaSizeData smallest;
    smallest.SetOptionId(MediaSizeSchema::CustomMediaSize);
    smallest.SetSize(range.minimum);
    return smallest.ToRecord();
}

void MediaSizeData::OnRead(const PrintSchemaHandler& handler, const Qname&, IXMLDOMNode* pOption) {
    MediaDimensions size;
    const HRESULT height = handler.ReadInteger(pOption, PropertyKind::Scored, kHeightName, &size.height);
    const HRESULT width = handler.ReadInteger(pOption, PropertyKind::Scored, kWidthName, &size.width);
    if (SUCCEEDED(height) && SUCCEEDED(width)) {
        m_size = size;
        return;
    }
    const std::int32_t id = OptionIdOrUnknown();
    if (!MediaSizeTable::IsStandardSize(id)) {
        Throw<std::runtime_error>("Unexpected print ticket format. informations lack.");
    }
    m_size = MediaSizeTable::Instance().ById(id)->size;
}

void MediaSizeData::OnWrite(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, Scope) const {
    const std::int32_t id = OptionIdOrUnknown();
    if (MediaSizeTable::IsStandardSize(id) && MediaSizeTable::Instance().ById(id)->size != m_size) {
        Throw<std::runtime_error>("unexpected paper size was specified.");
    }
    AppendLength(handler, pOption, kHeightName, m_size.height);
    AppendLength(handler, pOption, kWidthName, m_size.width);
}

}  // namespace base::xps::printschema
