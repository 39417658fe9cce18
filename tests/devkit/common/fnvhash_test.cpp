#include "devkit/common/fnvhash.h"

#include <gtest/gtest.h>

#include <string_view>

namespace devkit::common {
namespace {

std::uint64_t HashOf(std::string_view text) {
    FnvHash hash;
    for (const char letter : text) hash.Take(static_cast<unsigned char>(letter));
    return hash.Value();
}

// The vectors of the algorithm's authors.
TEST(FnvHash, IsThatOfItsAuthors) {
    EXPECT_EQ(0xCBF29CE484222325U, HashOf(""));
    EXPECT_EQ(0xAF63DC4C8601EC8CU, HashOf("a"));
    EXPECT_EQ(0x85944171F73967E8U, HashOf("foobar"));
}

}  // namespace
}  // namespace devkit::common
