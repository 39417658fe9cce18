#include "devkit/package/xmltext.h"

namespace devkit::package {

std::string EscapedAttribute(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                // White space that a parser would turn into a space.
                escaped += static_cast<unsigned char>(c) < 0x20
                               ? "&#" + std::to_string(static_cast<int>(c)) + ";"
                               : std::string(1, c);
        }
    }
    return escaped;
}

}  // namespace devkit::package
