#include "devkit/filterhost/console.h"

#include "platform/windows.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <string>

#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

void Print(DWORD which, std::FILE* file, std::string_view text) {
    const HANDLE handle = GetStdHandle(which);
    DWORD mode = 0;
    if (GetConsoleMode(handle, &mode)) {
        const std::wstring wide = platform::ToUtf16(text);
        DWORD written = 0;
        WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
        return;
    }
    std::fwrite(text.data(), 1, text.size(), file);
    std::fflush(file);
}

}  // namespace

void PrepareConsole() {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

void PrintOut(std::string_view text) { Print(STD_OUTPUT_HANDLE, stdout, text); }

void PrintError(std::string_view text) { Print(STD_ERROR_HANDLE, stderr, text); }

bool ErrorIsConsole() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

void PrintProblem(std::string_view text) { PrintError("filterhost: " + std::string(text) + "\n"); }

}  // namespace devkit::filterhost
