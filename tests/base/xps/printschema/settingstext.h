#pragma once

#include "platform/windows.h"

#include <string>
#include <vector>

#include "platform/msxml6.h"

namespace tests {

// The five settings of a ticket, each read into a fresh object, in this form and order; what a read throws
// takes the place of its values.
//   scaling FEATURE OPTION OFFSETWIDTH OFFSETHEIGHT SCALEWIDTH SCALEHEIGHT
//   bin FEATURE OPTION FEEDDIRECTION
//   media FEATURE OPTION WIDTH HEIGHT
//   orientation FEATURE OPTION
//   printable FEATURE OPTION MINWIDTH MINHEIGHT MAXWIDTH MAXHEIGHT
//   SETTING error 0x80070490
//   SETTING error MESSAGE
[[nodiscard]] std::vector<std::string> SettingsText(IXMLDOMDocument2* pTicket);

}  // namespace tests
