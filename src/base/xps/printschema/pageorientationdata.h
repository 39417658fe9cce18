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

    // The option that a page of the given one has after a quarter turn of its sheet: the next in the order of
    // the constants, and the first after the last. base::exception::Error for an id that is none of the four.
    [[nodiscard]] static std::int32_t Next(std::int32_t optionId);
};

}  // namespace base::xps::printschema
