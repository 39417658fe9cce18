#include "leakchecklistener.h"

#include "livecount.h"
#include "mockobject.h"

namespace tests {
namespace {

const LiveCount kMocks("mock objects", [] { return static_cast<long>(g_liveMocks); });

}  // namespace

void LeakCheckListener::OnTestStart(const testing::TestInfo&) {
    m_liveBefore.clear();
    for (LiveCount::Kind& kind : LiveCount::Kinds()) {
        kind.left = 0;
        m_liveBefore.push_back(kind.count());
    }
}

void LeakCheckListener::OnTestEnd(const testing::TestInfo&) {
    const std::vector<LiveCount::Kind>& kinds = LiveCount::Kinds();
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        EXPECT_EQ(m_liveBefore[i] + kinds[i].left, kinds[i].count()) << kinds[i].what << " are still alive";
    }
}

}  // namespace tests
