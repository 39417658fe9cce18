#include "devkit/filterhost/device.h"

#include <gtest/gtest.h>

#include "devkit/filterhost/programfolder.h"
#include "devkit/filterhost/usageerror.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

TEST(Device, IsFoundByNameBesideTheProgram) {
    EXPECT_EQ(FindDevice("longedge"), ProgramFolder() / "devices" / "longedge");
}

TEST(Device, IsFoundByItsFolder) {
    const std::filesystem::path folder = ProgramFolder() / "devices" / "simprinter";
    EXPECT_EQ(FindDevice(platform::ToUtf8(folder.wstring())), folder);
}

TEST(Device, AFolderWithoutAModelIsRefused) {
    EXPECT_THROW(static_cast<void>(FindDevice(platform::ToUtf8(ProgramFolder().wstring()))), UsageError);
    EXPECT_THROW(static_cast<void>(FindDevice("typewriter")), UsageError);
}

}  // namespace
}  // namespace devkit::filterhost
