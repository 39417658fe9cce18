#include "devkit/package/contenttypes.h"

#include <utility>

#include "devkit/common/text.h"
#include "devkit/common/xmlreader.h"
#include "devkit/common/xmlwriter.h"
#include "devkit/package/partname.h"

namespace devkit::package {

namespace {

constexpr std::string_view kContentTypesNamespace =
    "http://schemas.openxmlformats.org/package/2006/content-types";

constexpr std::pair<std::string_view, std::string_view> kCustomary[] = {
    {"rels", "application/vnd.openxmlformats-package.relationships+xml"},
    {"fdseq", "application/vnd.ms-package.xps-fixeddocumentsequence+xml"},
    {"fdoc", "application/vnd.ms-package.xps-fixeddocument+xml"},
    {"fpage", "application/vnd.ms-package.xps-fixedpage+xml"},
    {"dict", "application/vnd.ms-package.xps-resourcedictionary+xml"},
    {"struct", "application/vnd.ms-package.xps-documentstructure+xml"},
    {"frag", "application/vnd.ms-package.xps-storyfragments+xml"},
    {"odttf", "application/vnd.ms-package.obfuscated-opentype"},
    {"ttf", "application/vnd.ms-opentype"},
    {"ttc", "application/vnd.ms-opentype"},
    {"otf", "application/vnd.ms-opentype"},
    {"png", "image/png"},
    {"jpg", "image/jpeg"},
    {"jpeg", "image/jpeg"},
    {"tif", "image/tiff"},
    {"tiff", "image/tiff"},
    {"wdp", "image/vnd.ms-photo"},
    {"icc", "application/vnd.ms-color.iccprofile"},
    {"icm", "application/vnd.ms-color.iccprofile"},
    {"xml", "application/xml"},
};

// The extension of the last segment, as a key.
std::string ExtensionKey(std::string_view partName) {
    const std::string key = NameKey(partName);
    const std::size_t dot = key.rfind('.');
    if (dot == std::string::npos || dot < key.rfind('/')) return {};
    return key.substr(dot + 1);
}

std::string KeyOfExtension(std::string_view extension) { return NameKey(extension).substr(1); }

// A content type's parameters do not tell kinds of parts apart.
std::string WithoutParameters(std::string_view type) {
    return std::string(common::Trimmed(type.substr(0, type.find(';'))));
}

}  // namespace

ContentTypes ContentTypes::Customary() {
    ContentTypes types;
    for (const auto& [extension, type] : kCustomary)
        Put(types.m_defaults, std::string(extension), {std::string(extension), std::string(type)});
    return types;
}

ContentTypes ContentTypes::Parse(std::string_view markup, const common::XmlLimits& limits) {
    ContentTypes types;
    common::XmlReader reader(markup, "/[Content_Types].xml", limits);
    while (reader.NextElement()) {
        if (reader.Depth() != 1 || reader.Namespace() != kContentTypesNamespace) continue;
        std::string type = reader.Attribute("ContentType").value_or("");
        const std::string element = reader.LocalName();
        if (element == "Default") {
            std::string extension = reader.Attribute("Extension").value_or("");
            Put(types.m_defaults, KeyOfExtension(extension), {extension, std::move(type)});
        } else if (element == "Override") {
            std::string name = reader.Attribute("PartName").value_or("");
            Put(types.m_overrides, NameKey(name), {name, std::move(type)});
        }
    }
    return types;
}

std::string ContentTypes::Of(std::string_view partName) const {
    const Declaration* pFound = Find(m_overrides, NameKey(partName));
    if (pFound == nullptr) pFound = Find(m_defaults, ExtensionKey(partName));
    return pFound == nullptr ? std::string() : WithoutParameters(pFound->type);
}

bool ContentTypes::Declare(std::string_view partName, std::string_view contentType) {
    if (Of(partName) == WithoutParameters(contentType)) return false;
    Forget(partName);
    if (Of(partName) != WithoutParameters(contentType))
        Put(m_overrides, NameKey(partName), {std::string(partName), std::string(contentType)});
    return true;
}

bool ContentTypes::Forget(std::string_view partName) {
    const auto found = m_overrides.byKey.find(NameKey(partName));
    if (found == m_overrides.byKey.end()) return false;
    // The place stays, empty, so that the other places keep their numbers.
    m_overrides.declarations[found->second] = {};
    m_overrides.byKey.erase(found);
    return true;
}

std::string ContentTypes::Markup() const {
    common::XmlWriter writer;
    const auto write = [&writer](const char* element, const char* attribute, const Declaration& declaration) {
        if (declaration.name.empty()) return;
        writer.StartElement(element);
        writer.Attribute(attribute, declaration.name);
        writer.Attribute("ContentType", declaration.type);
        writer.EndElement();
    };
    writer.StartElement("Types");
    writer.Attribute("xmlns", kContentTypesNamespace);
    for (const Declaration& each : m_defaults.declarations) write("Default", "Extension", each);
    for (const Declaration& each : m_overrides.declarations) write("Override", "PartName", each);
    return writer.Take();
}

const ContentTypes::Declaration* ContentTypes::Find(const Table& table, const std::string& key) {
    const auto found = table.byKey.find(key);
    return found == table.byKey.end() ? nullptr : &table.declarations[found->second];
}

void ContentTypes::Put(Table& table, const std::string& key, Declaration declaration) {
    if (table.byKey.try_emplace(key, table.declarations.size()).second)
        table.declarations.push_back(std::move(declaration));
}

}  // namespace devkit::package
