#include "devkit/prntvpt/merge/serializer.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "devkit/printschema/names.h"
#include "devkit/printschema/text.h"
#include "devkit/prntvpt/merge/namespaceplan.h"

namespace devkit::prntvpt {
namespace {

[[nodiscard]] std::string Escape(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\r':
                escaped += "&#13;";
                break;
            case '\n':
                escaped += "&#10;";
                break;
            case '\t':
                escaped += "&#9;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

class Writer {
  public:
    Writer(const NamespacePlan& plan, PrefixStyle prefixes, Layout layout)
        : m_plan(plan), m_isLocal(prefixes == PrefixStyle::Local), m_layout(layout) {}

    void WriteRoot(const Element& root) {
        if (m_layout == Layout::Comments) m_text += "<?devkit written by the simulated provider?>\n";
        WriteElement(root, 0);
        if (m_layout != Layout::None) m_text += '\n';
    }

    [[nodiscard]] std::string Take() { return std::move(m_text); }

  private:
    void WriteElement(const Element& element, int depth) {
        const std::string tag = m_plan.ElementPrefix() + std::string(TagName(element.tag));
        m_text += '<' + tag;
        const bool isRoot = depth == 0;
        if (isRoot) {
            WriteRootAttributes();
        } else if (m_isLocal) {
            WriteLocalDeclarations(element);
        }
        if (element.name) WriteAttribute("name", m_plan.Qualify(*element.name));
        if (element.constrained) WriteAttribute("constrained", m_plan.Qualify(*element.constrained));
        if (element.tag == Tag::Value) {
            WriteValue(element.value, tag);
        } else if (element.children.empty()) {
            m_text += "/>";
        } else {
            m_text += '>';
            WriteChildren(element, depth + 1);
            m_text += "</" + tag + '>';
        }
    }

    void WriteChildren(const Element& element, int depth) {
        for (const Element& child : element.children) {
            if (m_layout == Layout::Comments) {
                BreakLine(depth);
                m_text += "<!-- " + std::string(TagName(child.tag)) + " --><?devkit?>";
            }
            BreakLine(depth);
            WriteElement(child, depth);
        }
        BreakLine(depth - 1);
    }

    void WriteValue(const TypedValue& value, const std::string& tag) {
        WriteAttribute(m_plan.Qualify({std::string(InstanceUri), "type"}), m_plan.Qualify(value.type));
        const bool isName = value.type == SchemaType("QName") && value.name;
        const std::string text = isName ? m_plan.Qualify(*value.name) : value.text;
        m_text += text.empty() ? "/>" : '>' + Escape(text) + "</" + tag + '>';
    }

    void WriteRootAttributes() {
        const std::vector<PrefixBinding>& declarations = m_plan.Declarations();
        for (std::size_t index = 0; index < declarations.size(); ++index) {
            if (index == m_plan.LeadingDeclarations()) WriteAttribute("version", "1");
            const bool isElementNamespace = declarations[index].uri == FrameworkUri;
            if (!m_isLocal || isElementNamespace) WriteDeclaration(declarations[index]);
        }
        if (m_plan.LeadingDeclarations() >= declarations.size()) WriteAttribute("version", "1");
    }

    // Everything that the element needs, also what an element above it has declared.
    void WriteLocalDeclarations(const Element& element) {
        std::vector<std::string> uris = OwnUris(element);
        uris.insert(uris.begin(), std::string(FrameworkUri));
        if (element.tag == Tag::Value) uris.emplace_back(InstanceUri);
        std::vector<std::string> done;
        for (const std::string& uri : uris) {
            if (std::find(done.begin(), done.end(), uri) != done.end()) continue;
            done.push_back(uri);
            WriteDeclaration({m_plan.PrefixOf(uri), uri});
        }
    }

    void WriteDeclaration(const PrefixBinding& binding) {
        WriteAttribute(binding.prefix.empty() ? "xmlns" : "xmlns:" + binding.prefix, binding.uri);
    }

    void WriteAttribute(std::string_view name, std::string_view value) {
        m_text.append(" ").append(name).append("=\"").append(Escape(value)).append("\"");
    }

    void BreakLine(int depth) {
        if (m_layout == Layout::None) return;
        m_text += '\n';
        m_text.append(static_cast<std::size_t>(depth), ' ');
    }

    const NamespacePlan& m_plan;
    bool m_isLocal;
    Layout m_layout;
    std::string m_text;
};

void Reverse(Element& element) {
    std::reverse(element.children.begin(), element.children.end());
    for (Element& child : element.children) Reverse(child);
}

[[nodiscard]] std::string Encode(std::string body, Encoding encoding) {
    const bool isWide = encoding == Encoding::Utf16LittleEndian;
    const std::string declaration =
        std::string(R"(<?xml version="1.0" encoding=")") + (isWide ? "UTF-16" : "UTF-8") + "\"?>\n";
    if (encoding == Encoding::Utf8) return declaration + body;
    if (encoding == Encoding::Utf8WithMark) return "\xEF\xBB\xBF" + declaration + body;
    std::string bytes;
    for (const wchar_t unit : ToWide("\xEF\xBB\xBF" + declaration + body)) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

}  // namespace

std::string Serialize(const Element& root, const Switches& switches, const SerializerInput& input) {
    const NamespacePlan plan(switches.prefixes, root, input.privateUris, input.inputPrefixes);
    Writer writer(plan, switches.prefixes, switches.layout);
    if (switches.order == ElementOrder::Reversed) {
        Element reversed = root;
        Reverse(reversed);
        writer.WriteRoot(reversed);
    } else {
        writer.WriteRoot(root);
    }
    return Encode(writer.Take(), switches.encoding);
}

}  // namespace devkit::prntvpt
