#include "devkit/msxml/com/domdocument.h"
#include "livecount.h"

namespace {

const tests::LiveCount kDomObjects("objects of the kit's DOM", &devkit::msxml::LiveObjectCount);

}  // namespace
