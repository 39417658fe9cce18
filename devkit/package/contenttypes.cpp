#include "devkit/package/contenttypes.h"

#include <utility>

#include "devkit/package/partname.h"
#include "devkit/package/xmlreader.h"
#include "devkit/package/xmltext.h"

namespace devkit::package {

namespace {

constexpr std::string_view kNamespace = "http://schemas.openxmlformats.org/package/2006/content-types";

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
    std::string_view bare = type.substr(0, type.find(';'));
    const std::size_t start = bare.find_first_not_of(" \t");
    if (start == std::string_view::npos) return {};
    bare.remove_prefix(start);
    return std::string(bare.substr(0, bare.find_last_not_of(" \t") + 1));
}

void AppendElement(std::string& markup, std::string_view element, std::string_view attribute,
                   std::string_view name, std::string_view type) {
    markup += "<";
    markup += element;
    markup += " ";
    markup += attribute;
    markup += "=\"" + EscapedAttribute(name) + "\" ContentType=\"" + EscapedAttribute(type) + "\"/>";
}

}  // namespace

ContentTypes ContentTypes::Customary() {
    ContentTypes types;
    for (const auto& [extension, type] : kCustomary)
        Put(types.m_defaults, std::string(extension), {std::string(extension), std::string(type)});
    return types;
}

ContentTypes ContentTypes::Parse(std::string_view markup, const Limits& limits) {
    ContentTypes types;
    XmlReader reader(markup, "/[Content_Types].xml", limits);
    while (reader.NextElement()) {
        if (reader.Depth() != 1 || reader.Namespace() != kNamespace) continue;
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
    std::string markup = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<Types xmlns=\"";
    markup += kNamespace;
    markup += "\">";
    for (const Declaration& each : m_defaults.declarations)
        AppendElement(markup, "Default", "Extension", each.name, each.type);
    for (const Declaration& each : m_overrides.declarations) {
        if (!each.name.empty()) AppendElement(markup, "Override", "PartName", each.name, each.type);
    }
    return markup + "</Types>";
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
