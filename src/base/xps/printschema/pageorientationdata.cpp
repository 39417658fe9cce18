#include "base/xps/printschema/pageorientationdata.h"

#include "base/logging/check.h"

namespace base::xps::printschema {

PageOrientationData::PageOrientationData() : PrintTicketFunctionOption(0, Portrait) {}

Scope PageOrientationData::GetScope() const { return ScopeOfSingleName(); }

std::uint32_t PageOrientationData::FeatureIndexOfScope(Scope scope) const { return IndexOfSingleName(scope); }

const SchemaBase& PageOrientationData::GetFeatureNames() const {
    return PageOrientationFeatureNames::Instance();
}

const SchemaBase& PageOrientationData::GetOptionNames() const {
    return PageOrientationOptionNames::Instance();
}

std::int32_t PageOrientationData::Next(std::int32_t optionId) {
    switch (optionId) {
        case Landscape:
            return Portrait;
        case Portrait:
            return ReverseLandscape;
        case ReverseLandscape:
            return ReversePortrait;
        case ReversePortrait:
            return Landscape;
        default:
            logging::Throw<exception::Error>("Unexpected Option Id.");
    }
}

}  // namespace base::xps::printschema
