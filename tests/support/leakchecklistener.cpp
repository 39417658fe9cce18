#include "leakchecklistener.h"

#include "mockobject.h"

namespace tests {

void LeakCheckListener::OnTestStart(const testing::TestInfo&) { m_liveBefore = g_liveMocks; }

void LeakCheckListener::OnTestEnd(const testing::TestInfo&) {
    EXPECT_EQ(m_liveBefore, g_liveMocks) << "mock objects are still alive";
}

}  // namespace tests
