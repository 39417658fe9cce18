#pragma once

#include <set>
#include <string>
#include <vector>

#include "devkit/common/checks.h"
#include "devkit/pipeline/part.h"

namespace devkit::filterhost {

struct SentPartFinding {
    common::Check check;
    std::string text;

    friend bool operator==(const SentPartFinding&, const SentPartFinding&) = default;
};

// Looks at what a filter wrote for what no rule of the pipeline forbids and no consumer can use. What the
// input had already is not held against the filter.
class SentPartCheck {
  public:
    // One line for each thing that is odd about a part that was just sent. Of tickets each thing is told
    // once, with the first ticket that has it. Throws common::Error when the input cannot be read.
    [[nodiscard]] std::vector<SentPartFinding> Look(const pipeline::SentPart& part);

  private:
    void LookAtTicket(const pipeline::Part& part, std::vector<SentPartFinding>& findings);

    std::set<std::string> m_ticketProblems;
    pipeline::Bytes m_lastTicket;
};

}  // namespace devkit::filterhost
