#include "devkit/package/relationships.h"

#include <unordered_set>

#include "devkit/common/xmlreader.h"
#include "devkit/common/xmlwriter.h"

namespace devkit::package {

namespace {

constexpr std::string_view kRelationshipsNamespace =
    "http://schemas.openxmlformats.org/package/2006/relationships";

}  // namespace

std::vector<Relationship> ParseRelationships(std::string_view markup, const std::string& where,
                                             const common::XmlLimits& limits) {
    std::vector<Relationship> relationships;
    common::XmlReader reader(markup, where, limits);
    while (reader.NextElement()) {
        if (reader.LocalName() != "Relationship" || reader.Namespace() != kRelationshipsNamespace) continue;
        relationships.push_back({reader.Attribute("Id").value_or(""), reader.Attribute("Type").value_or(""),
                                 reader.Attribute("Target").value_or(""),
                                 reader.Attribute("TargetMode") == "External"});
    }
    return relationships;
}

std::string RelationshipsMarkup(const std::vector<Relationship>& relationships) {
    common::XmlWriter writer;
    writer.StartElement("Relationships");
    writer.Attribute("xmlns", kRelationshipsNamespace);
    for (const Relationship& each : relationships) {
        writer.StartElement("Relationship");
        writer.Attribute("Type", each.type);
        writer.Attribute("Target", each.target);
        writer.Attribute("Id", each.id);
        if (each.external) writer.Attribute("TargetMode", "External");
        writer.EndElement();
    }
    return writer.Take();
}

std::string FreeId(const std::vector<Relationship>& relationships) {
    std::unordered_set<std::string> taken;
    for (const Relationship& each : relationships) taken.insert(each.id);
    std::size_t number = 1;
    while (taken.contains("R" + std::to_string(number))) ++number;
    return "R" + std::to_string(number);
}

}  // namespace devkit::package
