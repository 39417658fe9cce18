#pragma once

#include <string_view>

namespace devkit::filterhost {

// Standard output and error as UTF-8 with plain line feeds, whatever they lead to.
void PrepareConsole();
void PrintOut(std::string_view text);
void PrintError(std::string_view text);
// Whether a person watches standard error.
[[nodiscard]] bool ErrorIsConsole();

// "filterhost: TEXT", one line on standard error.
void PrintProblem(std::string_view text);

}  // namespace devkit::filterhost
