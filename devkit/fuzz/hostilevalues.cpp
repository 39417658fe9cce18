#include "devkit/fuzz/hostilevalues.h"

#include <array>
#include <string_view>

namespace devkit::fuzz {
namespace {

using std::string_view_literals::operator""sv;

constexpr std::array kNumbers{
    "0"sv,
    "-0"sv,
    "1"sv,
    "-1"sv,
    "+1"sv,
    "0.0"sv,
    ".5"sv,
    "5."sv,
    "1e0"sv,
    "1E3"sv,
    "1e308"sv,
    "1e309"sv,
    "-1e999"sv,
    "1e-400"sv,
    "NaN"sv,
    "nan(1)"sv,
    "INF"sv,
    "-Infinity"sv,
    "0x10"sv,
    "1,5"sv,
    "1 000"sv,
    " 7 "sv,
    ""sv,
    " "sv,
    "--1"sv,
    "1e"sv,
    "1e+"sv,
    "1.2.3"sv,
    "127"sv,
    "128"sv,
    "255"sv,
    "256"sv,
    "32767"sv,
    "32768"sv,
    "65535"sv,
    "65536"sv,
    "2147483647"sv,
    "2147483648"sv,
    "-2147483648"sv,
    "-2147483649"sv,
    "4294967295"sv,
    "4294967296"sv,
    "9007199254740993"sv,
    "9223372036854775807"sv,
    "9223372036854775808"sv,
    "18446744073709551616"sv,
    "\xD9\xA1\xD9\xA2"sv,  // Arabic digits
    "\xEF\xBC\x91"sv,      // a full-width digit
    "1\xC2\xA0"
    "0"sv,  // a space that does not break
};

constexpr std::array kTexts{
    ""sv,
    " "sv,
    "%s%s%n"sv,
    "{0}{1}"sv,
    "{StaticResource a}"sv,
    "{}"sv,
    "{{"sv,
    "\\"sv,
    "/"sv,
    "//"sv,
    "..\\..\\a"sv,
    "%"sv,
    "%00"sv,
    "%2F"sv,
    ":"sv,
    "a:"sv,
    ":a"sv,
    "a:b:c"sv,
    "psk:"sv,
    "xmlns"sv,
    "xml:a"sv,
    "true"sv,
    "null"sv,
    "&amp;&lt;"sv,
    "&#9;"sv,
    "\xE2\x80\xAE"
    "abc"sv,
    "\xF0\x9F\x96\xA8"sv,
    "e\xCC\x81"sv,
    "\xEF\xBB\xBF"sv,
    "\xEF\xBF\xBE"sv,
    "M 0,0 L 1e999,NaN z"sv,
    "0,0,0,0"sv,
    "1,0,0,1"sv,
    "1,0,0,1,0,0,0"sv,
    "nan,0,0,1,0,0"sv,
    "(1,2,3;4,5"sv,
    "C:\\Windows\\win.ini"sv,
    "file:///C:/"sv,
    "http://localhost/"sv,
    "\\\\host\\share"sv,
};

constexpr std::array kNames{
    "/"sv,
    ""sv,
    "a"sv,
    "/a"sv,
    "//a"sv,
    "/a/"sv,
    "/a//b"sv,
    "/./a"sv,
    "/../a"sv,
    "../../../a"sv,
    "/a."sv,
    "/.a"sv,
    "/a b"sv,
    "/a%20b"sv,
    "/a%2fb"sv,
    "/%00"sv,
    "/a?b"sv,
    "/a#b"sv,
    "#b"sv,
    "?b"sv,
    "/con"sv,
    "C:\\a"sv,
    "\\a\\b"sv,
    "/A.FPAGE"sv,
    "/_rels/.rels"sv,
    "/[Content_Types].xml"sv,
    "/a/[0].piece"sv,
    "/a/[1].last.piece"sv,
    "/\xC3\xA9"sv,
    "/\xFF"sv,
    "http://localhost/a"sv,
    "mailto:a"sv,
    "/a:b"sv,
    "/*"sv,
    "/a\"b"sv,
    "/a\x01"sv,
};

}  // namespace

std::string LongText(std::size_t size) { return std::string(size, 'a'); }

std::string HostileNumber(Random& random) {
    switch (random.Below(12)) {
        case 0:
            return std::string(400, '9');
        case 1:
            return "0." + std::string(400, '0') + "1";
        case 2:
            return std::to_string(random.Next());
        default:
            return std::string(random.Pick(kNumbers));
    }
}

std::string HostileText(Random& random) {
    switch (random.Below(12)) {
        case 0:
            return LongText(std::size_t{1} << random.Below(17));
        case 1:
            return HostileNumber(random);
        case 2:
            return HostileName(random);
        default:
            return std::string(random.Pick(kTexts));
    }
}

std::string HostileName(Random& random) {
    if (random.OneIn(12)) return "/" + LongText(std::size_t{1} << random.Below(16));
    return std::string(random.Pick(kNames));
}

}  // namespace devkit::fuzz
