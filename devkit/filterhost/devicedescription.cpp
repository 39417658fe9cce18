#include "devkit/filterhost/devicedescription.h"

#include "platform/windows.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "devkit/common/numbers.h"
#include "devkit/filterhost/documentdifference.h"
#include "devkit/printschema/reader.h"
#include "devkit/printschema/summary.h"
#include "devkit/prntvpt/device/device.h"
#include "devkit/prntvpt/merge/serializer.h"
#include "devkit/prntvpt/merge/validation.h"

namespace devkit::filterhost {
namespace {

using printschema::Element;
using printschema::QName;
using printschema::Tag;
using prntvpt::Condition;
using prntvpt::Constraint;
using prntvpt::Device;
using prntvpt::Margins;

std::string Write(const Element& root, const Device& device) {
    return prntvpt::Serialize(root, {}, {device.privateUris, {}});
}

std::string MarginsText(const Margins& margins) {
    constexpr double kMicrometres = 1000;
    const auto text = [](const char* name, std::int64_t margin) {
        return std::string(name) + " " + common::NumberText(static_cast<double>(margin) / kMicrometres, 1) +
               " mm";
    };
    return text("left", margins.left) + ", " + text("top", margins.top) + ", " +
           text("right", margins.right) + ", " + text("bottom", margins.bottom);
}

template <typename Items, typename ToText>
std::string Join(const Items& items, const ToText& toText) {
    std::string text;
    for (const auto& item : items) text += (text.empty() ? "" : ", ") + toText(item);
    return text;
}

class Description {
  public:
    explicit Description(const Device& device)
        : m_device(device),
          m_stated(Write(device.defaultTicket, device)),
          m_prefixes(printschema::ReadFramework(Write(device.capabilities, device), Tag::PrintCapabilities)
                         .prefixes) {}

    std::string Run() {
        Line("printers: " + Join(m_device.printers, [](const std::string& name) { return name; }));
        Line("margins: " + MarginsText(m_device.margins));
        for (const auto& [option, margins] : m_device.optionMargins)
            Line("  of " + Name(option) + ": " + MarginsText(margins));
        if (!m_device.variants.empty())
            Line("variants: " + Join(m_device.variants, [](const std::string& text) { return text; }));
        Line("features:");
        for (const Element& entry : m_device.capabilities.children) AddFeature(entry, 1);
        Line("parameters:");
        for (const auto& parameter : m_device.parameters)
            Line("  " + Name(parameter.name) + ", " + parameter.defaultValue.text + " by default");
        Line("constraints:");
        for (const Constraint& constraint : m_device.constraints)
            Line("  when " + Text(constraint.when) + " with " + Text(constraint.with) + ": " +
                 Name(constraint.feature) + " becomes " + Name(constraint.option));
        AddDefaultTicket();
        return std::move(m_text);
    }

  private:
    void Line(const std::string& text) { m_text += text + "\n"; }
    [[nodiscard]] std::string Name(const QName& name) const {
        return printschema::NameText(name, m_prefixes);
    }

    void AddFeature(const Element& entry, int level) {
        if (entry.tag != Tag::Feature) return;
        std::string options;
        for (const Element& option : entry.children) {
            if (option.tag != Tag::Option) continue;
            options += options.empty() ? "" : ", ";
            options += option.name ? Name(*option.name) : "(unnamed)";
        }
        Line(std::string(static_cast<std::size_t>(level) * 2, ' ') + Name(*entry.name) + ": " + options);
        for (const Element& nested : entry.children) AddFeature(nested, level + 1);
    }

    [[nodiscard]] std::string Text(const Condition& condition) const {
        const std::string feature = Name(condition.feature);
        if (condition.kind == Condition::Kind::Above) {
            return Name(condition.scoredProperty) + " of " + feature + " is above " +
                   std::to_string(condition.limit);
        }
        const bool isOneOf = condition.kind == Condition::Kind::OneOf;
        return feature + (isOneOf ? " is one of " : " is none of ") +
               Join(condition.options, [this](const QName& option) { return Name(option); });
    }

    void AddDefaultTicket() {
        const Element selected =
            prntvpt::MergeAndValidate(m_device, {}, m_device.defaultTicket, nullptr, kPTJobScope).ticket;
        const std::string text = Write(selected, m_device);
        const auto ticket = printschema::ReadFramework(text, Tag::PrintTicket);
        Line("the default ticket that it selects:");
        for (const printschema::Setting& setting : printschema::SettingsOf(ticket.root, ticket.prefixes))
            Line("  " + setting.name + " = " + setting.value);
        const std::vector<std::string> differences = DiffTickets(m_stated, text);
        if (differences.empty()) return;
        Line("what default-ticket.xml states instead:");
        for (const std::string& difference : differences) Line("  " + difference);
    }

    const Device& m_device;
    const std::string m_stated;
    const std::vector<printschema::PrefixBinding> m_prefixes;
    std::string m_text;
};

}  // namespace

std::string DescribeDevice(const std::filesystem::path& folder) {
    const Device device = prntvpt::LoadDevice(folder);
    return Description(device).Run();
}

}  // namespace devkit::filterhost
