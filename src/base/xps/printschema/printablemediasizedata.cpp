#include "base/xps/printschema/printablemediasizedata.h"

#include <stdexcept>

#include "base/logging/check.h"

namespace base::xps::printschema {
namespace {

// Both lengths of the option, or neither.
[[nodiscard]] MediaDimensions ReadSize(const PrintSchemaHandler& handler, IXMLDOMNode* pOption,
                                       const wchar_t* widthName, const wchar_t* heightName) {
    MediaDimensions size;
    const auto read = [&](const wchar_t* name, std::int32_t& length) {
        const Qname property = {SchemaNamespace::Private, name};
        return SUCCEEDED(handler.ReadInteger(pOption, PropertyKind::Plain, property, &length));
    };
    const bool isRead = read(widthName, size.width) && read(heightName, size.height);
    return isRead ? size : MediaDimensions();
}

}  // namespace

PrintableMediaSizeData::PrintableMediaSizeData() : PrintTicketFunctionOption(0, 0) {}

Scope PrintableMediaSizeData::GetScope() const { return ScopeOfThreeNames(); }

std::uint32_t PrintableMediaSizeData::FeatureIndexOfScope(Scope scope) const {
    return IndexOfThreeNames(scope);
}

const SchemaBase& PrintableMediaSizeData::GetFeatureNames() const {
    return PrintableMediaSizeFeatureNames::Instance();
}

const SchemaBase& PrintableMediaSizeData::GetOptionNames() const {
    return PrintableMediaSizePropertyNames::Instance();
}

void PrintableMediaSizeData::OnRead(const PrintSchemaHandler& handler, const Qname&, IXMLDOMNode* pOption) {
    m_range.minimum = ReadSize(handler, pOption, L"MinWidth", L"MinHeight");
    m_range.maximum = ReadSize(handler, pOption, L"MaxWidth", L"MaxHeight");
    const bool isInverted =
        m_range.minimum.width > m_range.maximum.width || m_range.minimum.height > m_range.maximum.height;
    if (isInverted) logging::Throw<std::logic_error>("printticket is in invalid state.");
}

void PrintableMediaSizeData::OnWrite(const PrintSchemaHandler& handler, IXMLDOMElement* pOption,
                                     Scope) const {
    const auto append = [&](const wchar_t* name, std::int32_t length) {
        AppendIntegerProperty(handler, pOption, name, length, SchemaNamespace::Private);
    };
    append(L"MinWidth", m_range.minimum.width);
    append(L"MinHeight", m_range.minimum.height);
    append(L"MaxWidth", m_range.maximum.width);
    append(L"MaxHeight", m_range.maximum.height);
}

}  // namespace base::xps::printschema
