#include "devkit/package/deflater.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "devkit/common/content.h"

namespace devkit::package {
namespace {

// All of the compressed bytes, asked for in pieces of the size.
std::string Compress(Deflater& deflater, const common::Content& content, std::size_t piece) {
    std::string compressed;
    std::string buffer(piece, '\0');
    deflater.Begin(content.Source());
    while (const std::size_t count = deflater.Read(buffer.data(), piece)) compressed.append(buffer, 0, count);
    return compressed;
}

std::string Inflate(std::string compressed, std::size_t size) {
    std::string text(size + 1, '\0');
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) throw std::runtime_error("inflateInit2");
    stream.next_in = reinterpret_cast<Bytef*>(compressed.data());
    stream.avail_in = static_cast<uInt>(compressed.size());
    stream.next_out = reinterpret_cast<Bytef*>(text.data());
    stream.avail_out = static_cast<uInt>(text.size());
    const int result = inflate(&stream, Z_FINISH);
    text.resize(stream.total_out);
    inflateEnd(&stream);
    if (result != Z_STREAM_END || stream.avail_in != 0) throw std::runtime_error("inflate");
    return text;
}

std::string Numbers(std::uint64_t count) {
    std::string text;
    for (std::uint64_t i = 0; i < count; ++i) text += std::to_string(i * i % 7919);
    return text;
}

std::uint32_t CrcOf(const std::string& text) {
    return static_cast<std::uint32_t>(crc32_z(0, reinterpret_cast<const Bytef*>(text.data()), text.size()));
}

TEST(Deflater, CompressesWhatInflatesToTheSame) {
    Deflater deflater;
    for (const std::string& text :
         {std::string(), std::string("a"), std::string(100'000, 'x'), Numbers(50'000)}) {
        for (const std::size_t piece : {std::size_t{1}, std::size_t{100}, std::size_t{1'000'000}}) {
            const std::string compressed = Compress(deflater, text, piece);
            EXPECT_EQ(text, Inflate(compressed, text.size()));
            EXPECT_EQ(text.size(), deflater.Result().size);
            EXPECT_EQ(compressed.size(), deflater.Result().compressedSize);
            EXPECT_EQ(CrcOf(text), deflater.Result().crc);
        }
    }
}

TEST(Deflater, NothingOfOneContentIsLeftInTheNext) {
    Deflater used;
    Deflater fresh;
    const std::string text = Numbers(1'000);
    static_cast<void>(Compress(used, Numbers(9'000), 1'000'000));
    // One that was left in the middle.
    const common::Content other(Numbers(40'000));
    used.Begin(other.Source());
    char byte = 0;
    ASSERT_EQ(1U, used.Read(&byte, 1));
    EXPECT_EQ(Compress(fresh, text, 1'000), Compress(used, text, 1'000));
    EXPECT_EQ(fresh.Result().crc, used.Result().crc);
}

TEST(Deflater, PassesOnThatTheContentCannotBeRead) {
    class Failing final : public common::ByteSource {
      public:
        [[nodiscard]] std::uint64_t Size() const override { return 10; }
        std::size_t ReadAt(std::uint64_t, void*, std::size_t) override { throw std::runtime_error("gone"); }
    };
    Deflater deflater;
    Failing failing;
    deflater.Begin(failing);
    char byte = 0;
    EXPECT_THROW(static_cast<void>(deflater.Read(&byte, 1)), std::runtime_error);
}

}  // namespace
}  // namespace devkit::package
