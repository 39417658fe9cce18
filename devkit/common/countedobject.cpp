#include "devkit/common/countedobject.h"

#include <atomic>

namespace devkit::common {
namespace {

std::atomic<std::size_t> g_liveObjects = 0;

}  // namespace

CountedObject::CountedObject() noexcept { ++g_liveObjects; }

CountedObject::~CountedObject() { --g_liveObjects; }

std::size_t LiveObjectCount() noexcept { return g_liveObjects; }

}  // namespace devkit::common
