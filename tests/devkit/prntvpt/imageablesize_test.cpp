#include "devkit/prntvpt/device/imageablesize.h"

#include <gtest/gtest.h>

#include <array>

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace printschema;

using namespace tests;

using Measures = std::array<std::int64_t, 6>;

constexpr Margins kSheet{3000, 5000, 4000, 12700};

[[nodiscard]] std::array<std::int64_t, 4> Turned(Orientation orientation) {
    const Margins margins = TurnMargins(kSheet, orientation);
    return {margins.left, margins.top, margins.right, margins.bottom};
}

[[nodiscard]] Element A4(const char* orientation) {
    return ReadFramework(
               Ticket(std::string(R"(<psf:Feature name="psk:PageMediaSize"><psf:Option name="psk:ISOA4">
<psf:ScoredProperty name="psk:MediaSizeWidth"><psf:Value xsi:type="xsd:integer">210000</psf:Value></psf:ScoredProperty>
<psf:ScoredProperty name="psk:MediaSizeHeight"><psf:Value xsi:type="xsd:integer">297000</psf:Value></psf:ScoredProperty>
</psf:Option></psf:Feature><psf:Feature name="psk:PageOrientation"><psf:Option name="psk:)") +
                      orientation + R"("/></psf:Feature>)"),
               Tag::PrintTicket)
        .root;
}

[[nodiscard]] Measures Geometry(const Device& device, const Element& ticket, bool orientationCounts = true) {
    const std::optional<ImageableSize> page = ImageableSizeOf(device, ticket, orientationCounts);
    if (!page) return {};
    return {page->width, page->height, page->originX, page->originY, page->extentX, page->extentY};
}

[[nodiscard]] Device Asymmetric() {
    Device device;
    device.margins = kSheet;
    return device;
}

TEST(ImageableArea, MarginsTurnWithTheOrientation) {
    EXPECT_EQ((std::array<std::int64_t, 4>{3000, 5000, 4000, 12700}), Turned(Orientation::Portrait));
    // left := bottom, top := left, right := top, bottom := right
    EXPECT_EQ((std::array<std::int64_t, 4>{12700, 3000, 5000, 4000}), Turned(Orientation::Landscape));
    EXPECT_EQ((std::array<std::int64_t, 4>{4000, 12700, 3000, 5000}), Turned(Orientation::ReversePortrait));
    EXPECT_EQ((std::array<std::int64_t, 4>{5000, 4000, 12700, 3000}), Turned(Orientation::ReverseLandscape));
}

TEST(ImageableArea, LandscapeAndReverseLandscapeAreHalfATurnApart) {
    const Margins landscape = TurnMargins(kSheet, Orientation::Landscape);
    const Margins turned = TurnMargins(landscape, Orientation::ReversePortrait);
    EXPECT_EQ((std::array<std::int64_t, 4>{turned.left, turned.top, turned.right, turned.bottom}),
              Turned(Orientation::ReverseLandscape));
}

TEST(ImageableArea, IsTheSheetWithoutItsMargins) {
    const Device device = Asymmetric();
    EXPECT_EQ((Measures{210000, 297000, 3000, 5000, 203000, 279300}), Geometry(device, A4("Portrait")));
    EXPECT_EQ((Measures{297000, 210000, 12700, 3000, 279300, 203000}), Geometry(device, A4("Landscape")));
    EXPECT_EQ((Measures{210000, 297000, 4000, 12700, 203000, 279300}),
              Geometry(device, A4("ReversePortrait")));
    EXPECT_EQ((Measures{297000, 210000, 5000, 4000, 279300, 203000}),
              Geometry(device, A4("ReverseLandscape")));
}

TEST(ImageableArea, StaysInPortraitWhereTheDeviceDoesNotTurnIt) {
    EXPECT_EQ((Measures{210000, 297000, 3000, 5000, 203000, 279300}),
              Geometry(Asymmetric(), A4("Landscape"), false));
}

TEST(ImageableArea, SingleSheetsHaveMarginsOfTheirOwn) {
    Device device = Asymmetric();
    device.optionMargins[Keyword("ISOA4")] = {1, 2, 3, 4};
    EXPECT_EQ((Measures{210000, 297000, 1, 2, 209996, 296994}), Geometry(device, A4("Portrait")));
}

TEST(ImageableArea, ExtentIsNeverZero) {
    Device device;
    device.margins = {200000, 200000, 200000, 200000};
    EXPECT_EQ((Measures{210000, 297000, 200000, 200000, 1, 1}), Geometry(device, A4("Portrait")));
}

TEST(ImageableArea, NeedsASheet) { EXPECT_FALSE(ImageableSizeOf(Asymmetric(), Element(), true).has_value()); }

}  // namespace
}  // namespace devkit::prntvpt
