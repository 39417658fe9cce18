#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "devkit/msxml/com/domdocument.h"
#include "devkit/msxml/com/domregistration.h"

namespace tests {

enum class DomKind { Kit, System };

// The kit's DOM, and the system's own where it conforms. To be called before main has entered COM.
[[nodiscard]] std::vector<DomKind> TestedDoms();

inline void PrintTo(DomKind kind, std::ostream* pStream) {
    *pStream << (kind == DomKind::Kit ? "Kit" : "System");
}

// Lets a test create DOMDocument60 of one kind. Nothing of the kit's may be left when the test has ended.
class EachDomTest : public testing::TestWithParam<DomKind> {
  protected:
    EachDomTest() {
        if (GetParam() == DomKind::Kit) m_registration.emplace();
    }
    // Behind the members of the derived test, which may hold documents.
    ~EachDomTest() override {
        m_registration.reset();
        EXPECT_EQ(0, devkit::msxml::LiveObjectCount());
    }

  private:
    std::optional<devkit::msxml::DomRegistration> m_registration;
};

// At namespace scope behind the tests of the suite.
#define TEST_ON_EACH_DOM(suite)                                               \
    INSTANTIATE_TEST_SUITE_P(, suite, testing::ValuesIn(tests::TestedDoms()), \
                             testing::PrintToStringParamName())

}  // namespace tests
