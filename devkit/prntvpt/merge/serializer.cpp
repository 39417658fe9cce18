#include "devkit/prntvpt/merge/serializer.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "devkit/common/xmlwriter.h"
#include "devkit/printschema/names.h"
#include "devkit/prntvpt/merge/namespaceplan.h"
#include "platform/utf.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

class Writer {
  public:
    Writer(const NamespacePlan& plan, PrefixStyle prefixes, Layout layout)
        : m_plan(plan), m_isLocal(prefixes == PrefixStyle::Local), m_layout(layout) {}

    void WriteRoot(const Element& root) {
        if (m_layout == Layout::Comments) {
            m_writer.Instruction("devkit", "written by the simulated provider");
            m_writer.Raw("\n");
        }
        WriteElement(root, 0);
        if (m_layout != Layout::None) m_writer.Raw("\n");
    }

    [[nodiscard]] std::string Take() { return m_writer.Take(); }

  private:
    void WriteElement(const Element& element, int depth) {
        m_writer.StartElement(m_plan.ElementPrefix() + std::string(TagName(element.tag)));
        if (depth == 0) {
            WriteRootAttributes();
        } else if (m_isLocal) {
            WriteLocalDeclarations(element);
        }
        if (element.name) m_writer.Attribute("name", m_plan.Qualify(*element.name));
        if (element.constrained) m_writer.Attribute("constrained", m_plan.Qualify(*element.constrained));
        if (element.tag == Tag::Value) {
            WriteValue(element.value);
        } else if (!element.children.empty()) {
            WriteChildren(element, depth + 1);
        }
        m_writer.EndElement();
    }

    void WriteChildren(const Element& element, int depth) {
        for (const Element& child : element.children) {
            if (m_layout == Layout::Comments) {
                BreakLine(depth);
                m_writer.Comment(" " + std::string(TagName(child.tag)) + " ");
                m_writer.Instruction("devkit", {});
            }
            BreakLine(depth);
            WriteElement(child, depth);
        }
        BreakLine(depth - 1);
    }

    void WriteValue(const TypedValue& value) {
        m_writer.Attribute(m_plan.Qualify({std::string(kInstanceUri), "type"}), m_plan.Qualify(value.type));
        const bool isName = value.type == SchemaType("QName") && value.name;
        const std::string text = isName ? m_plan.Qualify(*value.name) : value.text;
        if (!text.empty()) m_writer.Text(text);
    }

    void WriteRootAttributes() {
        const std::vector<PrefixBinding>& declarations = m_plan.Declarations();
        for (std::size_t index = 0; index < declarations.size(); ++index) {
            if (index == m_plan.LeadingDeclarations()) m_writer.Attribute("version", "1");
            const bool isElementNamespace = declarations[index].uri == kFrameworkUri;
            if (!m_isLocal || isElementNamespace) WriteDeclaration(declarations[index]);
        }
        if (m_plan.LeadingDeclarations() >= declarations.size()) m_writer.Attribute("version", "1");
    }

    // Everything that the element needs, also what an element above it has declared: a reader that looks for
    // prefixes at the root alone finds nothing there.
    void WriteLocalDeclarations(const Element& element) {
        std::vector<std::string> uris = OwnUris(element);
        uris.insert(uris.begin(), std::string(kFrameworkUri));
        if (element.tag == Tag::Value) uris.emplace_back(kInstanceUri);
        std::vector<std::string> done;
        for (const std::string& uri : uris) {
            if (std::find(done.begin(), done.end(), uri) != done.end()) continue;
            done.push_back(uri);
            WriteDeclaration({m_plan.PrefixOf(uri), uri});
        }
    }

    void WriteDeclaration(const PrefixBinding& binding) {
        m_writer.Attribute(binding.prefix.empty() ? "xmlns" : "xmlns:" + binding.prefix, binding.uri);
    }

    void BreakLine(int depth) {
        if (m_layout != Layout::None) m_writer.Raw("\n" + std::string(static_cast<std::size_t>(depth), ' '));
    }

    const NamespacePlan& m_plan;
    const bool m_isLocal;
    const Layout m_layout;
    common::XmlWriter m_writer{common::XmlWriter::Declaration::None};
};

void Reverse(Element& element) {
    std::reverse(element.children.begin(), element.children.end());
    for (Element& child : element.children) Reverse(child);
}

[[nodiscard]] std::string Encode(const std::string& body, Encoding encoding) {
    const bool isWide = encoding == Encoding::Utf16LittleEndian;
    std::string text =
        std::string(R"(<?xml version="1.0" encoding=")") + (isWide ? "UTF-16" : "UTF-8") + "\"?>\n" + body;
    if (encoding == Encoding::Utf8) return text;
    if (encoding == Encoding::Utf8WithMark) return "\xEF\xBB\xBF" + text;
    // The byte order of Windows.
    const std::wstring wide = L"\uFEFF" + platform::ToUtf16(text);
    return {reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t)};
}

}  // namespace

std::string Serialize(const Element& root, const Switches& behaviour, const SerializerInput& input) {
    const NamespacePlan plan(behaviour.prefixes, root, input.privateUris, input.inputPrefixes);
    Writer writer(plan, behaviour.prefixes, behaviour.layout);
    if (behaviour.order == ElementOrder::Reversed) {
        Element reversed = root;
        Reverse(reversed);
        writer.WriteRoot(reversed);
    } else {
        writer.WriteRoot(root);
    }
    return Encode(writer.Take(), behaviour.encoding);
}

}  // namespace devkit::prntvpt
