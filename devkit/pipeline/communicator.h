#pragma once

#include "platform/windows.h"

#include <atomic>

#include "devkit/pipeline/runcontext.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// An object as an interface of its own, as the out pointers of the communicator give it.
struct StreamEnd {
    template <typename Interface, typename Object>
    [[nodiscard]] static StreamEnd Of(const platform::ComPtr<Object>& object) {
        Interface* const pInterface = object.Get();
        return {platform::ComPtr<IUnknown>(pInterface), pInterface};
    }

    platform::ComPtr<IUnknown> owner;
    void* pInterface = nullptr;
};

// Gives the filter its reader and its writer, of the kinds that the behaviour says; the same objects each
// time. Any thread may call.
class Communicator final : public ComObject<IInterFilterCommunicator> {
  public:
    Communicator(ContextPtr context, StreamEnd reader, StreamEnd writer);

    // Whether the filter was given a writer.
    [[nodiscard]] bool WriterGiven() const noexcept { return m_writerGiven; }

    HRESULT STDMETHODCALLTYPE RequestReader(void** ppReader) override;
    HRESULT STDMETHODCALLTYPE RequestWriter(void** ppWriter) override;

  private:
    HRESULT Request(const char* method, StreamKind kind, const StreamEnd& end, void** ppStream);

    const StreamEnd m_reader;
    const StreamEnd m_writer;
    std::atomic<bool> m_writerGiven = false;
};

}  // namespace devkit::pipeline
