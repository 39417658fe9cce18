#include "devkit/validate/configuration.h"

#include <algorithm>
#include <array>
#include <string>
#include <system_error>
#include <vector>

#include "devkit/common/file.h"
#include "devkit/common/json.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "devkit/pipeline/runoptions.h"
#include "devkit/validate/battery.h"
#include "platform/utf.h"

namespace devkit::validate {
namespace {

using filterhost::ValidateSettings;
using Json = nlohmann::json;
using Path = std::filesystem::path;
using Strings = std::vector<std::string>;

Path PathIn(const Path& folder, const std::string& text) { return folder / platform::ToUtf16(text); }

// In front of what the command line has, so that the command line's are the last, which count.
void TakeProperties(const Json& json, Strings& values) {
    const auto given = json.get<Strings>();
    for (const std::string& text : given) static_cast<void>(pipeline::ParseProperty(text));
    values.insert(values.begin(), given.begin(), given.end());
}

void TakeDevice(const Json& json, const Path& folder, ValidateSettings& settings) {
    if (settings.isDeviceGiven) return;
    const auto device = json.get<std::string>();
    // A folder beside the file, or a model by its name.
    std::error_code ignored;
    const Path path = PathIn(folder, device);
    settings.host.device = std::filesystem::is_directory(path, ignored) ? common::PathText(path) : device;
}

void TakeLeftOut(const Json& json, ValidateSettings& settings) {
    for (const auto& [name, reason] : json.items()) {
        if (std::ranges::find(Battery(), name, &Test::name) == Battery().end())
            throw filterhost::UsageError("there is no test " + name + " to leave out");
        settings.leftOut[name] = reason.get<std::string>();
        if (settings.leftOut[name].empty())
            throw filterhost::UsageError("the test " + name + " is left out without a reason");
    }
}

void TakeEntry(const std::string& key, const Json& value, const Path& folder, ValidateSettings& settings) {
    if (key == "documents") {
        for (const std::string& text : value.get<Strings>())
            settings.documents.push_back(PathIn(folder, text));
    } else if (key == "device") {
        TakeDevice(value, folder, settings);
    } else if (key == "properties") {
        TakeProperties(value, settings.host.properties);
    } else if (key == "driverProperties") {
        TakeProperties(value, settings.host.driverValues);
    } else if (key == "queueProperties") {
        TakeProperties(value, settings.host.queueValues);
    } else if (key == "leaveOut") {
        TakeLeftOut(value, settings);
    } else {
        throw filterhost::UsageError("\"" + key +
                                     "\" is none of documents, device, properties, driverProperties, "
                                     "queueProperties, leaveOut");
    }
}

}  // namespace

std::optional<Path> FindConfiguration(const Path& dll) {
    for (Path folder = dll.parent_path();; folder = folder.parent_path()) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(folder / "filterhost.json", ignored))
            return folder / "filterhost.json";
        if (!folder.has_relative_path()) return std::nullopt;
    }
}

void ApplyConfiguration(const Path& file, ValidateSettings& settings) {
    const std::string name = common::PathText(file);
    try {
        const Json json = common::ParseJson(filterhost::ReadFile(file, "filterhost.json"));
        for (const auto& [key, value] : json.items()) TakeEntry(key, value, file.parent_path(), settings);
    } catch (const nlohmann::json::exception& error) {
        throw filterhost::UsageError(name + ": " + error.what());
    } catch (const pipeline::SwitchError& error) {
        throw filterhost::UsageError(name + ": " + error.what());
    } catch (const filterhost::UsageError& error) {
        throw filterhost::UsageError(name + ": " + error.what());
    }
}

}  // namespace devkit::validate
