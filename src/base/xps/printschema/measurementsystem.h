#pragma once

#include <string_view>

namespace base::xps::printschema {

// Whether a measurement setting, as Windows writes it, means the metric system: all but exactly "1", which
// means the U.S. system.
[[nodiscard]] bool IsMetricSetting(std::wstring_view setting) noexcept;

// Whether the user's default locale uses the metric system. It counts as metric when it cannot be asked.
[[nodiscard]] bool IsUserLocaleMetric() noexcept;

}  // namespace base::xps::printschema
