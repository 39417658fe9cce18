#include "platform/windows.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "devkit/prntvpt/client/simulatedprovider.h"

// importprobe PRINTER [PRNTVPT.DLL DEVICE-FOLDER]: lets importer.dll open and close the printer, after
// loading the simulated provider when one is named, and prints what came of it: the result, and how many
// calls the simulation saw.

namespace {

using OpenAndCloseFunction = HRESULT WINAPI(PCWSTR);

[[nodiscard]] std::filesystem::path Beside(const wchar_t* name) {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path() / name;
}

[[nodiscard]] HRESULT OpenAndClose(PCWSTR printer) {
    const HMODULE importer = LoadLibraryW(Beside(L"importer.dll").c_str());
    if (importer == nullptr) return HRESULT_FROM_WIN32(GetLastError());
    auto* const pFunction = reinterpret_cast<OpenAndCloseFunction*>(
        reinterpret_cast<void*>(GetProcAddress(importer, "OpenAndClose")));
    return pFunction == nullptr ? E_NOINTERFACE : pFunction(printer);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const std::wstring printer(argv[1], argv[1] + std::string(argv[1]).size());
        if (argc == 2) {
            std::printf("0x%08X\n", static_cast<unsigned>(OpenAndClose(printer.c_str())));
            return 0;
        }
        devkit::prntvpt::SimulatedProvider provider(argv[2]);
        provider.Configure({.device = argv[3], .printers = {}, .switches = {}});
        const HRESULT hr = OpenAndClose(printer.c_str());
        const devkit::prntvpt::ProviderReport report = provider.Report();
        std::printf("0x%08X opened %d closed %d\n", static_cast<unsigned>(hr),
                    static_cast<int>(report.counts.count("PTOpenProvider")),
                    static_cast<int>(report.counts.count("PTCloseProvider")));
        return 0;
    } catch (const std::exception& error) {
        std::printf("%s\n", error.what());
        return 1;
    }
}
