#include "base/xps/printschema/inputbindata.h"

#include "base/logging/check.h"
#include "platform/bstr.h"
#include "platform/comptr.h"

namespace base::xps::printschema {

using logging::ThrowIfFailed;
using platform::ComPtr;

namespace {

const Qname& FeedDirectionName() {
    static const Qname kName = {SchemaNamespace::Keywords, L"FeedDirection"};
    return kName;
}

}  // namespace

InputBinData::InputBinData() : PrintTicketFunctionOption(0, 0) {}

Scope InputBinData::GetScope() const { return ScopeOfThreeNames(); }

std::uint32_t InputBinData::FeatureIndexOfScope(Scope scope) const { return IndexOfThreeNames(scope); }

const SchemaBase& InputBinData::GetFeatureNames() const { return InputBinFeatureNames::Instance(); }

const SchemaBase& InputBinData::GetOptionNames() const { return InputBinOptionNames::Instance(); }

void InputBinData::OnRead(const PrintSchemaHandler& handler, const Qname&, IXMLDOMNode* pOption) {
    platform::Bstr direction;
    if (FAILED(handler.ReadLocalName(pOption, PropertyKind::Scored, FeedDirectionName(), direction.Put())))
        return;
    const std::uint32_t id = FeedDirectionOptionNames::Instance().IndexOf(SchemaNamespace::Keywords,
                                                                          std::wstring(direction.View()));
    if (id != SchemaBase::kNotFound) m_feedDirection = static_cast<std::int32_t>(id);
}

void InputBinData::OnWrite(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, Scope) const {
    if (!HasFeedDirection()) return;
    const Qname& direction =
        FeedDirectionOptionNames::Instance().GetQname(static_cast<std::uint32_t>(m_feedDirection));
    ComPtr<IXMLDOMElement> pProperty;
    ThrowIfFailed(handler.CreateScoredPropertyWithValue(
        FeedDirectionName(), L"QName", handler.GetPrefix(SchemaNamespace::Keywords) + direction.localName,
        pProperty.Put()));
    ComPtr<IXMLDOMNode> pAppended;
    ThrowIfFailed(pOption->appendChild(pProperty.Get(), pAppended.Put()));
}

}  // namespace base::xps::printschema
