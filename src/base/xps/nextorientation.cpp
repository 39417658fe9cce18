#include "base/xps/nextorientation.h"

#include "base/logging/check.h"
#include "base/xps/printschema/pageorientationdata.h"

namespace base::xps {

std::int32_t NextOrientation(std::int32_t optionId) {
    using printschema::PageOrientationData;
    switch (optionId) {
        case PageOrientationData::Landscape:
            return PageOrientationData::Portrait;
        case PageOrientationData::Portrait:
            return PageOrientationData::ReverseLandscape;
        case PageOrientationData::ReverseLandscape:
            return PageOrientationData::ReversePortrait;
        case PageOrientationData::ReversePortrait:
            return PageOrientationData::Landscape;
        default:
            logging::Throw<exception::Error>("Unexpected Option Id.");
    }
}

}  // namespace base::xps
