#include "devkit/printschema/ticketcheck.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <optional>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/text.h"
#include "devkit/common/xmlreader.h"
#include "devkit/printschema/reader.h"
#include "devkit/printschema/summary.h"

namespace devkit::printschema {
namespace {

using Kind = TicketProblem::Kind;

// Why the bytes are no ticket. Whoever has copied a namespace from a page of documentation may have it with
// the scheme of that page's links.
[[nodiscard]] TicketProblem WhyUnreadable(std::string_view bytes, const std::string& reason) {
    if (auto found = FindTwoPrefixes(bytes)) return {Kind::TwoPrefixes, *std::move(found)};
    const bool hasSecureScheme =
        bytes.find("\"https://schemas.microsoft.com/windows/") != std::string_view::npos;
    return {
        Kind::NoTicket,
        reason + (hasSecureScheme ? "; its namespaces begin with https, the Print Schema's with http" : "")};
}

// The rules that a reader need not insist on.
class Rules {
  public:
    explicit Rules(const FrameworkDocument& ticket) : m_prefixes(ticket.prefixes) {
        for (const Element& child : ticket.root.children) CheckScope(child);
        Check(ticket.root);
    }
    [[nodiscard]] std::vector<TicketProblem> Take() { return std::move(m_problems); }

  private:
    void Add(std::string text) { m_problems.push_back({Kind::BrokenRule, std::move(text)}); }

    // "the feature psk:PageOrientation".
    [[nodiscard]] std::string Title(const Element& element) const {
        static constexpr std::array<std::pair<Tag, const char*>, 7> kWords{
            {{Tag::Feature, "feature"},
             {Tag::Option, "option"},
             {Tag::ScoredProperty, "scored property"},
             {Tag::Property, "property"},
             {Tag::ParameterInit, "parameter"},
             {Tag::ParameterRef, "parameter reference"},
             {Tag::Value, "value"}}};
        const auto word = std::ranges::find(kWords, element.tag, &std::pair<Tag, const char*>::first);
        return std::string("the ") + (word == kWords.end() ? "element" : word->second) + " " +
               (element.name ? NameText(*element.name, m_prefixes) : "without a name");
    }

    void CheckScope(const Element& entry) {
        if (entry.name && !ScopePrefixOf(entry.name->local))
            Add(Title(entry) + " stands at the root and begins with none of Job, Document and Page");
    }

    void Check(const Element& element) {
        const auto has = [&element](Tag tag) { return element.Find(tag) != nullptr; };
        if (element.tag == Tag::Feature && !has(Tag::Option) && !has(Tag::Feature))
            Add(Title(element) + " holds neither an option nor a feature");
        if (element.tag == Tag::Property && !has(Tag::Value) && !has(Tag::Property))
            Add(Title(element) + " holds neither a value nor a property");
        if (element.tag == Tag::ParameterInit && !has(Tag::Value)) Add(Title(element) + " has no value");
        if (element.constrained)
            Add(Title(element) + " is constrained, which only an option of capabilities is");
        for (const Element& child : element.children) {
            if (child.tag == Tag::Value) CheckValue(element, child.value);
            Check(child);
        }
    }

    void CheckValue(const Element& parent, const TypedValue& value) {
        const bool isInteger = value.type == SchemaType("integer");
        const bool isDecimal = value.type == SchemaType("decimal");
        if (!isInteger && !isDecimal && value.type != SchemaType("string") &&
            value.type != SchemaType("QName")) {
            return Add("the value of " + Title(parent) + " has the type " + NameText(value.type, m_prefixes) +
                       ", which is none of string, integer, decimal and QName");
        }
        const std::string_view text = common::Trimmed(value.text);
        // An empty value is one that is not defined.
        if (text.empty()) return;
        if ((isInteger && !ToInteger(value)) || (isDecimal && !IsDecimal(text))) {
            Add("the value \"" + std::string(text) + "\" of " + Title(parent) +
                (isInteger ? " is no integer" : " is no decimal number"));
        }
    }

    [[nodiscard]] static bool IsDecimal(std::string_view text) {
        if (text.starts_with('+')) text.remove_prefix(1);
        double number = 0;
        const char* const pEnd = text.data() + text.size();
        const auto [pRest, error] = std::from_chars(text.data(), pEnd, number, std::chars_format::fixed);
        return error == std::errc() && pRest == pEnd;
    }

    const std::vector<PrefixBinding>& m_prefixes;
    std::vector<TicketProblem> m_problems;
};

}  // namespace

std::vector<TicketProblem> CheckTicket(std::string_view bytes) {
    try {
        const FrameworkDocument ticket = ReadFramework(bytes, Tag::PrintTicket);
        return Rules(ticket).Take();
    } catch (const FormatError& error) {
        return {WhyUnreadable(bytes, error.what())};
    }
}

std::optional<std::string> FindTwoPrefixes(std::string_view bytes) try {
    using Entry = std::pair<std::string, QName>;  // the element and what its name means
    common::XmlLimits limits;
    limits.maxBytes = kMaxDocumentSize;
    common::XmlReader reader(bytes, {}, limits);
    std::vector<std::map<Entry, std::string>> siblings;  // by depth
    while (reader.NextElement()) {
        siblings.resize(static_cast<std::size_t>(reader.Depth()) + 1);
        const std::string name = reader.Attribute("name").value_or(std::string());
        const std::size_t colon = name.find(':');
        if (colon == std::string::npos || reader.LocalName() == TagName(Tag::Option)) continue;
        QName meaning{reader.NamespaceOf(name.substr(0, colon)), name.substr(colon + 1)};
        const auto [entry, isNew] = siblings.back().try_emplace({reader.LocalName(), meaning}, name);
        if (!isNew && entry->second != name) {
            return meaning.local + " twice, as " + entry->second + " and " + name +
                   ": two prefixes of one namespace";
        }
    }
    return std::nullopt;
} catch (const common::Error&) {
    return std::nullopt;
}

}  // namespace devkit::printschema
