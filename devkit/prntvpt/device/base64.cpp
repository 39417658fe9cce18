#include "devkit/prntvpt/device/base64.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace devkit::prntvpt {

std::string ToBase64(std::string_view bytes) {
    constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t index = 0; index < bytes.size(); index += 3) {
        const std::size_t count = std::min<std::size_t>(bytes.size() - index, 3);
        std::uint32_t group = 0;
        for (std::size_t byte = 0; byte < 3; ++byte) {
            group = group << 8U | (byte < count ? static_cast<unsigned char>(bytes[index + byte]) : 0U);
        }
        for (std::size_t digit = 0; digit < 4; ++digit) {
            text += digit <= count ? Alphabet[group >> (18 - 6 * digit) & 0x3FU] : '=';
        }
    }
    return text;
}

}  // namespace devkit::prntvpt
