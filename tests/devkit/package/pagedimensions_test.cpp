#include "devkit/package/pagedimensions.h"

#include <gtest/gtest.h>

#include "testpackages.h"

namespace devkit::package {
namespace {

std::optional<PageDimensions> Read(const std::string& attributes, const std::string& uri = kXps) {
    return ReadPageDimensions("<FixedPage xmlns=\"" + uri + "\" " + attributes + ">");
}

TEST(PageDimensionsTest, ReadsSizesInBothVocabularies) {
    const auto page = Read("Width=\"793.76\" Height=\"1122.56\"");
    ASSERT_TRUE(page);
    EXPECT_EQ(793.76, page->width);
    EXPECT_EQ(1122.56, page->height);
    EXPECT_FALSE(page->bleedBox);
    EXPECT_FALSE(page->contentBox);
    EXPECT_TRUE(Read("Width=\"1\" Height=\"2\"", "http://schemas.openxps.org/oxps/v1.0"));
}

TEST(PageDimensionsTest, ReadsBoxes) {
    const auto page = Read("Width=\"1e3\" Height=\" 20 \" BleedBox=\"-1,2.5, 3 4\" ContentBox=\"0,0,1,1\"");
    ASSERT_TRUE(page);
    EXPECT_EQ(1000, page->width);
    EXPECT_EQ(20, page->height);
    EXPECT_EQ((std::array<double, 4>{-1, 2.5, 3, 4}), page->bleedBox);
    EXPECT_EQ((std::array<double, 4>{0, 0, 1, 1}), page->contentBox);
}

TEST(PageDimensionsTest, ABoxThatIsNoneIsLeftOut) {
    const auto page = Read("Width=\"1\" Height=\"2\" BleedBox=\"1,2,3\" ContentBox=\"a\"");
    ASSERT_TRUE(page);
    EXPECT_FALSE(page->bleedBox);
    EXPECT_FALSE(page->contentBox);
}

TEST(PageDimensionsTest, NeedsAPageWithAWidthAndAHeight) {
    EXPECT_FALSE(Read("Width=\"1\""));
    EXPECT_FALSE(Read("Width=\"1\" Height=\"2px\""));
    EXPECT_FALSE(Read("Width=\"1,5\" Height=\"2\""));
    EXPECT_FALSE(Read("Width=\"\" Height=\"2\""));
    EXPECT_FALSE(Read("Width=\"1\" Height=\"2\"", "urn:other"));
    EXPECT_FALSE(ReadPageDimensions("<Canvas xmlns=\"" + kXps + "\" Width=\"1\" Height=\"2\"/>"));
    EXPECT_FALSE(ReadPageDimensions(""));
    EXPECT_FALSE(ReadPageDimensions("no page"));
}

TEST(PageDimensionsTest, ReadsTheStartOfMarkupThatIsCutOffOrBrokenLater) {
    const std::string start = "<FixedPage xmlns=\"" + kXps + "\" Width=\"1\" Height=\"2\">";
    const std::string content(5'000, ' ');
    EXPECT_TRUE(ReadPageDimensions(start));
    EXPECT_TRUE(ReadPageDimensions(start + content + "<Canvas></Path>"));
}

}  // namespace
}  // namespace devkit::package
