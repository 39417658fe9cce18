#include "devkit/common/hresult.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace devkit::common {
namespace {

struct Named {
    unsigned long code;
    const char* name;
};

// The codes that filters and the parts of the platform that they call are known to answer.
constexpr auto kCodes = std::to_array<Named>({
    {0x00000000, "S_OK"},
    {0x00000001, "S_FALSE"},
    {0x00040001, "S_PT_NO_CONFLICT"},
    {0x00040002, "S_PT_CONFLICT_RESOLVED"},
    {0x8000000A, "E_PENDING"},
    {0x8000000B, "E_BOUNDS"},
    {0x8000000D, "E_ILLEGAL_STATE_CHANGE"},
    {0x8000000E, "E_ILLEGAL_METHOD_CALL"},
    {0x8000FFFF, "E_UNEXPECTED"},
    {0x80004001, "E_NOTIMPL"},
    {0x80004002, "E_NOINTERFACE"},
    {0x80004003, "E_POINTER"},
    {0x80004004, "E_ABORT"},
    {0x80004005, "E_FAIL"},
    {0x80010106, "RPC_E_CHANGED_MODE"},
    {0x80020005, "DISP_E_TYPEMISMATCH"},
    {0x80020008, "DISP_E_BADVARTYPE"},
    {0x80030001, "STG_E_INVALIDFUNCTION"},
    {0x80030008, "STG_E_INSUFFICIENTMEMORY"},
    {0x80030009, "STG_E_INVALIDPOINTER"},
    {0x80030019, "STG_E_SEEKERROR"},
    {0x8003001D, "STG_E_WRITEFAULT"},
    {0x8003001E, "STG_E_READFAULT"},
    {0x80030070, "STG_E_MEDIUMFULL"},
    {0x80040003, "E_PRINTTICKET_FORMAT"},
    {0x80040004, "E_PRINTCAPABILITIES_FORMAT"},
    {0x80040005, "E_DELTA_PRINTTICKET_FORMAT"},
    {0x80040006, "E_PRINTDEVICECAPABILITIES_FORMAT"},
    {0x80040110, "CLASS_E_NOAGGREGATION"},
    {0x80040111, "CLASS_E_CLASSNOTAVAILABLE"},
    {0x80040154, "REGDB_E_CLASSNOTREG"},
    {0x800401F0, "CO_E_NOTINITIALIZED"},
    {0x80070002, "ERROR_FILE_NOT_FOUND"},
    {0x80070005, "E_ACCESSDENIED"},
    {0x80070006, "E_HANDLE"},
    {0x8007000D, "ERROR_INVALID_DATA"},
    {0x8007000E, "E_OUTOFMEMORY"},
    {0x80070032, "ERROR_NOT_SUPPORTED"},
    {0x80070057, "E_INVALIDARG"},
    {0x8007007E, "ERROR_MOD_NOT_FOUND"},
    {0x8007007F, "ERROR_PROC_NOT_FOUND"},
    {0x800700C1, "ERROR_BAD_EXE_FORMAT"},
    {0x80070490, "E_ELEMENT_NOT_FOUND"},
    {0x800704C7, "ERROR_CANCELLED"},
    {0x800706BA, "RPC_S_SERVER_UNAVAILABLE"},
    {0x80070709, "ERROR_INVALID_PRINTER_NAME"},
});

const char* Find(HRESULT hr) {
    for (const Named& named : kCodes) {
        if (static_cast<HRESULT>(named.code) == hr) return named.name;
    }
    return nullptr;
}

}  // namespace

std::string HexOf(HRESULT hr) {
    std::array<char, 11> text{};
    std::snprintf(text.data(), text.size(), "0x%08lX", static_cast<unsigned long>(hr));
    return text.data();
}

std::string NameOf(HRESULT hr) {
    const char* name = Find(hr);
    return name == nullptr ? HexOf(hr) : name;
}

std::optional<HRESULT> ParseHresult(std::string_view text) {
    for (const Named& named : kCodes) {
        if (text == named.name) return static_cast<HRESULT>(named.code);
    }
    if (!text.starts_with("0x")) return std::nullopt;
    unsigned long code = 0;
    const auto [pEnd, error] = std::from_chars(text.data() + 2, text.data() + text.size(), code, 16);
    if (error != std::errc() || pEnd != text.data() + text.size()) return std::nullopt;
    return static_cast<HRESULT>(code);
}

std::string Describe(HRESULT hr) {
    const char* name = Find(hr);
    return name == nullptr ? HexOf(hr) : HexOf(hr) + " " + name;
}

}  // namespace devkit::common
