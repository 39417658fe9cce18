#include "devkit/filterhost/childprocess.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

#include "devkit/common/startprocess.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"

namespace devkit::filterhost {
namespace {

[[noreturn]] void ThrowLastError(const char* what) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

struct Pipe {
    UniqueHandle read;
    UniqueHandle write;

    Pipe() {
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        if (!CreatePipe(&readEnd, &writeEnd, nullptr, 0)) ThrowLastError("CreatePipe");
        read.reset(readEnd);
        write.reset(writeEnd);
    }
};

[[nodiscard]] std::wstring HandleText(const UniqueHandle& handle) {
    return std::to_wstring(reinterpret_cast<std::uintptr_t>(handle.get()));
}

// A handle that processes inherit while this lives.
class Inherited {
  public:
    explicit Inherited(const UniqueHandle& handle) : m_handle(handle.get()) {
        if (!SetHandleInformation(m_handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT))
            ThrowLastError("SetHandleInformation");
    }
    Inherited(const Inherited&) = delete;
    Inherited& operator=(const Inherited&) = delete;
    ~Inherited() { SetHandleInformation(m_handle, HANDLE_FLAG_INHERIT, 0); }

  private:
    HANDLE m_handle;
};

// Starts the program so that it inherits these two handles. Both are inheritable only under the lock, or a
// child that is started at the same time would inherit them too and keep the pipes open.
[[nodiscard]] UniqueHandle Start(std::wstring_view command, const UniqueHandle& read,
                                 const UniqueHandle& write) {
    static std::mutex s_starting;
    const std::lock_guard guard(s_starting);
    const std::wstring program = ProgramPath().wstring();
    std::wstring line = L"\"" + program + L"\" ";
    line.append(command).append(L" ").append(HandleText(read)).append(L" ").append(HandleText(write));
    const Inherited inheritedRead(read);
    const Inherited inheritedWrite(write);
    return common::StartProcess(program, std::move(line));
}

// False when the pipe has no more.
[[nodiscard]] bool ReadSome(HANDLE pipe, std::string& text) {
    std::array<char, 65536> block;
    DWORD count = 0;
    if (!::ReadFile(pipe, block.data(), static_cast<DWORD>(block.size()), &count, nullptr) || count == 0)
        return false;
    text.append(block.data(), count);
    return true;
}

// False when nobody reads any longer.
bool WriteWhole(HANDLE pipe, std::string_view text) noexcept {
    while (!text.empty()) {
        DWORD count = 0;
        if (!::WriteFile(pipe, text.data(), static_cast<DWORD>(text.size()), &count, nullptr)) return false;
        text.remove_prefix(count);
    }
    return true;
}

// Takes the first line off the text; nothing when it holds none.
[[nodiscard]] std::optional<std::string> TakeLine(std::string& text) {
    const std::size_t end = text.find('\n');
    if (end == std::string::npos) return std::nullopt;
    std::string line = text.substr(0, end);
    text.erase(0, end + 1);
    return line;
}

// The handle that the argument is, a number, of a process with that command.
[[nodiscard]] HANDLE PassedHandle(std::string_view argument, std::string_view command) {
    std::uintptr_t number = 0;
    const auto [pEnd, error] = std::from_chars(argument.data(), argument.data() + argument.size(), number);
    if (error != std::errc() || pEnd != argument.data() + argument.size())
        throw UsageError(std::string(command) + " is a command of the program's own");
    return reinterpret_cast<HANDLE>(number);
}

}  // namespace

ChildProcess::ChildProcess(std::wstring_view command) {
    Pipe commands;
    Pipe answers;
    m_process = Start(command, commands.read, answers.write);
    m_write = std::move(commands.write);
    m_read = std::move(answers.read);
    // The child has its own by now; the pipe of answers ends when the child does.
    commands.read.reset();
    answers.write.reset();
    m_reader = std::thread([this] { ReadLines(); });
}

ChildProcess::~ChildProcess() {
    // A child whose commands have ended leaves by itself.
    m_write.reset();
    static_cast<void>(ExitCode());
    m_reader.join();
}

void ChildProcess::ReadLines() {
    std::string text;
    std::size_t searched = 0;
    while (ReadSome(m_read.get(), text)) {
        std::size_t start = 0;
        const std::lock_guard guard(m_lock);
        for (std::size_t end; (end = text.find('\n', searched)) != std::string::npos; searched = start) {
            m_lines.push_back(text.substr(start, end - start));
            start = end + 1;
        }
        text.erase(0, start);
        searched = text.size();
        m_changed.notify_all();
    }
    const std::lock_guard guard(m_lock);
    m_ended = true;
    m_changed.notify_all();
}

void ChildProcess::Send(std::string_view line) { WriteWhole(m_write.get(), std::string(line) + "\n"); }

ChildProcess::Got ChildProcess::Read(std::string& line, Clock::time_point deadline) {
    std::unique_lock guard(m_lock);
    m_changed.wait_until(guard, deadline, [this] { return m_ended || !m_lines.empty(); });
    if (!m_lines.empty()) {
        line = std::move(m_lines.front());
        m_lines.pop_front();
        return Got::Line;
    }
    return m_ended ? Got::End : Got::Nothing;
}

DWORD ChildProcess::ExitCode() const {
    constexpr DWORD kTimeToLeave = 5000;
    if (WaitForSingleObject(m_process.get(), kTimeToLeave) != WAIT_OBJECT_0) {
        TerminateProcess(m_process.get(), 1);
    }
    WaitForSingleObject(m_process.get(), INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(m_process.get(), &code);
    return code;
}

ParentProcess::ParentProcess(std::string_view read, std::string_view write, std::string_view command)
    : m_read(PassedHandle(read, command)), m_write(PassedHandle(write, command)) {
    SetHandleInformation(m_read.get(), HANDLE_FLAG_INHERIT, 0);
    SetHandleInformation(m_write.get(), HANDLE_FLAG_INHERIT, 0);
    SetConsoleCtrlHandler(nullptr, TRUE);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

std::optional<std::string> ParentProcess::Read() {
    for (;;) {
        if (std::optional<std::string> line = TakeLine(m_rest)) return line;
        if (!ReadSome(m_read.get(), m_rest)) return std::nullopt;
    }
}

void ParentProcess::Tell(std::string_view line) {
    const std::string text = std::string(line) + "\n";
    const std::lock_guard guard(m_lock);
    WriteWhole(m_write.get(), text);
}

void ParentProcess::TellLast(std::string_view line) noexcept {
    const bool locked = m_lock.try_lock_for(std::chrono::seconds(1));
    WriteWhole(m_write.get(), line);
    if (locked) m_lock.unlock();
}

}  // namespace devkit::filterhost
