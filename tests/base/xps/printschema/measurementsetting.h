#pragma once

#include <optional>
#include <string_view>

namespace tests {

// Makes this program see a measurement setting of the user's locale until it is destroyed: L"0" for metric,
// L"1" for U.S., none for a setting that cannot be read. The user's own setting is not touched.
class MeasurementSetting {
  public:
    explicit MeasurementSetting(std::optional<std::wstring_view> setting) noexcept;
    MeasurementSetting(const MeasurementSetting&) = delete;
    MeasurementSetting& operator=(const MeasurementSetting&) = delete;
    ~MeasurementSetting();
};

}  // namespace tests
