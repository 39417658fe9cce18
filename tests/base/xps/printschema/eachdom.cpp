#include "eachdom.h"

#include "base/utility/safecoinit.h"

namespace tests {

std::vector<DomKind> TestedDoms() {
    const base::utility::SafeCoInit apartment;
    std::vector<DomKind> kinds = {DomKind::Kit};
    if (devkit::msxml::SystemDomConforms()) kinds.push_back(DomKind::System);
    return kinds;
}

namespace {

TEST(SystemDom, TakesPartInTheTestsOfTicketsWhereItConforms) {
    if (!devkit::msxml::SystemDomConforms())
        GTEST_SKIP() << "the system's DOMDocument60 has no IStream or hides namespace declarations; "
                        "tickets are tested on the kit's alone";
    EXPECT_EQ(TestedDoms().size(), 2U);
}

}  // namespace
}  // namespace tests
