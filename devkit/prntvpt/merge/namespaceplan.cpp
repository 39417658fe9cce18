#include "devkit/prntvpt/merge/namespaceplan.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <utility>

#include "devkit/printschema/names.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

void AddOnce(std::string_view uri, std::vector<std::string>& uris) {
    if (std::find(uris.begin(), uris.end(), uri) == uris.end()) uris.emplace_back(uri);
}

void Collect(const Element& element, std::vector<std::string>& uris) {
    for (const std::string& uri : OwnUris(element)) AddOnce(uri, uris);
    for (const Element& child : element.children) Collect(child, uris);
}

[[nodiscard]] std::string Numbered(int number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "ns%04d", number);
    return text.data();
}

[[nodiscard]] std::string StandardPrefix(std::string_view uri) {
    if (uri == kFrameworkUri) return "psf";
    if (uri == kInstanceUri) return "xsi";
    if (uri == kSchemaUri) return "xsd";
    if (uri == kKeywordsUri) return "psk";
    if (uri == kKeywordsV11Uri) return "pskv11";
    return {};
}

// The namespaces that the document declares: psf, xsi, xsd, private ones, psk and later keywords. That is the
// order of the system's own drivers, whose root declares them all, used or not.
[[nodiscard]] std::vector<std::string> UrisOf(const std::vector<std::string>& used,
                                              const std::vector<std::string>& privateUris) {
    std::vector<std::string> uris{std::string(kFrameworkUri), std::string(kInstanceUri),
                                  std::string(kSchemaUri)};
    for (const std::string& uri : privateUris) AddOnce(uri, uris);
    for (const std::string& uri : used) {
        if (StandardPrefix(uri).empty()) AddOnce(uri, uris);
    }
    AddOnce(kKeywordsUri, uris);
    for (const std::string& uri : used) AddOnce(uri, uris);
    return uris;
}

// The prefixes of the input, each on another namespace than it had there: nobody may carry a prefix from one
// ticket into another without its namespace.
class Collision {
  public:
    explicit Collision(std::vector<PrefixBinding> input) : m_free(std::move(input)) {}

    [[nodiscard]] std::string Take(std::string_view uri) {
        const auto found = std::find_if(m_free.begin(), m_free.end(),
                                        [&](const PrefixBinding& binding) { return binding.uri != uri; });
        if (found == m_free.end()) return {};
        std::string prefix = found->prefix;
        m_free.erase(found);
        return prefix;
    }

  private:
    std::vector<PrefixBinding> m_free;
};

}  // namespace

std::vector<std::string> OwnUris(const Element& element) {
    std::vector<std::string> uris;
    if (element.name) AddOnce(element.name->uri, uris);
    if (element.constrained) AddOnce(element.constrained->uri, uris);
    if (element.tag == Tag::Value) {
        AddOnce(element.value.type.uri, uris);
        if (element.value.type == SchemaType("QName") && element.value.name) {
            AddOnce(element.value.name->uri, uris);
        }
    }
    return uris;
}

NamespacePlan::NamespacePlan(PrefixStyle style, const Element& root,
                             const std::vector<std::string>& privateUris,
                             const std::vector<PrefixBinding>& inputPrefixes) {
    std::vector<std::string> used;
    Collect(root, used);
    const std::vector<std::string> uris = UrisOf(used, privateUris);
    Assign(style, uris, inputPrefixes);
    const bool namesFramework = std::find(used.begin(), used.end(), kFrameworkUri) != used.end();
    Declare(style, uris, namesFramework);
}

void NamespacePlan::Assign(PrefixStyle style, const std::vector<std::string>& uris,
                           const std::vector<PrefixBinding>& inputPrefixes) {
    // First the prefixes that the style prescribes, then numbers for the rest, none of them twice.
    std::set<std::string, std::less<>> taken;
    if (style == PrefixStyle::Collide) {
        Collision collision(inputPrefixes);
        for (const std::string& uri : uris) m_prefixes[uri] = collision.Take(uri);
    } else if (style == PrefixStyle::Mangled) {
        int number = 1;
        for (const std::string_view uri : {kFrameworkUri, kKeywordsUri, kInstanceUri, kSchemaUri}) {
            m_prefixes[std::string(uri)] = Numbered(number++);
        }
    }
    for (const std::string& uri : uris) {
        std::string& prefix = m_prefixes[uri];
        if (prefix.empty() && style != PrefixStyle::Mangled && style != PrefixStyle::Collide) {
            prefix = StandardPrefix(uri);
        }
        taken.insert(prefix);
    }
    // Four public namespaces have the first numbers under that style.
    int number = style == PrefixStyle::Mangled ? 5 : 0;
    for (const std::string& uri : uris) {
        std::string& prefix = m_prefixes[uri];
        while (prefix.empty() && taken.contains(Numbered(number))) ++number;
        if (prefix.empty()) prefix = Numbered(number++);
    }
}

void NamespacePlan::Declare(PrefixStyle style, const std::vector<std::string>& uris, bool namesFramework) {
    const bool isDefault = style == PrefixStyle::DefaultNamespace;
    m_elementPrefix = isDefault ? "" : PrefixOf(kFrameworkUri) + ":";
    for (const std::string& uri : uris) {
        if (uri == kFrameworkUri && isDefault) {
            m_declarations.push_back({"", uri});
            if (!namesFramework) continue;
        }
        m_declarations.push_back({PrefixOf(uri), uri});
        if (uri == kSchemaUri) m_leading = m_declarations.size();
    }
}

std::string NamespacePlan::Qualify(const QName& name) const {
    return name.uri.empty() ? name.local : PrefixOf(name.uri) + ":" + name.local;
}

const std::string& NamespacePlan::PrefixOf(std::string_view uri) const {
    return m_prefixes.find(uri)->second;
}

}  // namespace devkit::prntvpt
