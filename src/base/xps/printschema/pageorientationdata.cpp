#include "base/xps/printschema/pageorientationdata.h"

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

}  // namespace base::xps::printschema
