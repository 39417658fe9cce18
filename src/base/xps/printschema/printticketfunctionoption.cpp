#include "base/xps/printschema/printticketfunctionoption.h"

#include <optional>
#include <utility>

#include "base/logging/check.h"
#include "base/logging/exceptions.h"
#include "platform/bstr.h"
#include "platform/comptr.h"

namespace base::xps::printschema {

using exception::InvalidFeatureIdError;
using exception::InvalidOptionIdError;
using exception::NotSupportedException;
using logging::Throw;
using logging::ThrowIfFailed;
using platform::ComPtr;

namespace {

struct Selection {
    Qname feature;
    Qname option;
    ComPtr<IXMLDOMNode> pOption;
};

// The first feature of the list, in the list's order, for which the ticket selects an option.
[[nodiscard]] std::optional<Selection> FindSelection(const PrintSchemaHandler& handler,
                                                     const SchemaBase& features, const SchemaBase& options) {
    for (const Qname& feature : features.GetQnames()) {
        for (const SchemaNamespace space : options.GetNamespaces()) {
            platform::Bstr option;
            ComPtr<IXMLDOMNode> pOption;
            if (SUCCEEDED(handler.GetOption(feature, space, option.Put(), pOption.Put())))
                return Selection{feature, {space, std::wstring(option.View())}, std::move(pOption)};
        }
    }
    return std::nullopt;
}

void RequireSupported(Scope scope) {
    if (scope < Scope::Job || scope > Scope::Page)
        Throw<NotSupportedException>("this scope is not supported in this feature.");
}

}  // namespace

bool PrintTicketFunctionOption::IsSpecified(IXMLDOMDocument2* pTicket) const {
    const PrintTicketHandler handler(pTicket);
    return FindSelection(handler, GetFeatureNames(), GetOptionNames()).has_value();
}

void PrintTicketFunctionOption::Read(IXMLDOMDocument2* pTicket) { ReadFrom(PrintTicketHandler(pTicket)); }

void PrintTicketFunctionOption::ReadFrom(const PrintTicketHandler& ticket) {
    const std::optional<Selection> selection = FindSelection(ticket, GetFeatureNames(), GetOptionNames());
    if (!selection) return;
    const std::uint32_t option = GetOptionNames().IndexOf(selection->option);
    if (option == SchemaBase::kNotFound) return;
    SetFeatureId(static_cast<std::int32_t>(GetFeatureNames().IndexOf(selection->feature)));
    SetOptionId(static_cast<std::int32_t>(option));
    OnRead(ticket, selection->feature, selection->pOption.Get());
}

void PrintTicketFunctionOption::Write(IXMLDOMDocument2* pTicket, Scope scope) const {
    WriteTo(PrintTicketHandler(pTicket), scope);
}

void PrintTicketFunctionOption::WriteTo(const PrintTicketHandler& handler, Scope scope) const {
    const Qname feature = GetFeatureName(scope);
    const Qname option = GetOptionName();
    // As a keyword, whatever the feature's own namespace. A feature that stays is not worth failing for.
    static_cast<void>(handler.RemoveFeature({SchemaNamespace::Keywords, feature.localName}));
    ComPtr<IXMLDOMElement> pFeature;
    ComPtr<IXMLDOMElement> pOption;
    ThrowIfFailed(handler.CreateFeatureOption(feature, option, pFeature.Put(), pOption.Put()));
    OnWrite(handler, pOption.Get(), scope);
    ThrowIfFailed(handler.AppendToRoot(pFeature.Get()));
}

void PrintTicketFunctionOption::Remove(IXMLDOMDocument2* pTicket) const {
    const PrintTicketHandler handler(pTicket);
    for (const Qname& feature : GetFeatureNames().GetQnames())
        static_cast<void>(handler.RemoveFeature(feature));
}

void PrintTicketFunctionOption::Write(IXMLDOMDocument2* pTicket) const { Write(pTicket, GetScope()); }

Qname PrintTicketFunctionOption::GetFeatureName() const {
    return GetFeatureNames().GetQname(static_cast<std::uint32_t>(GetFeatureId()));
}

Qname PrintTicketFunctionOption::GetFeatureName(Scope scope) const {
    return GetFeatureNames().GetQname(FeatureIndexOfScope(scope));
}

Qname PrintTicketFunctionOption::GetOptionName() const {
    return GetOptionNames().GetQname(static_cast<std::uint32_t>(GetOptionId()));
}

std::int32_t PrintTicketFunctionOption::GetFeatureId() const {
    if (m_featureId < 0) Throw<InvalidFeatureIdError>("feature id has not set yet.");
    return m_featureId;
}

std::int32_t PrintTicketFunctionOption::GetOptionId() const {
    if (!IsSet()) Throw<InvalidOptionIdError>("option id has not set yet or invalid feature id has set.");
    return m_optionId;
}

void PrintTicketFunctionOption::SetFeatureId(std::int32_t id) { m_featureId = id; }

void PrintTicketFunctionOption::SetOptionId(std::int32_t id) { m_optionId = id; }

void PrintTicketFunctionOption::OnRead(const PrintSchemaHandler&, const Qname&, IXMLDOMNode*) {}

void PrintTicketFunctionOption::OnWrite(const PrintSchemaHandler&, IXMLDOMElement*, Scope) const {}

void PrintTicketFunctionOption::AppendIntegerProperty(const PrintSchemaHandler& handler, IXMLDOMNode* pParent,
                                                      std::wstring_view name, std::int32_t value,
                                                      SchemaNamespace space) {
    ComPtr<IXMLDOMElement> pProperty;
    ThrowIfFailed(handler.CreateIntegerProperty({space, std::wstring(name)}, value, pProperty.Put()));
    ComPtr<IXMLDOMNode> pAppended;
    ThrowIfFailed(pParent->appendChild(pProperty.Get(), pAppended.Put()));
}

Scope PrintTicketFunctionOption::ScopeOfThreeNames() const {
    try {
        switch (GetFeatureId()) {
            case 0:
                return Scope::Job;
            case 1:
                return Scope::Document;
            case 2:
                return Scope::Page;
            default:
                return Scope::None;
        }
    } catch (const InvalidFeatureIdError&) {
        return Scope::None;
    }
}

Scope PrintTicketFunctionOption::ScopeOfSingleName() const {
    try {
        return GetFeatureId() == 0 ? Scope::Page : Scope::None;
    } catch (const InvalidFeatureIdError&) {
        return Scope::None;
    }
}

std::uint32_t PrintTicketFunctionOption::IndexOfThreeNames(Scope scope) {
    RequireSupported(scope);
    return static_cast<std::uint32_t>(scope) - static_cast<std::uint32_t>(Scope::Job);
}

std::uint32_t PrintTicketFunctionOption::IndexOfSingleName(Scope scope) {
    RequireSupported(scope);
    return 0;
}

}  // namespace base::xps::printschema
