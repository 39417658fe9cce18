#include "devkit/package/pagegeometry.h"

#include <gtest/gtest.h>

#include "testpackages.h"

namespace devkit::package {
namespace {

std::optional<PageGeometry> Read(const std::string& attributes, const std::string& uri = kXps) {
    return ReadPageGeometry("<FixedPage xmlns=\"" + uri + "\" " + attributes + ">");
}

TEST(PageGeometryTest, ReadsSizesInBothVocabularies) {
    const auto page = Read("Width=\"793.76\" Height=\"1122.56\"");
    ASSERT_TRUE(page);
    EXPECT_EQ(page->width, 793.76);
    EXPECT_EQ(page->height, 1122.56);
    EXPECT_FALSE(page->bleedBox);
    EXPECT_FALSE(page->contentBox);
    EXPECT_TRUE(Read("Width=\"1\" Height=\"2\"", "http://schemas.openxps.org/oxps/v1.0"));
}

TEST(PageGeometryTest, ReadsBoxes) {
    const auto page = Read("Width=\"1e3\" Height=\" 20 \" BleedBox=\"-1,2.5, 3 4\" ContentBox=\"0,0,1,1\"");
    ASSERT_TRUE(page);
    EXPECT_EQ(page->width, 1000);
    EXPECT_EQ(page->height, 20);
    EXPECT_EQ(page->bleedBox, (std::array<double, 4>{-1, 2.5, 3, 4}));
    EXPECT_EQ(page->contentBox, (std::array<double, 4>{0, 0, 1, 1}));
}

TEST(PageGeometryTest, ABoxThatIsNoneIsLeftOut) {
    const auto page = Read("Width=\"1\" Height=\"2\" BleedBox=\"1,2,3\" ContentBox=\"a\"");
    ASSERT_TRUE(page);
    EXPECT_FALSE(page->bleedBox);
    EXPECT_FALSE(page->contentBox);
}

TEST(PageGeometryTest, NeedsAPageWithAWidthAndAHeight) {
    EXPECT_FALSE(Read("Width=\"1\""));
    EXPECT_FALSE(Read("Width=\"1\" Height=\"2px\""));
    EXPECT_FALSE(Read("Width=\"1,5\" Height=\"2\""));
    EXPECT_FALSE(Read("Width=\"\" Height=\"2\""));
    EXPECT_FALSE(Read("Width=\"1\" Height=\"2\"", "urn:other"));
    EXPECT_FALSE(ReadPageGeometry("<Canvas xmlns=\"" + kXps + "\" Width=\"1\" Height=\"2\"/>"));
    EXPECT_FALSE(ReadPageGeometry(""));
    EXPECT_FALSE(ReadPageGeometry("no page"));
}

TEST(PageGeometryTest, ReadsTheStartOfMarkupThatIsCutOffOrBrokenLater) {
    const std::string start = "<FixedPage xmlns=\"" + kXps + "\" Width=\"1\" Height=\"2\">";
    const std::string content(5'000, ' ');
    EXPECT_TRUE(ReadPageGeometry(start));
    EXPECT_TRUE(ReadPageGeometry(start + content + "<Canvas></Path>"));
}

}  // namespace
}  // namespace devkit::package
