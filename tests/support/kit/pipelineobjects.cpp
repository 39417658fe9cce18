#include "devkit/common/countedobject.h"
#include "livecount.h"

namespace {

const tests::LiveCount kKitObjects("objects of the kit",
                                   [] { return static_cast<long>(devkit::common::LiveObjectCount()); });

}  // namespace
