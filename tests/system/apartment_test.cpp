#include <objidl.h>

#include "filtertest.h"

namespace systemtest {
namespace {

using devkit::pipeline::Apartment;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;

class ApartmentTest : public FilterTest {};

// Looks at the thread's apartment when it is destroyed, which is after StartOperation.
struct ApartmentWitness {
    explicit ApartmentWitness(APTTYPE& after) : m_after(after) {}
    ~ApartmentWitness() {
        APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
        if (FAILED(CoGetApartmentType(&m_after, &qualifier))) m_after = APTTYPE_CURRENT;
    }

    devkit::msxml::DomRegistration m_dom;
    APTTYPE& m_after;
};

TEST_F(ApartmentTest, AThreadInASingleThreadedApartmentWorksAndStaysAsItWas) {
    Configure();
    APTTYPE after = APTTYPE_CURRENT;
    RunOptions options = Options();
    options.apartment = Apartment::SingleThreaded;
    options.onPipelineThread = [&after] { return std::make_shared<ApartmentWitness>(after); };
    const RunOutcome outcome = Run(std::move(options));
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_TRUE(outcome.IsWhole());
    EXPECT_TRUE(after == APTTYPE_STA || after == APTTYPE_MAINSTA) << after;
    ExpectNothingLeft(outcome);
}

}  // namespace
}  // namespace systemtest
