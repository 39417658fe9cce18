#pragma once

#include "platform/windows.h"

#include <string>

#include "devkit/pipeline/comobject.h"
#include "devkit/pipeline/readstream.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// The object of the "PerUserPrintTicket" property: each call gives a new stream at its start.
class ReadStreamFactory final : public ComObject<IPrintReadStreamFactory> {
  public:
    ReadStreamFactory(ContextPtr context, std::string name, Bytes bytes);

    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) override;

  private:
    std::string m_name;
    Bytes m_bytes;
};

}  // namespace devkit::pipeline
