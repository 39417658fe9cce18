#include "memorystream.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <utility>

namespace devkit::prntvpt {

platform::ComPtr<MemoryStream> MemoryStream::Make(std::string bytes, std::size_t position) {
    return tests::MakeMock<MemoryStream>(std::move(bytes), position);
}

HRESULT MemoryStream::Read(void* pBuffer, ULONG cb, ULONG* pcbRead) {
    ++m_reads;
    std::this_thread::sleep_for(m_time);
    if (IsAtZero()) return STG_E_INVALIDFUNCTION;
    if (FAILED(m_readResult)) return m_readResult;
    const std::size_t left = m_bytes.size() - std::min(m_position, m_bytes.size());
    const std::size_t count = std::min<std::size_t>({cb, m_most, left});
    if (count != 0) std::memcpy(pBuffer, m_bytes.data() + m_position, count);
    m_position += count;
    *pcbRead = static_cast<ULONG>(count);
    return m_tellsEnd && m_position >= m_bytes.size() ? S_FALSE : S_OK;
}

HRESULT MemoryStream::Write(const void* pBuffer, ULONG cb, ULONG* pcbWritten) {
    std::this_thread::sleep_for(m_time);
    if (IsAtZero()) return STG_E_INVALIDFUNCTION;
    if (FAILED(m_writeResult)) return m_writeResult;
    const std::size_t count = std::min(cb, m_most);
    if (m_bytes.size() < m_position + count) m_bytes.resize(m_position + count);
    std::memcpy(m_bytes.data() + m_position, pBuffer, count);
    m_position += count;
    if (pcbWritten != nullptr) *pcbWritten = static_cast<ULONG>(count);
    return S_OK;
}

HRESULT MemoryStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* pPosition) {
    ++m_seeks;
    const LONGLONG from = origin == STREAM_SEEK_SET   ? 0
                          : origin == STREAM_SEEK_CUR ? static_cast<LONGLONG>(m_position)
                                                      : static_cast<LONGLONG>(m_bytes.size());
    if (from + move.QuadPart < 0) return STG_E_INVALIDFUNCTION;
    m_position = static_cast<std::size_t>(from + move.QuadPart);
    if (pPosition != nullptr) pPosition->QuadPart = m_position;
    return S_OK;
}

}  // namespace devkit::prntvpt
