#include "base/utility/stringutility.h"

#include <gtest/gtest.h>

namespace base::utility {
namespace {

TEST(DirectoryOfTest, CutsAtTheLastBackslash) {
    EXPECT_EQ(LR"(C:\spool\drivers)", DirectoryOf(LR"(C:\spool\drivers\printer.gpd)"));
}

TEST(DirectoryOfTest, ADataFilePathWithForwardSlashesIsCutAtTheLastOne) {
    EXPECT_EQ(L"C:/spool/drivers", DirectoryOf(L"C:/spool/drivers/printer.gpd"));
}

TEST(DirectoryOfTest, CutsAtTheLastOfMixedSeparators) {
    EXPECT_EQ(LR"(C:\spool/drivers)", DirectoryOf(LR"(C:\spool/drivers\printer.gpd)"));
    EXPECT_EQ(LR"(C:/spool\drivers)", DirectoryOf(LR"(C:/spool\drivers/printer.gpd)"));
}

TEST(DirectoryOfTest, APathWithoutAnySeparatorKeepsTheWholePath) {
    EXPECT_EQ(L"printer.gpd", DirectoryOf(L"printer.gpd"));
}

TEST(DirectoryOfTest, KeepsNothingBeforeALeadingSeparator) {
    EXPECT_EQ(L"", DirectoryOf(LR"(\printer.gpd)"));
}

TEST(DirectoryOfTest, DropsOnlyATrailingSeparator) { EXPECT_EQ(L"drivers", DirectoryOf(LR"(drivers\)")); }

TEST(DirectoryOfTest, TheEmptyPathHasTheEmptyFolder) { EXPECT_EQ(L"", DirectoryOf(L"")); }

}  // namespace
}  // namespace base::utility
