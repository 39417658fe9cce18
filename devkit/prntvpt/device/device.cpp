#include "devkit/prntvpt/device/device.h"

#include <algorithm>

#include "devkit/printschema/names.h"

namespace devkit::prntvpt {

using namespace printschema;

namespace {

void NoteUri(const std::string& uri, std::vector<std::string>& uris) {
    if (IsPublicNamespace(uri) || uri == kSchemaUri) return;
    if (std::find(uris.begin(), uris.end(), uri) == uris.end()) uris.push_back(uri);
}

void CollectPrivateUris(const Element& element, std::vector<std::string>& uris) {
    if (element.name) NoteUri(element.name->uri, uris);
    if (element.tag == Tag::Value && element.value.name) NoteUri(element.value.name->uri, uris);
    for (const Element& child : element.children) CollectPrivateUris(child, uris);
}

}  // namespace

void Device::Index() {
    parameters.clear();
    for (const Element& element : capabilities.children) {
        if (element.tag == Tag::ParameterDef) parameters.push_back(ReadParameterDefinition(element));
    }
    privateUris.clear();
    CollectPrivateUris(capabilities, privateUris);
}

const ParameterDefinition* Device::FindParameter(const QName& name) const {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const ParameterDefinition& entry) { return entry.name == name; });
    return found == parameters.end() ? nullptr : &*found;
}

bool Device::Knows(const std::string& uri) const {
    return IsPublicNamespace(uri) ||
           std::find(privateUris.begin(), privateUris.end(), uri) != privateUris.end();
}

}  // namespace devkit::prntvpt
