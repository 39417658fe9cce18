#include "pagevalidatefilter/module.h"

#include <atomic>

namespace pagevalidatefilter {
namespace {

std::atomic<LONG> g_moduleCount = 0;

}  // namespace

ModuleReference::ModuleReference() noexcept { LockModule(); }

ModuleReference::~ModuleReference() { UnlockModule(); }

void LockModule() noexcept { ++g_moduleCount; }

void UnlockModule() noexcept { --g_moduleCount; }

LONG ModuleCount() noexcept { return g_moduleCount; }

}  // namespace pagevalidatefilter
