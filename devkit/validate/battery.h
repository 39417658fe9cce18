#pragma once

#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace devkit::validate {

class Trial;

// A named test of the battery, and what people are told of it.
struct Test {
    std::string_view name;    // stable: reports and settings name it
    unsigned level = 1;       // 1 to kHighestLevel; a level has the tests of all below it
    std::string_view claim;   // what is true of a filter that passes
    std::string_view advice;  // what to do when it fails
    // Runs the filter and says what it finds. May throw what keeps the test from being run.
    std::function<void(Trial&)> run;
};

inline constexpr unsigned kHighestLevel = 10;
inline constexpr unsigned kDefaultLevel = 5;

// All tests, by level. Names are in use once.
[[nodiscard]] const std::vector<Test>& Battery();

// The tests of each level.
[[nodiscard]] std::vector<Test> LoadingTests();
[[nodiscard]] std::vector<Test> DocumentTests();
[[nodiscard]] std::vector<Test> ContractTests();
[[nodiscard]] std::vector<Test> VariationTests();
[[nodiscard]] std::vector<Test> TicketTests();
[[nodiscard]] std::vector<Test> CancellingTests();
[[nodiscard]] std::vector<Test> FailingCallTests();
[[nodiscard]] std::vector<Test> MemoryTests();
[[nodiscard]] std::vector<Test> HostileTests();
[[nodiscard]] std::vector<Test> LoadTests();

}  // namespace devkit::validate
