#pragma once

#include "platform/windows.h"

#include <cstdint>

#include "base/xps/printschema/printticketfunctionoption.h"

namespace base::xps::printschema {

// How a page's content lies on the sheet.
class PageOrientationData : public PrintTicketFunctionOption {
  public:
    static constexpr std::int32_t Landscape = 0;
    static constexpr std::int32_t Portrait = 1;
    static constexpr std::int32_t ReverseLandscape = 2;
    static constexpr std::int32_t ReversePortrait = 3;

    // Portrait.
    PageOrientationData();

    [[nodiscard]] Scope GetScope() const override;
    [[nodiscard]] std::uint32_t FeatureIndexOfScope(Scope scope) const override;
    [[nodiscard]] const SchemaBase& GetFeatureNames() const override;
    [[nodiscard]] const SchemaBase& GetOptionNames() const override;
};

}  // namespace base::xps::printschema
