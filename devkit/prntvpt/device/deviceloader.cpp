#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string_view>
#include <utility>

#include "devkit/common/json.h"
#include "devkit/printschema/reader.h"
#include "devkit/prntvpt/device/device.h"
#include "platform/utf.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

using Json = nlohmann::json;
using Path = std::filesystem::path;
using Prefixes = std::vector<PrefixBinding>;

constexpr int kMaxExtensions = 8;

// What is wrong in device.json; whoever knows the path adds it.
class Problem : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

[[nodiscard]] std::string ReadFile(const Path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw DeviceError(platform::ToUtf8(path.native()) + ": cannot be read");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void RequireKeys(const Json& object, std::initializer_list<std::string_view> allowed) {
    if (!object.is_object()) throw Problem("an object is expected");
    for (const auto& item : object.items()) {
        if (std::find(allowed.begin(), allowed.end(), item.key()) == allowed.end()) {
            throw Problem("unknown key \"" + item.key() + "\"");
        }
    }
}

// The prefixes in the JSON are those that the capabilities declare.
[[nodiscard]] QName Resolve(const std::string& text, const Prefixes& prefixes) {
    const std::size_t colon = text.find(':');
    for (const PrefixBinding& binding : prefixes) {
        if (colon != std::string::npos && text.compare(0, colon, binding.prefix) == 0) {
            return {binding.uri, text.substr(colon + 1)};
        }
    }
    throw Problem("the prefix of \"" + text + "\" is not declared by the capabilities");
}

[[nodiscard]] Margins ReadMargins(const Json& json) {
    RequireKeys(json, {"left", "top", "right", "bottom"});
    return {json.at("left").get<std::int64_t>(), json.at("top").get<std::int64_t>(),
            json.at("right").get<std::int64_t>(), json.at("bottom").get<std::int64_t>()};
}

[[nodiscard]] Condition ReadCondition(const Json& json, const Prefixes& prefixes) {
    RequireKeys(json, {"feature", "one_of", "none_of", "scored_property", "above"});
    Condition condition;
    condition.feature = Resolve(json.at("feature").get<std::string>(), prefixes);
    if (json.contains("above")) {
        condition.kind = Condition::Kind::Above;
        condition.scoredProperty = Resolve(json.at("scored_property").get<std::string>(), prefixes);
        condition.limit = json.at("above").get<std::int64_t>();
        return condition;
    }
    const bool none = json.contains("none_of");
    condition.kind = none ? Condition::Kind::NoneOf : Condition::Kind::OneOf;
    for (const Json& option : json.at(none ? "none_of" : "one_of")) {
        condition.options.push_back(Resolve(option.get<std::string>(), prefixes));
    }
    return condition;
}

[[nodiscard]] Constraint ReadConstraint(const Json& json, const Prefixes& prefixes) {
    RequireKeys(json, {"when", "with", "set"});
    const Json& set = json.at("set");
    RequireKeys(set, {"feature", "option"});
    return {ReadCondition(json.at("when"), prefixes), ReadCondition(json.at("with"), prefixes),
            Resolve(set.at("feature").get<std::string>(), prefixes),
            Resolve(set.at("option").get<std::string>(), prefixes)};
}

void ReadSettings(const Json& json, const Prefixes& prefixes, Device& device) {
    RequireKeys(
        json, {"description", "extends", "printers", "margins", "option_margins", "constraints", "variants"});
    if (json.contains("printers")) device.printers = json.at("printers").get<std::vector<std::string>>();
    if (json.contains("margins")) device.margins = ReadMargins(json.at("margins"));
    if (json.contains("option_margins")) {
        device.optionMargins.clear();
        for (const auto& item : json.at("option_margins").items()) {
            device.optionMargins[Resolve(item.key(), prefixes)] = ReadMargins(item.value());
        }
    }
    if (json.contains("constraints")) {
        device.constraints.clear();
        for (const Json& constraint : json.at("constraints")) {
            device.constraints.push_back(ReadConstraint(constraint, prefixes));
        }
    }
    if (json.contains("variants")) {
        for (const Json& variant : json.at("variants")) {
            device.variants.push_back(variant.get<std::string>());
        }
    }
}

// Takes the document where the folder has one; else that of the model that is extended stays.
void ReadDocument(const Path& path, Tag root, Element& element, Prefixes* pPrefixes) {
    if (!std::filesystem::exists(path) && !element.children.empty()) return;
    try {
        FrameworkDocument document = ReadFramework(ReadFile(path), root);
        element = std::move(document.root);
        if (pPrefixes != nullptr) *pPrefixes = std::move(document.prefixes);
    } catch (const FormatError& error) {
        throw DeviceError(platform::ToUtf8(path.native()) + ": " + error.what());
    }
}

void ReadModel(const Path& folder, int extensions, Device& device, Prefixes& prefixes) {
    const Path path = folder / "device.json";
    const std::string text = ReadFile(path);
    try {
        const Json json = common::ParseJson(text);
        if (json.contains("extends")) {
            if (extensions == kMaxExtensions) throw Problem("too many models extend each other");
            const Path extended = platform::ToUtf16(json.at("extends").get<std::string>());
            ReadModel((folder / extended).lexically_normal(), extensions + 1, device, prefixes);
        }
        ReadDocument(folder / "capabilities.xml", Tag::PrintCapabilities, device.capabilities, &prefixes);
        ReadDocument(folder / "default-ticket.xml", Tag::PrintTicket, device.defaultTicket, nullptr);
        ReadSettings(json, prefixes, device);
    } catch (const Json::exception& error) {
        throw DeviceError(platform::ToUtf8(path.native()) + ": " + error.what());
    } catch (const Problem& problem) {
        throw DeviceError(platform::ToUtf8(path.native()) + ": " + problem.what());
    }
}

}  // namespace

Device LoadDevice(const Path& folder) {
    Device device;
    Prefixes prefixes;
    try {
        ReadModel(folder, 0, device, prefixes);
        device.Index();
    } catch (const FormatError& error) {
        throw DeviceError(platform::ToUtf8((folder / "capabilities.xml").native()) + ": " + error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        throw DeviceError(platform::ToUtf8(folder.native()) + ": " + error.what());
    }
    if (device.printers.empty()) {
        throw DeviceError(platform::ToUtf8((folder / "device.json").native()) + ": no printers are named");
    }
    return device;
}

}  // namespace devkit::prntvpt
