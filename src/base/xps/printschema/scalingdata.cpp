#include "base/xps/printschema/scalingdata.h"

#include <source_location>
#include <stdexcept>
#include <string>
#include <utility>

#include "base/logging/check.h"
#include "platform/comptr.h"
#include "platform/inorder.h"

namespace base::xps::printschema {

using logging::ThrowIfFailed;
using platform::ComPtr;
using platform::InOrder;

namespace {

[[nodiscard]] bool IsCustom(std::int32_t option) noexcept {
    return option == ScalingData::Custom || option == ScalingData::CustomSquare;
}

// Reads the scored properties of one option.
class ValueReader {
  public:
    ValueReader(const PrintSchemaHandler& handler, IXMLDOMNode* pOption) noexcept
        : m_handler(handler), m_pOption(pOption) {}

    [[nodiscard]] std::int32_t Read(
        const wchar_t* name, const std::source_location& where = std::source_location::current()) const {
        std::int32_t value = 0;
        const Qname property = {SchemaNamespace::Keywords, name};
        ThrowIfFailed(m_handler.ReadInteger(m_pOption, PropertyKind::Scored, property, &value), where);
        return value;
    }

  private:
    const PrintSchemaHandler& m_handler;
    IXMLDOMNode* m_pOption;
};

// Writes scored properties into one feature's option, each with its value as a parameter of the ticket.
class ParameterWriter {
  public:
    ParameterWriter(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, std::wstring feature)
        : m_handler(handler), m_pOption(pOption), m_feature(std::move(feature)) {}

    void Write(const wchar_t* name, std::int32_t value) const { ThrowIfFailed(TryWrite(name, value)); }

  private:
    [[nodiscard]] HRESULT TryWrite(const wchar_t* name, std::int32_t value) const {
        const Qname property = {SchemaNamespace::Keywords, name};
        ComPtr<IXMLDOMElement> pReference;
        ComPtr<IXMLDOMElement> pInitializer;
        ComPtr<IXMLDOMElement> pProperty;
        ComPtr<IXMLDOMNode> pAppended;
        return InOrder(
            [&] {
                return m_handler.CreateIntegerParameter(m_feature + name, value, pReference.Put(),
                                                        pInitializer.Put());
            },
            [&] { return m_handler.CreateScoredProperty(property, pProperty.Put()); },
            [&] { return pProperty->appendChild(pReference.Get(), pAppended.Put()); },
            [&] { return m_pOption->appendChild(pProperty.Get(), pAppended.Put()); },
            [&] { return m_handler.AppendToRoot(pInitializer.Get()); });
    }

    const PrintSchemaHandler& m_handler;
    IXMLDOMElement* m_pOption;
    std::wstring m_feature;
};

}  // namespace

ScalingData::ScalingData() : PrintTicketFunctionOption(0, FitApplicationMediaSizeToPageMediaSize) {}

Scope ScalingData::GetScope() const { return ScopeOfSingleName(); }

std::uint32_t ScalingData::FeatureIndexOfScope(Scope scope) const { return IndexOfSingleName(scope); }

const SchemaBase& ScalingData::GetFeatureNames() const { return PageScalingFeatureNames::Instance(); }

const SchemaBase& ScalingData::GetOptionNames() const { return PageScalingOptionNames::Instance(); }

void ScalingData::OnRead(const PrintSchemaHandler& handler, const Qname&, IXMLDOMNode* pOption) {
    const std::int32_t option = GetOptionId();
    if (!IsCustom(option)) {
        // The heights keep what they held.
        m_offset.width = 0;
        m_scale.width = 0;
        return;
    }
    const ValueReader reader(handler, pOption);
    Pair offset;
    offset.width = reader.Read(L"OffsetWidth");
    offset.height = reader.Read(L"OffsetHeight");
    Pair scale;
    if (option == Custom) {
        scale.width = reader.Read(L"ScaleWidth");
        scale.height = reader.Read(L"ScaleHeight");
    } else {
        scale.width = scale.height = reader.Read(L"Scale");
    }
    m_offset = offset;
    m_scale = scale;
}

void ScalingData::OnWrite(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, Scope scope) const {
    const std::int32_t option = GetOptionId();
    if (!IsCustom(option)) return;
    const ParameterWriter writer(handler, pOption, GetFeatureName(scope).localName);
    writer.Write(L"OffsetWidth", m_offset.width);
    writer.Write(L"OffsetHeight", m_offset.height);
    if (option == Custom) {
        writer.Write(L"ScaleWidth", m_scale.width);
        writer.Write(L"ScaleHeight", m_scale.height);
        return;
    }
    if (m_scale.height != m_scale.width)
        logging::Throw<std::logic_error>("CustomSquare needs same values of Width and Height.");
    writer.Write(L"Scale", m_scale.width);
}

}  // namespace base::xps::printschema
