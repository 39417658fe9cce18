#pragma once

#include <gtest/gtest.h>

#include <vector>

namespace tests {

// Fails a test after which more, or fewer, mock objects or objects of another LiveCount live than before it,
// but for those that it leaves on purpose.
class LeakCheckListener : public testing::EmptyTestEventListener {
  public:
    void OnTestStart(const testing::TestInfo& test) override;
    void OnTestEnd(const testing::TestInfo& test) override;

  private:
    std::vector<long> m_liveBefore;
};

}  // namespace tests
