#pragma once

#include "platform/windows.h"

#include <atomic>

#include "devkit/pipeline/documentconsumer.h"
#include "devkit/pipeline/documentprovider.h"
#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// Gives the filter its reader and its writer, of the kinds that the behaviour says; the same objects each
// time. Any thread may call.
class Communicator final : public ComObject<IInterFilterCommunicator> {
  public:
    Communicator(ContextPtr context, platform::ComPtr<DocumentProvider> provider,
                 platform::ComPtr<DocumentConsumer> consumer);

    // Whether the filter was given a writer.
    [[nodiscard]] bool WriterGiven() const noexcept { return m_writerGiven; }

    HRESULT STDMETHODCALLTYPE RequestReader(void** ppReader) override;
    HRESULT STDMETHODCALLTYPE RequestWriter(void** ppWriter) override;

  private:
    template <typename Interface>
    HRESULT Request(const char* method, StreamKind kind, Interface* pStream, void** ppStream);

    const platform::ComPtr<DocumentProvider> m_provider;
    const platform::ComPtr<DocumentConsumer> m_consumer;
    std::atomic<bool> m_writerGiven = false;
};

}  // namespace devkit::pipeline
