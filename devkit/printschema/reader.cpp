#include "devkit/printschema/reader.h"

#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/xmlreader.h"
#include "devkit/printschema/names.h"
#include "devkit/printschema/rules.h"

namespace devkit::printschema {
namespace {

using common::View;

constexpr int kMaxNesting = 10;

[[nodiscard]] std::string_view UriOf(const xmlNs* pNamespace) {
    return pNamespace == nullptr ? std::string_view() : View(pNamespace->href);
}

[[nodiscard]] std::string TextOf(const xmlNode* pFirst) {
    std::string text;
    for (const xmlNode* pNode = pFirst; pNode != nullptr; pNode = pNode->next) {
        if (pNode->type == XML_TEXT_NODE || pNode->type == XML_CDATA_SECTION_NODE) {
            text += View(pNode->content);
        }
    }
    return text;
}

// The name that a qualified text stands for where the node is; nothing when it has no prefix or one that is
// not bound there.
[[nodiscard]] std::optional<QName> Resolve(xmlNode* pNode, std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == 0 || colon == std::string_view::npos || colon + 1 == text.size()) return std::nullopt;
    if (text.find(':', colon + 1) != std::string_view::npos) return std::nullopt;
    const std::string prefix(text.substr(0, colon));
    const xmlNs* const pNamespace = xmlSearchNs(pNode->doc, pNode, common::XmlText(prefix.c_str()));
    if (pNamespace == nullptr) return std::nullopt;
    return QName{std::string(UriOf(pNamespace)), std::string(text.substr(colon + 1))};
}

[[nodiscard]] QName RequireName(xmlNode* pNode, const std::string& text) {
    std::optional<QName> name = Resolve(pNode, text);
    if (!name) throw FormatError("The name \"" + text + "\" has no prefix, or one that is not declared");
    return *std::move(name);
}

class Reader {
  public:
    Reader(Duplicates duplicates, MixedValues mixedValues)
        : m_duplicates(duplicates), m_mixedValues(mixedValues) {}

    [[nodiscard]] FrameworkDocument Read(xmlNode* pRoot, Tag root) {
        if (UriOf(pRoot->ns) != kFrameworkUri || View(pRoot->name) != TagName(root)) {
            throw FormatError("The root element is not " + std::string(TagName(root)));
        }
        m_document.root = ReadElement(pRoot, root);
        return std::move(m_document);
    }

  private:
    [[nodiscard]] Element ReadElement(xmlNode* pNode, Tag tag) {
        int& depth = m_depth[static_cast<std::size_t>(tag)];
        if (++depth > kMaxNesting) {
            throw FormatError("More than ten " + std::string(TagName(tag)) + " elements inside each other");
        }
        NotePrefixes(pNode);
        Element element;
        element.tag = tag;
        ReadAttributes(pNode, element);
        if (tag == Tag::Value) {
            ReadValue(pNode, element.value);
        } else {
            ReadChildren(pNode, element);
        }
        --depth;
        return element;
    }

    void NotePrefixes(const xmlNode* pNode) {
        for (const xmlNs* pNamespace = pNode->nsDef; pNamespace != nullptr; pNamespace = pNamespace->next) {
            std::string prefix(View(pNamespace->prefix));
            if (prefix.empty() || !m_prefixes.insert(prefix).second) continue;
            m_document.prefixes.push_back({std::move(prefix), std::string(UriOf(pNamespace))});
        }
    }

    void ReadAttributes(xmlNode* pNode, Element& element) {
        bool hasVersion = false;
        for (const xmlAttr* pAttribute = pNode->properties; pAttribute != nullptr;
             pAttribute = pAttribute->next) {
            const std::string_view uri = UriOf(pAttribute->ns);
            const std::string_view local = View(pAttribute->name);
            const std::string text = TextOf(pAttribute->children);
            if (uri.empty() && local == "name" && MayHaveName(element.tag)) {
                element.name = RequireName(pNode, text);
            } else if (uri.empty() && local == "version" && IsRoot(element.tag)) {
                RequireVersion(text);
                hasVersion = true;
            } else if (uri.empty() && local == "constrained" && element.tag == Tag::Option) {
                element.constrained = RequireName(pNode, text);
            } else if (uri == kInstanceUri && local == "type" && element.tag == Tag::Value) {
                element.value.type = RequireName(pNode, text);
            } else if (!IsIgnoredAttribute(uri, local)) {
                throw FormatError("The attribute \"" + std::string(local) + "\" is not allowed on " +
                                  std::string(TagName(element.tag)));
            }
        }
        if (IsRoot(element.tag) && !hasVersion) throw FormatError("The version is missing");
        if (MustHaveName(element.tag) && !element.name) {
            throw FormatError("A " + std::string(TagName(element.tag)) + " has no name");
        }
    }

    static void RequireVersion(const std::string& text) {
        double version = 0;
        const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), version);
        if (error != std::errc() || pEnd != text.data() + text.size() || version != 1.0) {
            throw FormatError("The version is \"" + text + "\" and not 1");
        }
    }

    static void ReadValue(xmlNode* pNode, TypedValue& value) {
        for (const xmlNode* pChild = pNode->children; pChild != nullptr; pChild = pChild->next) {
            if (pChild->type == XML_ELEMENT_NODE) throw FormatError("A Value holds an element");
        }
        value.text = TextOf(pNode->children);
        if (value.type.local.empty()) value.type = SchemaType("string");
        value.name = Resolve(pNode, value.text);
        const bool qualified = value.text.find(':') != std::string::npos;
        if (value.type == SchemaType("QName") && qualified && !value.name) {
            throw FormatError("The prefix of the value \"" + value.text + "\" is not declared");
        }
    }

    void ReadChildren(xmlNode* pNode, Element& element) {
        std::set<std::pair<Tag, QName>> names;
        for (xmlNode* pChild = pNode->children; pChild != nullptr; pChild = pChild->next) {
            if (pChild->type != XML_ELEMENT_NODE) {
                RequireNoText(pChild, element.tag);
                continue;
            }
            const std::string_view uri = UriOf(pChild->ns);
            if (uri != kFrameworkUri && !uri.empty()) continue;
            const std::optional<Tag> tag = uri.empty() ? std::optional<Tag>() : TagByName(View(pChild->name));
            if (!tag || !MayContain(element.tag, *tag)) {
                throw FormatError("The element \"" + std::string(View(pChild->name)) +
                                  "\" is not allowed inside " + std::string(TagName(element.tag)));
            }
            Element child = ReadElement(pChild, *tag);
            if (child.name && *tag != Tag::Option && !names.emplace(*tag, *child.name).second) {
                if (m_duplicates == Duplicates::KeepFirst) {
                    m_document.hadDuplicates = true;
                    continue;
                }
                throw FormatError("Duplicate definitions exist for " + DuplicateKind(*tag) + " " +
                                  child.name->local);
            }
            element.children.push_back(std::move(child));
        }
        RequireOneValue(element);
    }

    static void RequireNoText(const xmlNode* pNode, Tag parent) {
        const bool isText = pNode->type == XML_TEXT_NODE || pNode->type == XML_CDATA_SECTION_NODE;
        if (isText && View(pNode->content).find_first_not_of(" \t\r\n") != std::string_view::npos) {
            throw FormatError("Text is not allowed inside " + std::string(TagName(parent)));
        }
    }

    void RequireOneValue(Element& element) const {
        if (element.tag != Tag::ParameterInit && element.tag != Tag::ScoredProperty) return;
        const auto isValue = [](const Element& child) {
            return child.tag == Tag::Value || child.tag == Tag::ParameterRef;
        };
        const auto first = std::find_if(element.children.begin(), element.children.end(), isValue);
        if (first == element.children.end()) return;
        const auto second = std::find_if(first + 1, element.children.end(), isValue);
        if (second == element.children.end()) return;
        const bool areMixed =
            second->tag != first->tag && std::none_of(second + 1, element.children.end(), isValue);
        if (areMixed && m_mixedValues == MixedValues::KeepFirst) {
            element.children.erase(second);
        } else {
            throw FormatError("The " + std::string(TagName(element.tag)) + " " + element.name->local +
                              " has more than one value");
        }
    }

    Duplicates m_duplicates;
    MixedValues m_mixedValues;
    FrameworkDocument m_document;
    std::set<std::string, std::less<>> m_prefixes;
    std::array<int, kTagCount> m_depth{};
};

}  // namespace

FrameworkDocument ReadFramework(std::string_view bytes, Tag root, Duplicates duplicates,
                                MixedValues mixedValues) {
    common::XmlLimits limits;
    limits.maxBytes = kMaxDocumentSize;
    try {
        const common::XmlDocument document = common::ParseXml(bytes, {}, limits);
        return Reader(duplicates, mixedValues).Read(xmlDocGetRootElement(document.get()), root);
    } catch (const common::XmlError& error) {
        throw FormatError(error.what());
    }
}

}  // namespace devkit::printschema
