#include "devkit/filterhost/program.h"

#include "platform/windows.h"

#include <fstream>
#include <iterator>
#include <thread>
#include <utility>

#include "devkit/common/startprocess.h"
#include "devkit/filterhost/files.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using common::UniqueHandle;
using Path = std::filesystem::path;

struct Pipe {
    UniqueHandle read;
    UniqueHandle write;

    Pipe() {
        SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        CreatePipe(&readEnd, &writeEnd, &inherited, 0);
        read.reset(readEnd);
        write.reset(writeEnd);
        SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    }
    std::string ReadAll() {
        std::string text;
        char block[4096];
        DWORD count = 0;
        while (::ReadFile(read.get(), block, sizeof(block), &count, nullptr) && count > 0)
            text.append(block, count);
        return text;
    }
};

// Quoted as CommandLineToArgvW undoes it.
std::wstring Quoted(const std::wstring& argument) {
    std::wstring text = L"\"";
    std::size_t slashes = 0;
    for (const wchar_t letter : argument) {
        slashes = letter == L'\\' ? slashes + 1 : 0;
        if (letter == L'"') text += L'\\';
        text += letter;
    }
    return text + std::wstring(slashes, L'\\') + L"\"";
}

}  // namespace

Ended RunProgram(const std::vector<std::string>& arguments, const char* mode) {
    const std::wstring program = (ProgramFolder() / "filterhost.exe").wstring();
    std::wstring line = Quoted(program);
    for (const std::string& argument : arguments) line += L" " + Quoted(platform::ToUtf16(argument));
    SetEnvironmentVariableA("TESTFILTER_MODE", mode);
    Pipe out;
    Pipe error;
    STARTUPINFOW start{};
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = out.write.get();
    start.hStdError = error.write.get();
    const UniqueHandle process = common::StartProcess(program, std::move(line), start);
    out.write.reset();
    error.write.reset();
    Ended ended;
    std::thread reader([&] { ended.error = error.ReadAll(); });
    std::thread watchdog([&] {
        if (WaitForSingleObject(process.get(), 120000) == WAIT_TIMEOUT) TerminateProcess(process.get(), 9999);
    });
    ended.out = out.ReadAll();
    reader.join();
    watchdog.join();
    GetExitCodeProcess(process.get(), &ended.status);
    return ended;
}

std::vector<std::string> RunArguments(std::vector<std::string> more) {
    std::vector<std::string> arguments{"run", "--filter", Text(ProgramFolder() / "testfilter.dll"), "--clsid",
                                       "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D10}"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

Reported RunReported(const std::string& folder, const char* mode, const std::vector<std::string>& more) {
    const Path fresh = FreshFolder(folder);
    const Path output = fresh / "o.xps";
    const Path report = fresh / "r.json";
    std::vector<std::string> arguments =
        RunArguments({Text(Sample("minimal.xps")), "-o", Text(output), "--json", Text(report)});
    arguments.insert(arguments.end(), more.begin(), more.end());
    Ended ended = RunProgram(arguments, mode);
    return {std::move(ended), output, ReportedInputs(report)};
}

Path FreshFolder(const std::string& name) {
    const Path folder = ProgramFolder() / "test-output" / platform::ToUtf16(name);
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder;
}

std::string Text(const Path& path) { return platform::ToUtf8(path.wstring()); }

std::string FileBytes(const Path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

nlohmann::json ReportedInputs(const Path& report) {
    return nlohmann::json::parse(FileBytes(report)).at("inputs");
}

Path Sample(const std::string& name) { return Path(SAMPLES_FOLDER) / name; }

}  // namespace devkit::filterhost
