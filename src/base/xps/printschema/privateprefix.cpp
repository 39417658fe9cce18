#include "base/xps/printschema/privateprefix.h"

#include <mutex>

namespace base::xps::printschema {
namespace {

std::mutex g_lock;
std::wstring g_privatePrefix;

}  // namespace

void SetPrivatePrefix(std::wstring_view prefix) {
    std::wstring stored(prefix);
    if (!stored.empty()) stored += L':';
    const std::scoped_lock lock(g_lock);
    g_privatePrefix.swap(stored);
}

std::wstring PrivatePrefix() {
    const std::scoped_lock lock(g_lock);
    return g_privatePrefix;
}

void EnsurePrivatePrefix() {
    const std::scoped_lock lock(g_lock);
    if (g_privatePrefix.empty()) g_privatePrefix = kFallbackPrefix;
}

}  // namespace base::xps::printschema
