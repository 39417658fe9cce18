#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <string_view>

#include "base/xps/printschema/printschema.h"
#include "base/xps/printschema/printschemahandler.h"
#include "platform/msxml6.h"

namespace base::xps::printschema {

// One feature of print tickets and the option selected for it, each known by its index in a keyword list; a
// negative id is not set. A value of its own: nothing of a ticket is kept between two operations.
//
// An operation on a ticket throws HresultError when the document is no ticket that binds the print schema's
// namespaces to prefixes. A derived class names its lists and scopes and adds what its option carries.
class PrintTicketFunctionOption {
  public:
    // Whether the ticket selects an option of this feature, known or not.
    [[nodiscard]] virtual bool IsSpecified(IXMLDOMDocument2* pTicket) const;
    // Takes feature and option from the ticket: the first name of the feature list that has an option. When
    // there is none, or it is not in the option list, everything stays as it was.
    virtual void Read(IXMLDOMDocument2* pTicket);
    // The same for several features of one ticket in turn, whose prefixes are then looked up once.
    void ReadFrom(const PrintTicketHandler& ticket);
    // Writes the feature, under its name for the scope, with the current option behind everything else in the
    // ticket. A keyword feature of that name is removed before; a private one is not.
    virtual void Write(IXMLDOMDocument2* pTicket, Scope scope) const;
    // The same for several features of one ticket in turn.
    void WriteTo(const PrintTicketHandler& ticket, Scope scope) const;
    // Removes the feature under all its names. Features that cannot be removed stay.
    virtual void Remove(IXMLDOMDocument2* pTicket) const;
    // Writes for the scope that GetScope tells.
    virtual void Write(IXMLDOMDocument2* pTicket) const;

    [[nodiscard]] virtual Qname GetFeatureName() const;
    [[nodiscard]] virtual Qname GetFeatureName(Scope scope) const;
    [[nodiscard]] virtual Qname GetOptionName() const;
    // InvalidFeatureIdError when it is not set.
    [[nodiscard]] virtual std::int32_t GetFeatureId() const;
    // InvalidOptionIdError when it, or the feature id, is not set.
    [[nodiscard]] virtual std::int32_t GetOptionId() const;
    virtual void SetFeatureId(std::int32_t id);
    virtual void SetOptionId(std::int32_t id);

    // Whether GetOptionId has an answer.
    [[nodiscard]] bool IsSet() const noexcept { return m_featureId >= 0 && m_optionId >= 0; }

    // None when the feature id is not set or is of no scope.
    [[nodiscard]] virtual Scope GetScope() const = 0;
    // NotSupportedException for a scope without a name in the feature list.
    [[nodiscard]] virtual std::uint32_t FeatureIndexOfScope(Scope scope) const = 0;
    [[nodiscard]] virtual const SchemaBase& GetFeatureNames() const = 0;
    [[nodiscard]] virtual const SchemaBase& GetOptionNames() const = 0;

  protected:
    PrintTicketFunctionOption(std::int32_t featureId, std::int32_t optionId) noexcept
        : m_featureId(featureId), m_optionId(optionId) {}
    PrintTicketFunctionOption(const PrintTicketFunctionOption&) = default;
    PrintTicketFunctionOption& operator=(const PrintTicketFunctionOption&) = default;

    // After feature and option were read. What is stated below the node belongs to the selected option.
    virtual void OnRead(const PrintSchemaHandler& handler, const Qname& featureName, IXMLDOMNode* pOption);
    // After the feature with its option was built, before it is put into the ticket.
    virtual void OnWrite(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, Scope scope) const;

    // The scope rules of the two families of features: those with a name for each scope and those with one
    // name, which belongs to the page but may stand in a ticket of any scope.
    [[nodiscard]] Scope ScopeOfThreeNames() const;
    [[nodiscard]] Scope ScopeOfSingleName() const;
    [[nodiscard]] static std::uint32_t IndexOfThreeNames(Scope scope);
    [[nodiscard]] static std::uint32_t IndexOfSingleName(Scope scope);

    // Appends a Property with an integer value. HresultError for a failing DOM call.
    static void AppendIntegerProperty(const PrintSchemaHandler& handler, IXMLDOMNode* pParent,
                                      std::wstring_view name, std::int32_t value, SchemaNamespace space);

  public:
    virtual ~PrintTicketFunctionOption() = default;

  private:
    std::int32_t m_featureId;
    std::int32_t m_optionId;
};

}  // namespace base::xps::printschema
