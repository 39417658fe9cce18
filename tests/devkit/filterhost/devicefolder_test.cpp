#include "devkit/filterhost/devicefolder.h"

#include <gtest/gtest.h>

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

TEST(DeviceFolder, IsFoundByNameBesideTheProgram) {
    EXPECT_EQ(ProgramFolder() / "devices" / "longedge", FindDeviceFolder("longedge"));
}

TEST(DeviceFolder, IsFoundByItsFolder) {
    const std::filesystem::path folder = ProgramFolder() / "devices" / "simprinter";
    EXPECT_EQ(folder, FindDeviceFolder(platform::ToUtf8(folder.wstring())));
}

TEST(DeviceFolder, AFolderWithoutAModelIsRefused) {
    EXPECT_THROW(static_cast<void>(FindDeviceFolder(platform::ToUtf8(ProgramFolder().wstring()))),
                 UsageError);
    EXPECT_THROW(static_cast<void>(FindDeviceFolder("typewriter")), UsageError);
}

}  // namespace
}  // namespace devkit::filterhost
