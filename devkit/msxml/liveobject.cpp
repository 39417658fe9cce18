#include "devkit/msxml/liveobject.h"

#include <atomic>

#include "devkit/msxml/domdocument.h"

namespace devkit::msxml {

namespace {

std::atomic<long> liveObjects = 0;

}  // namespace

LiveObject::LiveObject() noexcept { ++liveObjects; }

LiveObject::~LiveObject() { --liveObjects; }

long LiveObject::Count() noexcept { return liveObjects; }

long LiveObjectCount() noexcept { return LiveObject::Count(); }

}  // namespace devkit::msxml
