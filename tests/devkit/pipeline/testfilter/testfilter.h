#pragma once

#include "platform/windows.h"

#include <atomic>
#include <string>

#include "platform/comobject.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace testfilter {

// {C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D10}
inline constexpr CLSID kClassId = {
    0xc1d7f0a2, 0x35d4, 0x4e0b, {0x9c, 0x53, 0x6b, 0x1c, 0x5a, 0x7e, 0x9d, 0x10}};
// The same filter, given out by DllGetClassObject without a factory.
// {C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D11}
inline constexpr CLSID kDirectClassId = {
    0xc1d7f0a2, 0x35d4, 0x4e0b, {0x9c, 0x53, 0x6b, 0x1c, 0x5a, 0x7e, 0x9d, 0x11}};

// A filter that passes the bytes of a stream on.
// {C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D12}
inline constexpr CLSID kStreamClassId = {
    0xc1d7f0a2, 0x35d4, 0x4e0b, {0x9c, 0x53, 0x6b, 0x1c, 0x5a, 0x7e, 0x9d, 0x12}};

// The objects of the module that are alive.
extern std::atomic<long> g_liveObjects;

// Whether the environment names the mode: of a module no property bag can.
bool ModeIs(const char* mode);

// Writes the whole text, in as many pieces as the stream wants. Does not close it.
HRESULT WriteAll(IPrintWriteStream* pStream, const std::string& text);

// Appends what the stream gives.
HRESULT ReadAll(IPrintReadStream* pStream, std::string& text);

class CountedObject : public platform::ReferenceCount {
  protected:
    CountedObject() noexcept { ++g_liveObjects; }
    ~CountedObject() { --g_liveObjects; }
};

// A filter that passes every part on as it came, and misbehaves in the one way that the string
// "TestFilterMode" of the driver property bag names, or else the environment variable TESTFILTER_MODE.
// Its misbehaviours are the test filter's whose names begin with "stream:".
class StreamFilter final : public platform::ComIdentity<CountedObject, IPrintPipelineFilter> {
  public:
    HRESULT STDMETHODCALLTYPE InitializeFilter(IInterFilterCommunicator* pICommunicator,
                                               IPrintPipelinePropertyBag* pIPropertyBag,
                                               IPrintPipelineManagerControl* pIPipelineControl) override;
    HRESULT STDMETHODCALLTYPE ShutdownOperation() override;
    HRESULT STDMETHODCALLTYPE StartOperation() override;

  private:
    HRESULT PassBytes(IPrintReadStream& reader, IPrintWriteStream& writer);

    std::atomic<bool> m_stop = false;
    std::string m_mode;
    platform::ComPtr<IInterFilterCommunicator> m_communicator;
    platform::ComPtr<IPrintPipelineManagerControl> m_control;
};

class TestFilter final : public platform::ComIdentity<CountedObject, IPrintPipelineFilter> {
  public:
    ~TestFilter() override;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    HRESULT STDMETHODCALLTYPE InitializeFilter(IInterFilterCommunicator* pICommunicator,
                                               IPrintPipelinePropertyBag* pIPropertyBag,
                                               IPrintPipelineManagerControl* pIPipelineControl) override;
    HRESULT STDMETHODCALLTYPE ShutdownOperation() override;
    HRESULT STDMETHODCALLTYPE StartOperation() override;

  private:
    [[nodiscard]] bool Is(const char* mode) const { return m_mode == mode; }
    HRESULT PassParts();
    HRESULT PassPart(IUnknown* pPart);
    HRESULT PassSequence(IFixedDocumentSequence* pSequence);
    HRESULT PassPage(IFixedPage* pPage);
    HRESULT OpenDoors(IFixedPage* pPage);
    HRESULT BecomeMode(IFixedPage* pPage);
    HRESULT SendSwapped(IFixedPage* pPage);
    HRESULT UseMemory();
    HRESULT PresumeOfStreams();
    HRESULT PresumeOfJob();
    HRESULT PresumeOfSequence(IFixedDocumentSequence* pSequence);
    HRESULT PresumeOfPage(IFixedPage* pPage);
    HRESULT PresumeOfPrinter();
    HRESULT UseProvider(const wchar_t* printer);
    // Whether StartOperation just goes when it comes to this.
    [[nodiscard]] bool LeavesUnsaid(HRESULT hr) const;
    HRESULT MisuseResources(IFixedPage* pPage);
    HRESULT MisuseParts(IFixedPage* pPage);
    HRESULT DeleteFont(IFixedPage* pPage);
    HRESULT MisuseThumbnail(IXpsDocument* pDocument);
    HRESULT Misread(IFixedPage* pPage);
    HRESULT Miswrite(IFixedPage* pPage);
    HRESULT WriteTicket(IFixedPage* pPage);
    HRESULT RewriteMarkup(IFixedPage* pPage);
    HRESULT UseToken(bool close);
    HRESULT Finish(HRESULT hr);

    std::atomic<bool> m_stop = false;
    std::string m_mode;
    unsigned m_pages = 0;
    const DWORD m_thread = GetCurrentThreadId();
    platform::ComPtr<IInterFilterCommunicator> m_communicator;
    platform::ComPtr<IPrintPipelinePropertyBag> m_bag;
    platform::ComPtr<IPrintPipelineManagerControl> m_control;
    platform::ComPtr<IXpsDocumentProvider> m_reader;
    platform::ComPtr<IXpsDocumentConsumer> m_writer;
    platform::ComPtr<IFixedPage> m_keptPage;
};

}  // namespace testfilter
