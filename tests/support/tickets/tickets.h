#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "devkit/printschema/element.h"

// Tickets as texts: builders, and what a ticket says in lines that compare well.
namespace tests {

// Namespaces of the tests: the sample device's own, and two that no device knows.
inline constexpr std::string_view kDeviceUri = "http://schemas.example.com/printing/simdevice/v1";
inline constexpr std::string_view kAcmeUri = "http://schemas.example.com/acme/filters/v1";

// A ticket with these children; psf, psk, xsi, xsd, the device's dev and the foreign acme are declared.
[[nodiscard]] std::string Ticket(std::string_view children);

// A feature with one option.
[[nodiscard]] std::string Select(std::string_view feature, std::string_view option,
                                 std::string_view content = {});
// An option of PageMediaSize; the sizes are micrometres.
[[nodiscard]] std::string Sheet(std::string_view option, int width, int height);
[[nodiscard]] std::string Scored(std::string_view name, std::string_view type, std::string_view value);
[[nodiscard]] std::string Reference(std::string_view name, std::string_view parameter);
// Of the type integer.
[[nodiscard]] std::string Parameter(std::string_view name, std::string_view value);
[[nodiscard]] std::string TextProperty(std::string_view name, std::string_view text);

// One line for each root entry, in order, with every name and value in it:
//   "psk:JobCopiesAllDocuments=1"                        parameter
//   "psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]"     feature
//   "psk:PageScaling[psk:None]{psk:ScaleOffsetAlignment[psk:Center]}"                sub-feature
//   "#psk:JobName=report"                                property, also inside features and options
// A reference to a parameter is "@psk:PageScalingScale".
[[nodiscard]] std::vector<std::string> Summarize(const devkit::printschema::Element& root);
// Of the bytes of a ticket.
[[nodiscard]] std::vector<std::string> Summarize(std::string_view bytes);
// The line of the root entry of that local name, empty when there is none.
[[nodiscard]] std::string Line(std::string_view bytes, std::string_view local);

}  // namespace tests
