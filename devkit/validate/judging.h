#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "devkit/common/checks.h"
#include "devkit/validate/trial.h"

namespace devkit::validate {

// Why a run that should have succeeded has not, a line each; the rules that it broke are not among them.
[[nodiscard]] std::vector<std::string> FailuresOf(const RunResult& result);
// Whether the filter did all of its work and was let go.
[[nodiscard]] bool IsWhole(const RunResult& result);
// Throws Skipped for a run in which the filter did not do all of its work, and for a filter that does not
// send parts: what it did with the document cannot be told from what it left undone.
void ExpectWhole(const RunResult& result);

// The parts that the filter read, and those that it sent: "FixedPage /1.fpage", each in its order.
[[nodiscard]] std::vector<std::string> PartsGiven(const RunResult& result);
[[nodiscard]] std::vector<std::string> PartsSent(const RunResult& result);
// What the list has beyond the other, each as often as it is too many.
[[nodiscard]] std::vector<std::string> Beyond(std::vector<std::string> list,
                                              const std::vector<std::string>& other);

// Fails the trial with each broken rule and each finding of the run that is one of the checks.
void FailWith(Trial& trial, const Order& order, const RunResult& result,
              const std::vector<common::Check>& checks);
// The same with whatever rule is broken, but for these.
void FailWithBreaches(Trial& trial, const Order& order, const RunResult& result,
                      const std::vector<common::Check>& excused = {});

// Whether a switch or a fault of the run's made no difference, so that the run says nothing.
[[nodiscard]] bool IsIdle(const RunResult& result);
// What the filter did to each part that it sent, in words that two runs of a document share.
[[nodiscard]] std::vector<std::string> DoneToParts(const RunResult& result);
// What was done otherwise in the second of two such lists; nothing when it was the same.
[[nodiscard]] std::optional<std::string> DifferenceFrom(const std::vector<std::string>& expected,
                                                        const std::vector<std::string>& actual);
[[nodiscard]] std::optional<std::string> DifferenceFrom(const RunResult& expected, const RunResult& actual);
// Fails the trial unless the run came to a good end without a broken rule, and did what the plain run of its
// document did.
void ExpectAsPlain(Trial& trial, const Order& order, const RunResult& result, const RunResult& plain);

// A test that the plain run over the carried documents and the user's comes to none of these.
[[nodiscard]] std::function<void(Trial&)> ComesToNone(std::vector<common::Check> checks);

}  // namespace devkit::validate
