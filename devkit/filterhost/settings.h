#pragma once

#include "platform/windows.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace devkit::filterhost {

// {8A9F4692-E8BA-4533-B859-E56B1EA16586}, the page-validation filter.
inline constexpr CLSID kDefaultFilterClass = {
    0x8a9f4692, 0xe8ba, 0x4533, {0xb8, 0x59, 0xe5, 0x6b, 0x1e, 0xa1, 0x65, 0x86}};

// What `filterhost run` was asked for. Texts are UTF-8.
struct RunSettings {
    std::vector<std::filesystem::path> inputs;
    std::optional<std::filesystem::path> output;
    std::optional<std::filesystem::path> outputFolder;
    std::filesystem::path filter;
    CLSID filterClass = kDefaultFilterClass;
    std::string device = "simprinter";
    std::optional<std::string> printer;
    std::optional<std::filesystem::path> userTicket;
    std::string nsPrefix = "krk";
    std::optional<LONG> teskType;
    bool driverProperties = true;
    std::vector<std::string> providerSwitches;  // "KEY=VALUE"
    bool systemProvider = false;
    std::optional<std::filesystem::path> json;
    bool quiet = false;
    unsigned cancelAt = 0;
};

struct InspectSettings {
    std::vector<std::filesystem::path> inputs;
};

}  // namespace devkit::filterhost
