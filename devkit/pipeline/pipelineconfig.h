#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>
#include <vector>

#include "devkit/pipeline/filterstage.h"

namespace devkit::pipeline {

// A filter as a driver's pipeline configuration names it.
struct ConfiguredFilter {
    std::string name;  // the DLL's where the configuration gives none
    std::string dll;   // as written: a file name, which stands beside the configuration
    CLSID clsid{};
    DataKind input = DataKind::Xps;
    DataKind output = DataKind::Xps;
};

// Reads a "...-pipelineconfig.xml" of a driver: the Filter elements in their order, each with its Input and
// Output. What else a configuration may hold is passed over. Throws common::Error, naming the configuration
// by `where`, for what is none, and for an interface that goes between no filters.
[[nodiscard]] std::vector<ConfiguredFilter> ReadPipelineConfig(std::string_view markup,
                                                               const std::string& where);

}  // namespace devkit::pipeline
