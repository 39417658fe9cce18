#include "eachdom.h"

#include "base/utility/safecoinit.h"

namespace tests {

std::vector<DomKind> TestedDoms() {
    const base::utility::SafeCoInit apartment;
    std::vector<DomKind> kinds = {DomKind::Kit};
    if (devkit::msxml::SystemDomConforms()) kinds.push_back(DomKind::System);
    return kinds;
}

}  // namespace tests
