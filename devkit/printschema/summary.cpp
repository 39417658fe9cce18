#include "devkit/printschema/summary.h"

#include <algorithm>

#include "devkit/common/text.h"

namespace devkit::printschema {
namespace {

// Walks over a ticket and writes its settings down.
class Summary {
  public:
    Summary(const std::vector<PrefixBinding>& prefixes, std::size_t longestValue)
        : m_prefixes(prefixes), m_longestValue(longestValue) {}

    // Of a root or of a feature; `path` is the feature's name with those of the features around it.
    void Add(const Element& parent, const std::string& path) {
        for (const Element& child : parent.children) {
            if (child.tag == Tag::Feature) {
                Add(child, (path.empty() ? "" : path + "/") + NameOf(child));
            } else if (child.tag == Tag::Option) {
                m_settings.push_back({path, OptionText(child)});
            } else if (child.tag == Tag::ParameterInit) {
                m_settings.push_back({NameOf(child), ValueText(child)});
            }
        }
    }
    [[nodiscard]] std::vector<Setting> Take() { return std::move(m_settings); }

  private:
    [[nodiscard]] std::string NameOf(const Element& element) const {
        return element.name ? NameText(*element.name, m_prefixes) : "(unnamed)";
    }

    [[nodiscard]] std::string OptionText(const Element& option) const {
        std::string details;
        for (const Element& property : option.children) {
            const std::string value = ValueText(property);
            details += (details.empty() ? "" : ", ") + NameOf(property) + (value.empty() ? "" : " " + value);
            if (const Element* const pReference = property.Find(Tag::ParameterRef)) {
                details += " from " + NameOf(*pReference);
            }
        }
        return NameOf(option) + (details.empty() ? "" : " (" + details + ")");
    }

    [[nodiscard]] std::string ValueText(const Element& element) const {
        const TypedValue* const pValue = element.FindValue();
        if (pValue == nullptr) return {};
        if (pValue->type == SchemaType("QName") && pValue->name) return NameText(*pValue->name, m_prefixes);
        const std::string_view text = common::Trimmed(pValue->text);
        if (text.size() <= m_longestValue) return std::string(text);
        return "(" + std::to_string(text.size()) + " characters)";
    }

    const std::vector<PrefixBinding>& m_prefixes;
    const std::size_t m_longestValue;
    std::vector<Setting> m_settings;
};

[[nodiscard]] const Element* SelectedOption(const Element& ticket, std::string_view feature) {
    for (const Element& child : ticket.children) {
        if (child.tag == Tag::Feature && child.name->local == feature) return child.Find(Tag::Option);
    }
    return nullptr;
}

// The value of a property of the option, without the prefix that it may have.
[[nodiscard]] std::optional<std::string> WordOf(const Element* pOption, std::string_view property) {
    if (pOption == nullptr) return std::nullopt;
    for (const Tag tag : {Tag::ScoredProperty, Tag::Property}) {
        for (const Element& child : pOption->children) {
            if (child.tag != tag || child.name->local != property) continue;
            const TypedValue* const pValue = child.FindValue();
            if (pValue == nullptr) return std::nullopt;
            if (pValue->name) return pValue->name->local;
            const std::string_view text = common::Trimmed(pValue->text);
            return std::string(text.substr(text.find(':') + 1));
        }
    }
    return std::nullopt;
}

[[nodiscard]] std::optional<std::string> MediaSizeOf(const Element& ticket) {
    const Element* const pOption = SelectedOption(ticket, "PageMediaSize");
    if (pOption == nullptr) return std::nullopt;
    if (pOption->name) return pOption->name->local;
    const std::optional<std::string> width = WordOf(pOption, "MediaSizeWidth");
    const std::optional<std::string> height = WordOf(pOption, "MediaSizeHeight");
    return width && height ? std::optional(*width + " x " + *height + " um") : std::nullopt;
}

}  // namespace

std::string NameText(const QName& name, const std::vector<PrefixBinding>& prefixes) {
    const auto binding = std::find_if(prefixes.begin(), prefixes.end(),
                                      [&](const PrefixBinding& each) { return each.uri == name.uri; });
    return (binding == prefixes.end() ? "{" + name.uri + "}" : binding->prefix + ":") + name.local;
}

std::vector<Setting> SettingsOf(const Element& ticket, const std::vector<PrefixBinding>& prefixes,
                                std::size_t longestValue) {
    Summary summary(prefixes, longestValue);
    summary.Add(ticket, {});
    return summary.Take();
}

TicketFacts FactsOf(const Element& ticket) {
    TicketFacts facts;
    facts.mediaSize = MediaSizeOf(ticket);
    for (const char* const bin : {"PageInputBin", "DocumentInputBin", "JobInputBin"}) {
        if (!facts.feedDirection) facts.feedDirection = WordOf(SelectedOption(ticket, bin), "FeedDirection");
    }
    return facts;
}

TicketFacts ReadFacts(std::string_view ticket) {
    try {
        return FactsOf(ReadFramework(ticket, Tag::PrintTicket).root);
    } catch (const FormatError&) {
        return {};
    }
}

}  // namespace devkit::printschema
