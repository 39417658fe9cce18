#include "devkit/validate/battery.h"

#include <iterator>

namespace devkit::validate {

const std::vector<Test>& Battery() {
    static const std::vector<Test> kBattery = [] {
        std::vector<Test> all;
        for (auto* const pTestsOfLevel :
             {&LoadingTests, &DocumentTests, &ContractTests, &VariationTests, &TicketTests, &CancellingTests,
              &FailingCallTests, &MemoryTests, &HostileTests, &LoadTests}) {
            std::vector<Test> tests = pTestsOfLevel();
            std::move(tests.begin(), tests.end(), std::back_inserter(all));
        }
        return all;
    }();
    return kBattery;
}

}  // namespace devkit::validate
