#pragma once

#include "platform/windows.h"

#include <cstdint>

#include "base/xps/printschema/printticketfunctionoption.h"

namespace base::xps::printschema {

// How a page's content is scaled onto the sheet. The two custom options carry an offset in micrometres and a
// scale in percent, held as the ticket states them.
class ScalingData : public PrintTicketFunctionOption {
  public:
    static constexpr std::int32_t Custom = 0;
    static constexpr std::int32_t CustomSquare = 1;
    static constexpr std::int32_t FitApplicationMediaSizeToPageMediaSize = 5;

    struct Pair {
        std::int32_t width = 0;
        std::int32_t height = 0;

        [[nodiscard]] bool operator==(const Pair&) const = default;
    };

    // FitApplicationMediaSizeToPageMediaSize, all values 0.
    ScalingData();

    [[nodiscard]] Scope GetScope() const override;
    [[nodiscard]] std::uint32_t FeatureIndexOfScope(Scope scope) const override;
    [[nodiscard]] const SchemaBase& GetFeatureNames() const override;
    [[nodiscard]] const SchemaBase& GetOptionNames() const override;

    [[nodiscard]] const Pair& GetOffset() const noexcept { return m_offset; }
    [[nodiscard]] const Pair& GetScale() const noexcept { return m_scale; }
    void SetOffset(const Pair& offset) noexcept { m_offset = offset; }
    void SetScale(const Pair& scale) noexcept { m_scale = scale; }

  protected:
    // An option that is not custom resets the two widths and leaves the two heights. HresultError when a
    // custom option lacks a value or states it as no integer; all values are then as they were.
    void OnRead(const PrintSchemaHandler& handler, const Qname& featureName, IXMLDOMNode* pOption) override;
    // Writes the values of a custom option as parameters, which are put into the ticket at once. HresultError
    // for a failing DOM call, std::logic_error when CustomSquare has two scales; what was written stays.
    void OnWrite(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, Scope scope) const override;

  private:
    Pair m_offset;
    Pair m_scale;
};

}  // namespace base::xps::printschema
