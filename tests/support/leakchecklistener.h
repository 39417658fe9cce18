#pragma once

#include <gtest/gtest.h>

namespace tests {

// Fails a test after which more mock objects live than before it.
class LeakCheckListener : public testing::EmptyTestEventListener {
  public:
    void OnTestStart(const testing::TestInfo& test) override;
    void OnTestEnd(const testing::TestInfo& test) override;

  private:
    int m_liveBefore = 0;
};

}  // namespace tests
