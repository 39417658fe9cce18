#include "ticketsummary.h"

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"

namespace devkit::prntvpt {
namespace {

[[nodiscard]] std::string Short(const QName& name) {
    if (name.uri == KeywordsUri) return "psk:" + name.local;
    if (name.uri == FrameworkUri) return "psf:" + name.local;
    if (name.uri == SchemaUri) return "xsd:" + name.local;
    if (name.uri == DeviceUri) return "dev:" + name.local;
    if (name.uri == AcmeUri) return "acme:" + name.local;
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
    declare("psf", FrameworkUri);
    declare("psk", KeywordsUri);
    declare("xsi", InstanceUri);
    declare("xsd", SchemaUri);
    declare("dev", DeviceUri);
    declare("acme", AcmeUri);
    return text.append(" version=\"1\">").append(children).append("</psf:PrintTicket>");
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

}  // namespace devkit::prntvpt
