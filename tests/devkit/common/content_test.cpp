#include "devkit/common/content.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "devkit/common/error.h"
#include "thrown.h"

namespace devkit::common {
namespace {

TEST(Content, IsReadWhereverItIs) {
    EXPECT_EQ("text", Content("text").Read());
    EXPECT_EQ(std::string("a\0b", 3), Content(std::string("a\0b", 3)).Read());
    const auto bytes = std::make_shared<const std::string>("shared");
    const Content content = bytes;
    EXPECT_EQ(6U, content.Size());
    EXPECT_EQ(2, bytes.use_count());
    EXPECT_EQ("shared", Content(std::make_shared<MemorySource>(bytes)).Read());
}

class Failing final : public ByteSource {
  public:
    explicit Failing(bool throws) : m_throws(throws) {}
    std::uint64_t Size() const override { return 4; }
    std::size_t ReadAt(std::uint64_t, void*, std::size_t) override {
        if (m_throws) throw std::runtime_error("no disk");
        return 3;
    }

  private:
    const bool m_throws;
};

TEST(Content, ThatCannotBeReadAsAWholeIsAFailureOfTheStorage) {
    const Content broken(std::make_shared<Failing>(true));
    EXPECT_THROW(static_cast<void>(broken.Read()), StorageError);
    EXPECT_EQ("no disk", tests::MessageOf<Error>([&] { static_cast<void>(broken.Read()); }));
    const Content cut(std::make_shared<Failing>(false));
    EXPECT_THROW(static_cast<void>(cut.Read()), StorageError);
}

}  // namespace
}  // namespace devkit::common
