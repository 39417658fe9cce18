#include "devkit/common/bytestore.h"

#include <algorithm>
#include <cstdint>

namespace devkit::common {

struct ByteStore::File {
    std::mutex lock;
    TemporaryFile file;
};

namespace {

// A stretch of the file.
template <typename File>
class Stretch final : public ByteSource {
  public:
    Stretch(std::shared_ptr<File> file, std::uint64_t start, std::uint64_t size)
        : m_file(std::move(file)), m_start(start), m_size(size) {}

    std::uint64_t Size() const override { return m_size; }
    std::size_t ReadAt(std::uint64_t offset, void* pBuffer, std::size_t size) override {
        if (offset >= m_size) return 0;
        const std::lock_guard guard(m_file->lock);
        return m_file->file.ReadAt(m_start + offset, pBuffer,
                                   static_cast<std::size_t>(std::min<std::uint64_t>(size, m_size - offset)));
    }

  private:
    const std::shared_ptr<File> m_file;
    const std::uint64_t m_start;
    const std::uint64_t m_size;
};

}  // namespace

Content ByteStore::Keep(const std::shared_ptr<const std::string>& bytes) {
    const std::lock_guard guard(m_lock);
    if (bytes->size() <= m_inMemory) {
        m_inMemory -= bytes->size();
        return bytes;
    }
    if (m_file == nullptr) m_file = std::make_shared<File>();
    const std::lock_guard fileGuard(m_file->lock);
    const std::uint64_t start = m_file->file.Size();
    m_file->file.Append(bytes->data(), bytes->size());
    return Content(std::make_shared<Stretch<File>>(m_file, start, bytes->size()));
}

}  // namespace devkit::common
