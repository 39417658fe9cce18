#include "base/logging/log.h"

#include <cstdio>
#include <cwchar>
#include <stdexcept>

namespace base::logging {
namespace {

// The standard lets a va_list be walked once, and measuring walks it.
class ArgumentsCopy {
  public:
    explicit ArgumentsCopy(va_list source) noexcept { va_copy(list, source); }
    ArgumentsCopy(const ArgumentsCopy&) = delete;
    ArgumentsCopy& operator=(const ArgumentsCopy&) = delete;
    ~ArgumentsCopy() { va_end(list); }

    va_list list;
};

int Measure(const char* format, va_list arguments) { return _vscprintf(format, arguments); }
int Measure(const wchar_t* format, va_list arguments) { return _vscwprintf(format, arguments); }

int Print(char* buffer, std::size_t count, const char* format, va_list arguments) {
    return vsprintf_s(buffer, count, format, arguments);
}
int Print(wchar_t* buffer, std::size_t count, const wchar_t* format, va_list arguments) {
    return vswprintf_s(buffer, count, format, arguments);
}

template <typename Character>
std::basic_string<Character> FormatInto(const Character* format, va_list arguments) {
    if (format == nullptr) throw std::invalid_argument(Located("pMessage is null."));
    ArgumentsCopy measured(arguments);
    const int length = Measure(format, measured.list);
    if (length < 0) throw std::runtime_error(Located("the format cannot be printed."));
    std::basic_string<Character> text(static_cast<std::size_t>(length), Character());
    // A string's storage has room for the terminator behind its last character.
    if (Print(text.data(), text.size() + 1, format, arguments) != length) {
        throw std::runtime_error(Located("the format cannot be printed."));
    }
    return text;
}

}  // namespace

std::string FormatV(const char* format, va_list arguments) { return FormatInto(format, arguments); }
std::wstring FormatV(const wchar_t* format, va_list arguments) { return FormatInto(format, arguments); }

std::string Format(const char* format, ...) {
    if (format == nullptr) throw std::invalid_argument(Located("pMessage is null"));
    va_list started;
    va_start(started, format);
    ArgumentsCopy arguments(started);
    va_end(started);
    return FormatV(format, arguments.list);
}

std::wstring Format(const wchar_t* format, ...) {
    if (format == nullptr) throw std::invalid_argument(Located("pMessage is null"));
    va_list started;
    va_start(started, format);
    ArgumentsCopy arguments(started);
    va_end(started);
    return FormatV(format, arguments.list);
}

const char* SourcePath(const std::source_location& where) noexcept {
    const std::string_view path = where.file_name();
    for (std::size_t end = path.size(); (end = path.rfind("src", end)) != std::string_view::npos; --end) {
        const auto isSeparator = [](char c) { return c == '/' || c == '\\'; };
        const bool startsHere = end == 0 || isSeparator(path[end - 1]);
        if (startsHere && end + 3 < path.size() && isSeparator(path[end + 3])) return path.data() + end + 4;
        if (end == 0) break;
    }
    return path.data();
}

std::string Located(std::string_view message, const std::source_location& where) {
    return Format("%s(%d) : %s\n", SourcePath(where), static_cast<int>(where.line()),
                  std::string(message).c_str());
}

}  // namespace base::logging
