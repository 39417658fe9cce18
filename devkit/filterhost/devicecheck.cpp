#include "devkit/filterhost/devicecheck.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "devkit/common/file.h"
#include "devkit/common/json.h"
#include "devkit/filterhost/jsonlines.h"
#include "devkit/printschema/reader.h"
#include "devkit/prntvpt/api/configuration.h"
#include "devkit/prntvpt/device/device.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using Path = std::filesystem::path;
using printschema::Element;
using printschema::Keyword;
using printschema::QName;
using printschema::Tag;
using prntvpt::Condition;
using prntvpt::Constraint;
using prntvpt::Device;
using prntvpt::Margins;

std::string ReadText(const Path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A device.json of the model: its own, and those that it extends.
struct ModelFile {
    Path path;
    std::string text;
    std::map<std::string, std::size_t> lines;
};

std::vector<ModelFile> ReadModelFiles(Path folder) {
    constexpr std::size_t kMostFiles = 9;
    std::vector<ModelFile> files;
    while (files.size() < kMostFiles) {
        ModelFile& file = files.emplace_back();
        file.path = folder / "device.json";
        file.text = ReadText(file.path);
        file.lines = LinesOf(file.text);
        if (!file.lines.contains("/extends")) break;
        const auto json = common::ParseJson(file.text);
        if (!json["extends"].is_string()) break;
        folder = (folder / platform::ToUtf16(json["extends"].get<std::string>())).lexically_normal();
    }
    return files;
}

std::optional<std::int64_t> ScoredNumber(const Element& option, const QName& name) {
    const Element* const pProperty = option.Find(Tag::ScoredProperty, name);
    const printschema::TypedValue* const pValue = pProperty == nullptr ? nullptr : pProperty->FindValue();
    return pValue == nullptr ? std::nullopt : printschema::ToInteger(*pValue);
}

bool Holds(const Condition& condition, const Element& option) {
    if (condition.kind == Condition::Kind::Above) {
        return ScoredNumber(option, condition.scoredProperty).value_or(condition.limit) > condition.limit;
    }
    const bool isListed =
        option.name && std::ranges::find(condition.options, *option.name) != condition.options.end();
    return isListed == (condition.kind == Condition::Kind::OneOf);
}

class Checker {
  public:
    Checker(const Device& device, const std::vector<ModelFile>& files) : m_device(device), m_files(files) {}

    std::vector<std::string> Run() {
        CheckPrinters();
        CheckMargins("/margins", "", m_device.margins);
        CheckRoom();
        for (const auto& [option, margins] : m_device.optionMargins) CheckOptionMargins(option, margins);
        for (std::size_t i = 0; i < m_device.constraints.size(); ++i) CheckConstraint(i);
        return std::move(m_faults);
    }

  private:
    // With the file that states the place, and its line there.
    void Add(const std::string& place, const std::string& text) {
        const std::string key = place.substr(0, place.find('/', 1));
        const auto file =
            std::ranges::find_if(m_files, [&](const ModelFile& each) { return each.lines.contains(key); });
        if (file == m_files.end()) {
            m_faults.push_back(common::PathText(m_files.front().path) + ": " + text);
            return;
        }
        const auto line = file->lines.find(place);
        m_faults.push_back(
            common::PathText(file->path) + ":" +
            std::to_string((line == file->lines.end() ? file->lines.find(key) : line)->second) + ": " + text);
    }

    void CheckPrinters() {
        std::set<std::string> names;
        for (std::size_t i = 0; i < m_device.printers.size(); ++i) {
            const std::string& name = m_device.printers[i];
            const std::string place = "/printers/" + std::to_string(i);
            if (name.empty()) Add(place, "a printer without a name");
            if (!names.insert(name).second) Add(place, "the printer " + name + " is there twice");
        }
    }

    void CheckMargins(const std::string& place, const std::string& of, const Margins& margins) {
        const std::array edges{std::pair("left", margins.left), std::pair("top", margins.top),
                               std::pair("right", margins.right), std::pair("bottom", margins.bottom)};
        for (const auto& [name, margin] : edges) {
            if (margin < 0) {
                Add(place + "/" + name,
                    "the " + std::string(name) + " margin" + of + " is negative: " + std::to_string(margin));
            }
        }
    }

    // That each sheet has a place left that can be printed on.
    void CheckRoom() {
        const Element* const pSizes = FindFeature(Keyword("PageMediaSize"));
        if (pSizes == nullptr) return;
        for (const Element& option : pSizes->children) {
            const auto width = ScoredNumber(option, Keyword("MediaSizeWidth"));
            const auto height = ScoredNumber(option, Keyword("MediaSizeHeight"));
            if (!option.name || !width || !height) continue;
            const auto own = m_device.optionMargins.find(*option.name);
            const bool isOwn = own != m_device.optionMargins.end();
            const Margins& margins = isOwn ? own->second : m_device.margins;
            if (margins.left + margins.right < *width && margins.top + margins.bottom < *height) continue;
            Add(isOwn ? OptionMarginsPlace(*option.name) : "/margins",
                "the margins leave nothing of " + option.name->local);
        }
    }

    // The names in the file have prefixes.
    [[nodiscard]] std::string OptionMarginsPlace(const QName& option) const {
        const std::string end = ":" + option.local;
        for (const ModelFile& file : m_files) {
            for (const auto& [place, line] : file.lines) {
                if (place.starts_with("/option_margins/") && place.ends_with(end)) return place;
            }
        }
        return "/option_margins";
    }

    void CheckOptionMargins(const QName& option, const Margins& margins) {
        const std::string place = OptionMarginsPlace(option);
        const Element* const pSizes = FindFeature(Keyword("PageMediaSize"));
        if (pSizes == nullptr || pSizes->Find(Tag::Option, option) == nullptr)
            Add(place, "there is no PageMediaSize " + option.local);
        CheckMargins(place, " of " + option.local, margins);
    }

    void CheckConstraint(std::size_t number) {
        const Constraint& constraint = m_device.constraints[number];
        const std::string place = "/constraints/" + std::to_string(number);
        const bool isWhenKnown = CheckCondition(place + "/when", constraint.when);
        const bool isWithKnown = CheckCondition(place + "/with", constraint.with);
        const Element* const pFeature = FindFeature(constraint.feature);
        if (pFeature == nullptr) {
            Add(place + "/set/feature", "there is no feature " + constraint.feature.local);
            return;
        }
        const Element* const pOption = pFeature->Find(Tag::Option, constraint.option);
        if (pOption == nullptr) {
            Add(place + "/set/option",
                "there is no " + constraint.feature.local + " " + constraint.option.local);
            return;
        }
        const auto ends = [&](const Condition& condition) {
            return condition.feature == constraint.feature && !Holds(condition, *pOption);
        };
        if (isWhenKnown && isWithKnown && !ends(constraint.when) && !ends(constraint.with)) {
            Add(place + "/set", "the constraint holds on after " + constraint.feature.local + " is " +
                                    constraint.option.local);
        }
    }

    bool CheckCondition(const std::string& place, const Condition& condition) {
        const Element* const pFeature = FindFeature(condition.feature);
        if (pFeature == nullptr) {
            Add(place + "/feature", "there is no feature " + condition.feature.local);
            return false;
        }
        const std::size_t before = m_faults.size();
        if (condition.kind == Condition::Kind::Above) {
            const bool isKnown = std::ranges::any_of(pFeature->children, [&](const Element& option) {
                return option.Find(Tag::ScoredProperty, condition.scoredProperty) != nullptr;
            });
            if (!isKnown) {
                Add(place + "/scored_property",
                    "no " + condition.feature.local + " has a " + condition.scoredProperty.local);
            }
            return m_faults.size() == before;
        }
        const bool isOneOf = condition.kind == Condition::Kind::OneOf;
        const std::string list = place + (isOneOf ? "/one_of" : "/none_of");
        if (condition.options.empty()) Add(list, "the list names no option");
        for (std::size_t i = 0; i < condition.options.size(); ++i) {
            if (pFeature->Find(Tag::Option, condition.options[i]) != nullptr) continue;
            Add(list + "/" + std::to_string(i),
                "there is no " + condition.feature.local + " " + condition.options[i].local);
        }
        return m_faults.size() == before;
    }

    [[nodiscard]] const Element* FindFeature(const QName& name) const {
        return m_device.capabilities.Find(Tag::Feature, name);
    }

    const Device& m_device;
    const std::vector<ModelFile>& m_files;
    std::vector<std::string> m_faults;
};

// The message of the reader, which names the file, with the line of the text that it quotes.
std::string WithLine(const std::string& message, const std::vector<ModelFile>& files) {
    const std::size_t quote = message.find('"');
    const std::size_t end = quote == std::string::npos ? quote : message.find('"', quote + 1);
    if (end == std::string::npos) return message;
    const std::string quoted = message.substr(quote, end - quote + 1);
    for (const ModelFile& file : files) {
        const std::string path = platform::ToUtf8(file.path.native());
        if (!message.starts_with(path + ": ")) continue;
        const std::size_t place = file.text.find(quoted);
        if (place == std::string::npos) return message;
        const auto line =
            1 + std::count(file.text.begin(), file.text.begin() + static_cast<std::ptrdiff_t>(place), '\n');
        return path + ":" + std::to_string(line) + message.substr(path.size());
    }
    return message;
}

}  // namespace

std::vector<std::string> CheckDevice(const Path& folder) {
    const std::vector<ModelFile> files = ReadModelFiles(folder);
    try {
        const Device device = prntvpt::LoadDevice(folder);
        std::vector<std::string> faults = Checker(device, files).Run();
        if (!faults.empty()) return faults;
        prntvpt::ProviderSettings settings;
        settings.device = folder;
        static_cast<void>(prntvpt::MakeConfiguration(settings));
        return {};
    } catch (const prntvpt::DeviceError& error) {
        return {WithLine(error.what(), files)};
    } catch (const prntvpt::ConfigurationError& error) {
        return {WithLine(error.what(), files)};
    }
}

}  // namespace devkit::filterhost
