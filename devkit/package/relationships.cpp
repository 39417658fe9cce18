#include "devkit/package/relationships.h"

#include <unordered_set>

#include "devkit/package/xmlreader.h"
#include "devkit/package/xmltext.h"

namespace devkit::package {

namespace {

constexpr std::string_view kNamespace = "http://schemas.openxmlformats.org/package/2006/relationships";

}  // namespace

std::vector<Relationship> ParseRelationships(std::string_view markup, const std::string& where,
                                             const Limits& limits) {
    std::vector<Relationship> relationships;
    XmlReader reader(markup, where, limits);
    while (reader.NextElement()) {
        if (reader.LocalName() != "Relationship" || reader.Namespace() != kNamespace) continue;
        relationships.push_back({reader.Attribute("Id").value_or(""), reader.Attribute("Type").value_or(""),
                                 reader.Attribute("Target").value_or(""),
                                 reader.Attribute("TargetMode") == "External"});
    }
    return relationships;
}

std::string RelationshipsMarkup(const std::vector<Relationship>& relationships) {
    std::string markup = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<Relationships xmlns=\"";
    markup += kNamespace;
    markup += "\">";
    for (const Relationship& each : relationships) {
        markup += "<Relationship Type=\"" + EscapedAttribute(each.type) + "\" Target=\"" +
                  EscapedAttribute(each.target) + "\" Id=\"" + EscapedAttribute(each.id) + "\"";
        markup += each.external ? " TargetMode=\"External\"/>" : "/>";
    }
    return markup + "</Relationships>";
}

std::string FreeId(const std::vector<Relationship>& relationships) {
    std::unordered_set<std::string> taken;
    for (const Relationship& each : relationships) taken.insert(each.id);
    std::size_t number = 1;
    while (taken.contains("R" + std::to_string(number))) ++number;
    return "R" + std::to_string(number);
}

}  // namespace devkit::package
