#include "devkit/pipeline/runcontext.h"
#include "livecount.h"

namespace {

const tests::LiveCount kPipelineObjects("objects of the kit's pipeline", [] {
    return static_cast<long>(devkit::pipeline::LiveObjectCount());
});

}  // namespace
