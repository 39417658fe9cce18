#pragma once

#include <array>
#include <streambuf>

namespace base::xps {

// Gathers what is written and hands it on to another stream buffer in large blocks, because each call of a
// pipeline's stream has its price. What still waits is handed on by a flush (pubsync) and by nothing else:
// the destructor drops it, so a page that failed half-way gets no more text.
//
// A target that takes a part of a block gets the rest again; one that takes nothing, or throws, makes the
// write throw (std::overflow_error for the former).
class BlockStreamBuffer : public std::streambuf {
  public:
    // The target must outlive this object.
    explicit BlockStreamBuffer(std::streambuf& target);
    BlockStreamBuffer(const BlockStreamBuffer&) = delete;
    BlockStreamBuffer& operator=(const BlockStreamBuffer&) = delete;

  protected:
    int_type overflow(int_type character) override;
    int sync() override;

  private:
    void HandOn();

    std::streambuf& m_target;
    std::array<char, 64 * 1024> m_block;
};

}  // namespace base::xps
