#pragma once

#include "platform/windows.h"

#include <cstdint>

#include "base/xps/printschema/mediasizetable.h"
#include "base/xps/printschema/printschema.h"
#include "base/xps/printschema/printticketfunctionoption.h"

namespace base::xps::printschema {

// The sheets that the printer accepts: from the minimum to the maximum, both included, width and height each
// for itself.
struct PrintableMediaRange {
    MediaDimensions minimum;
    MediaDimensions maximum;

    [[nodiscard]] constexpr bool Contains(const MediaDimensions& size) const noexcept {
        return size.height <= maximum.height && size.width <= maximum.width &&
               size.height >= minimum.height && size.width >= minimum.width;
    }
};

// The maker's own feature that states the smallest and the largest sheet that the printer accepts.
class PrintableMediaSizeData : public PrintTicketFunctionOption {
  public:
    // The job's feature, with an empty range.
    PrintableMediaSizeData();

    // In micrometres; no minimum is above its maximum.
    [[nodiscard]] const PrintableMediaRange& GetRange() const noexcept { return m_range; }
    void SetRange(const PrintableMediaRange& range) noexcept { m_range = range; }

    [[nodiscard]] Scope GetScope() const override;
    [[nodiscard]] std::uint32_t FeatureIndexOfScope(Scope scope) const override;
    [[nodiscard]] const SchemaBase& GetFeatureNames() const override;
    [[nodiscard]] const SchemaBase& GetOptionNames() const override;

  protected:
    // A minimum, or a maximum, of which the option does not state both width and height as integers reads as
    // 0 x 0. std::logic_error when a minimum is then above its maximum.
    void OnRead(const PrintSchemaHandler& handler, const Qname& featureName, IXMLDOMNode* pOption) override;
    // HresultError for a failing DOM call; what was written stays.
    void OnWrite(const PrintSchemaHandler& handler, IXMLDOMElement* pOption, Scope scope) const override;

  private:
    PrintableMediaRange m_range;
};

}  // namespace base::xps::printschema
