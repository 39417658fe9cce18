#include "base/xps/printschema/measurementsystem.h"

#include "platform/windows.h"

#include <iterator>

namespace base::xps::printschema {

bool IsMetricSetting(std::wstring_view setting) noexcept { return setting != L"1"; }

bool IsUserLocaleMetric() noexcept {
    wchar_t setting[2] = {};
    const int length =
        GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_IMEASURE, setting, static_cast<int>(std::size(setting)));
    return length == 0 || IsMetricSetting(setting);
}

}  // namespace base::xps::printschema
