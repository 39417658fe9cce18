#include "base/logging/exceptions.h"

#include <memory>
#include <sstream>

#include "base/logging/log.h"

namespace base::exception {
namespace {

struct LocalFreeDeleter {
    void operator()(char* text) const noexcept { LocalFree(text); }
};

std::string SystemText(HRESULT hr) {
    constexpr DWORD kNeutralDefault = MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT);
    char* buffer = nullptr;
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
                       static_cast<DWORD>(hr), kNeutralDefault, reinterpret_cast<char*>(&buffer), 0, nullptr);
    const std::unique_ptr<char, LocalFreeDeleter> owner(buffer);
    if (length != 0) return std::string(buffer, length);

    std::ostringstream text;
    text << "Unknown error 0x" << std::hex << static_cast<unsigned long>(hr) << std::dec << std::endl;
    return text.str();
}

}  // namespace

HresultError::HresultError(HRESULT hr, const char* file, int line)
    : m_hr(hr), m_message(base::logging::Format("%s(%d) : %s\n", file, line, SystemText(hr).c_str())) {}

}  // namespace base::exception
