#include "devkit/prntvpt/client/simulatedprovider.h"

#include <system_error>
#include <utility>

namespace devkit::prntvpt {
namespace {

template <typename Function>
[[nodiscard]] Function* Find(HMODULE module, const char* name) {
    // Through void*, because the compiler rightly doubts a cast from one function type to another.
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// Texts of the provider can grow between the question for their size and the call that fills them.
template <typename Function>
[[nodiscard]] std::string ReadText(Function* pFunction) {
    std::string text;
    for (SIZE_T size = pFunction(nullptr, 0); size != 0;) {
        text.resize(size);
        const SIZE_T needed = pFunction(text.data(), text.size());
        if (needed <= size) {
            text.resize(needed == 0 ? 0 : needed - 1);
            break;
        }
        size = needed;
    }
    return text;
}

}  // namespace

SimulatedProvider::SimulatedProvider(const std::filesystem::path& dll) {
    // Neither the folders of the search path nor one beside the program can take its place.
    m_module = LoadLibraryExW(std::filesystem::absolute(dll).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (m_module == nullptr) {
        throw std::runtime_error(dll.string() + ": " +
                                 std::system_category().message(static_cast<int>(GetLastError())));
    }
    m_pConfigure = Find<SimConfigureFunction>(m_module, "SimConfigure");
    m_pExpectToken = Find<SimExpectTokenFunction>(m_module, "SimExpectToken");
    m_pReport = Find<SimReportFunction>(m_module, "SimReport");
    m_pDefaultTicket = Find<SimDefaultTicketFunction>(m_module, "SimDefaultTicket");
    m_pReset = Find<SimResetFunction>(m_module, "SimReset");
    m_pFinish = Find<SimFinishFunction>(m_module, "SimFinish");
    m_pListen = Find<SimListenFunction>(m_module, "SimListen");
    if (m_pConfigure == nullptr || m_pExpectToken == nullptr || m_pReport == nullptr ||
        m_pDefaultTicket == nullptr || m_pReset == nullptr || m_pFinish == nullptr || m_pListen == nullptr) {
        throw std::runtime_error(dll.string() + ": not the simulated print ticket provider");
    }
}

SimulatedProvider::~SimulatedProvider() { m_pListen(nullptr, nullptr); }

void SimulatedProvider::Configure(const ProviderSettings& settings) {
    char error[1024] = "";
    const HRESULT hr = m_pConfigure(WriteMessage(settings).c_str(), error, sizeof(error));
    if (FAILED(hr)) throw ProviderConfigurationError(error);
}

void SimulatedProvider::ExpectToken(HANDLE token) {
    const HRESULT hr = m_pExpectToken(token);
    if (FAILED(hr)) throw std::system_error(hr & 0xFFFF, std::system_category(), "SimExpectToken");
}

std::string SimulatedProvider::DefaultTicket() const { return ReadText(m_pDefaultTicket); }

ProviderReport SimulatedProvider::Report() const { return ReadMessage<ProviderReport>(ReadText(m_pReport)); }

void SimulatedProvider::Listen(Listener listener) {
    {
        const std::lock_guard guard(m_lock);
        m_pListener = listener ? std::make_shared<const Listener>(std::move(listener)) : nullptr;
    }
    m_pListen(Forward, this);
}

void WINAPI SimulatedProvider::Forward(void* pProvider, const char* pCall) {
    auto& provider = *static_cast<SimulatedProvider*>(pProvider);
    try {
        std::shared_ptr<const Listener> pListener;
        {
            const std::lock_guard guard(provider.m_lock);
            pListener = provider.m_pListener;
        }
        if (pListener) (*pListener)(ReadMessage<ProviderCall>(pCall));
    } catch (...) {
        // The call that is told of belongs to somebody else.
    }
}

void SimulatedProvider::Reset() { m_pReset(); }

void SimulatedProvider::Finish() { m_pFinish(); }

}  // namespace devkit::prntvpt
