#include "devkit/printschema/rules.h"

#include <algorithm>
#include <initializer_list>

#include "devkit/printschema/names.h"

namespace devkit::printschema {
namespace {

constexpr std::string_view kXmlUri = "http://www.w3.org/XML/1998/namespace";

[[nodiscard]] bool IsOneOf(Tag tag, std::initializer_list<Tag> tags) {
    return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

}  // namespace

bool IsRoot(Tag tag) { return IsOneOf(tag, {Tag::PrintTicket, Tag::PrintCapabilities}); }

bool MayContain(Tag parent, Tag child) {
    switch (parent) {
        case Tag::PrintTicket:
            return IsOneOf(child, {Tag::Feature, Tag::ParameterInit, Tag::Property});
        case Tag::PrintCapabilities:
            return IsOneOf(child, {Tag::Feature, Tag::ParameterDef, Tag::Property});
        case Tag::Feature:
            return IsOneOf(child, {Tag::Option, Tag::Feature, Tag::Property});
        case Tag::Option:
            return IsOneOf(child, {Tag::ScoredProperty, Tag::Property});
        case Tag::ScoredProperty:
            return IsOneOf(child, {Tag::Value, Tag::ParameterRef, Tag::Property, Tag::ScoredProperty});
        case Tag::Property:
            return IsOneOf(child, {Tag::Value, Tag::Property});
        case Tag::ParameterDef:
            return child == Tag::Property;
        case Tag::ParameterInit:
            return child == Tag::Value;
        case Tag::ParameterRef:
        case Tag::Value:
            return false;
    }
    return false;
}

bool MayHaveName(Tag tag) { return !IsRoot(tag) && tag != Tag::Value; }

bool MustHaveName(Tag tag) { return MayHaveName(tag) && tag != Tag::Option; }

bool IsIgnoredAttribute(std::string_view uri, std::string_view local) {
    return (uri.empty() && local == "propagate") || uri == kXmlUri ||
           (uri == kInstanceUri && local != "type");
}

std::string DuplicateKind(Tag tag) {
    if (tag == Tag::Property) return "property";
    if (tag == Tag::ScoredProperty) return "scored property";
    return "feature or parameter";
}

}  // namespace devkit::printschema
