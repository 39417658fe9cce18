#include "base/xps/blockstreambuffer.h"

#include <stdexcept>

#include "base/logging/check.h"

namespace base::xps {

BlockStreamBuffer::BlockStreamBuffer(std::streambuf& target) : m_target(target) {
    setp(m_block.data(), m_block.data() + m_block.size());
}

BlockStreamBuffer::int_type BlockStreamBuffer::overflow(int_type character) {
    HandOn();
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(character);
        pbump(1);
    }
    return traits_type::not_eof(character);
}

int BlockStreamBuffer::sync() {
    HandOn();
    return 0;
}

void BlockStreamBuffer::HandOn() {
    for (const char* next = pbase(); next < pptr();) {
        const std::streamsize taken = m_target.sputn(next, pptr() - next);
        if (taken <= 0) logging::Throw<std::overflow_error>("the stream takes no more data.");
        next += taken;
    }
    setp(m_block.data(), m_block.data() + m_block.size());
}

}  // namespace base::xps
