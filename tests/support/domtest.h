#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <optional>

#include "devkit/msxml/com/domdocument.h"
#include "devkit/msxml/com/domregistration.h"

namespace tests {

// Lets a test create DOMDocument60: the system's own where it conforms, the kit's elsewhere. Nothing of the
// kit's may be left when the test has ended.
class DomTest : public testing::Test {
  protected:
    DomTest() {
        static const bool systemConforms = devkit::msxml::SystemDomConforms();
        if (!systemConforms) m_registration.emplace();
    }
    void TearDown() override {
        m_registration.reset();
        EXPECT_EQ(0, devkit::msxml::LiveObjectCount());
    }

  private:
    std::optional<devkit::msxml::DomRegistration> m_registration;
};

}  // namespace tests
