#include "tickets.h"

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"

namespace tests {
namespace {

using namespace devkit::printschema;

// An element with a name; empty when there is no content.
[[nodiscard]] std::string Named(std::string_view element, std::string_view name, std::string_view content) {
    std::string text = "<psf:";
    text.append(element).append(" name=\"").append(name).append("\"");
    if (content.empty()) return text.append("/>");
    return text.append(">").append(content).append("</psf:").append(element).append(">");
}

[[nodiscard]] std::string ValueOf(std::string_view type, std::string_view text) {
    std::string value = "<psf:Value xsi:type=\"xsd:";
    return value.append(type).append("\">").append(text).append("</psf:Value>");
}

[[nodiscard]] std::string Short(const QName& name) {
    if (name.uri == kKeywordsUri) return "psk:" + name.local;
    if (name.uri == kFrameworkUri) return "psf:" + name.local;
    if (name.uri == kSchemaUri) return "xsd:" + name.local;
    if (name.uri == kDeviceUri) return "dev:" + name.local;
    if (name.uri == kAcmeUri) return "acme:" + name.local;
    return "{" + name.uri + "}" + name.local;
}

[[nodiscard]] std::string Content(const Element& element);

[[nodiscard]] std::string Value(const TypedValue& value) {
    const bool isName = value.type == SchemaType("QName") && value.name;
    return isName ? Short(*value.name) : value.text;
}

[[nodiscard]] std::string Describe(const Element& element) {
    const std::string name = element.name ? Short(*element.name) : "";
    switch (element.tag) {
        case Tag::Feature:
            return name + Content(element);
        case Tag::Option: {
            const std::string content = Content(element);
            return "[" + name + (content.empty() ? "" : "(" + content + ")") + "]";
        }
        case Tag::Property:
            return "#" + name + Content(element);
        case Tag::ParameterRef:
            return "=@" + name;
        case Tag::Value:
            return "=" + Value(element.value);
        default:
            return name + Content(element);
    }
}

std::string Content(const Element& element) {
    std::string text;
    for (const Element& child : element.children) {
        const bool inOption = element.tag == Tag::Option && !text.empty();
        const bool nested = element.tag == Tag::Feature && child.tag == Tag::Feature;
        text += (inOption ? "," : "") + (nested ? "{" + Describe(child) + "}" : Describe(child));
    }
    return text;
}

}  // namespace

std::string Ticket(std::string_view children) {
    std::string text = R"(<?xml version="1.0" encoding="UTF-8"?><psf:PrintTicket)";
    const auto declare = [&](const char* prefix, std::string_view uri) {
        text.append(" xmlns:").append(prefix).append("=\"").append(uri).append("\"");
    };
    declare("psf", kFrameworkUri);
    declare("psk", kKeywordsUri);
    declare("xsi", kInstanceUri);
    declare("xsd", kSchemaUri);
    declare("dev", kDeviceUri);
    declare("acme", kAcmeUri);
    return text.append(" version=\"1\">").append(children).append("</psf:PrintTicket>");
}

std::string Select(std::string_view feature, std::string_view option, std::string_view content) {
    return Named("Feature", feature, Named("Option", option, content));
}

std::string Sheet(std::string_view option, int width, int height) {
    return Select("psk:PageMediaSize", option,
                  Scored("psk:MediaSizeWidth", "integer", std::to_string(width)) +
                      Scored("psk:MediaSizeHeight", "integer", std::to_string(height)));
}

std::string Scored(std::string_view name, std::string_view type, std::string_view value) {
    return Named("ScoredProperty", name, ValueOf(type, value));
}

std::string Reference(std::string_view name, std::string_view parameter) {
    return Named("ScoredProperty", name, Named("ParameterRef", parameter, {}));
}

std::string Parameter(std::string_view name, std::string_view value) {
    return Named("ParameterInit", name, ValueOf("integer", value));
}

std::string TextProperty(std::string_view name, std::string_view text) {
    return Named("Property", name, ValueOf("string", text));
}

std::vector<std::string> Summarize(const Element& root) {
    std::vector<std::string> lines;
    for (const Element& child : root.children) lines.push_back(Describe(child));
    return lines;
}

std::vector<std::string> Summarize(std::string_view bytes) {
    return Summarize(ReadFramework(bytes, Tag::PrintTicket).root);
}

std::string Line(std::string_view bytes, std::string_view local) {
    for (const Element& child : ReadFramework(bytes, Tag::PrintTicket).root.children) {
        if (child.name->local == local) return Describe(child);
    }
    return {};
}

}  // namespace tests
