#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <memory>
#include <string>

#include "devkit/pipeline/comobject.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// The bytes of a part, never changed once they are shared.
using Bytes = std::shared_ptr<const std::string>;

// A read stream over bytes in memory, for one thread at a time. Reads deliver at most what the switches
// allow. A position after the end is permitted and reads nothing; one before the start gives STG_E_SEEKERROR,
// an unknown origin STG_E_INVALIDFUNCTION, and the position stays.
class ReadStream final : public ComObject<IPrintReadStream> {
  public:
    // `name` is the part's, for descriptions.
    ReadStream(ContextPtr context, const std::string& name, Bytes bytes);

    HRESULT STDMETHODCALLTYPE Seek(LONGLONG offset, DWORD origin, ULONGLONG* pNewPosition) override;
    HRESULT STDMETHODCALLTYPE ReadBytes(void* pBuffer, ULONG cbWanted, ULONG* pcbRead,
                                        BOOL* pEndOfFile) override;

  private:
    std::string m_name;
    Bytes m_bytes;
    std::uint64_t m_position = 0;
};

}  // namespace devkit::pipeline
