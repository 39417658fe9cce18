#include "measurementsetting.h"

#include "platform/windows.h"

#include <algorithm>

#include "importseam.h"

namespace tests {
namespace {

bool g_isReplaced = false;
std::optional<std::wstring_view> g_replacement;

int WINAPI TestGetLocaleInfoW(LCID locale, LCTYPE type, LPWSTR text, int size) {
    if (!g_isReplaced || locale != LOCALE_USER_DEFAULT || type != LOCALE_IMEASURE) {
        static const auto system =
            SystemFunction<decltype(TestGetLocaleInfoW)>(L"kernel32.dll", "GetLocaleInfoW");
        return system(locale, type, text, size);
    }
    const int needed = g_replacement ? static_cast<int>(g_replacement->size()) + 1 : 0;
    if (needed == 0 || needed > size) return 0;
    *std::ranges::copy(*g_replacement, text).out = L'\0';
    return needed;
}

}  // namespace

MeasurementSetting::MeasurementSetting(std::optional<std::wstring_view> setting) noexcept {
    g_replacement = setting;
    g_isReplaced = true;
}

MeasurementSetting::~MeasurementSetting() { g_isReplaced = false; }

}  // namespace tests

TEST_IMPORT(GetLocaleInfoW, 16, tests::TestGetLocaleInfoW)
