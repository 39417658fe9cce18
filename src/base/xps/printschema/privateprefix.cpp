#include "base/xps/printschema/privateprefix.h"

#include <mutex>

namespace base::xps::printschema {
namespace {

std::mutex s_lock;
std::wstring s_privatePrefix;

}  // namespace

void SetPrivatePrefix(std::wstring_view prefix) {
    std::wstring stored(prefix);
    if (!stored.empty()) stored += L':';
    const std::scoped_lock lock(s_lock);
    s_privatePrefix.swap(stored);
}

std::wstring PrivatePrefix() {
    const std::scoped_lock lock(s_lock);
    return s_privatePrefix;
}

void EnsurePrivatePrefix() {
    const std::scoped_lock lock(s_lock);
    if (s_privatePrefix.empty()) s_privatePrefix = kFallbackPrefix;
}

}  // namespace base::xps::printschema
