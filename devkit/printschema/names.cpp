#include "devkit/printschema/names.h"

#include <array>
#include <string>
#include <utility>

namespace devkit::printschema {
namespace {

struct ScopeNames {
    EPrintTicketScope scope;
    std::string_view prefix;
    std::string_view name;
};

constexpr std::array<ScopeNames, 3> kScopes{{{kPTPageScope, "Page", "page"},
                                             {kPTDocumentScope, "Document", "document"},
                                             {kPTJobScope, "Job", "job"}}};

}  // namespace

bool IsPublicNamespace(std::string_view uri) {
    return uri == kFrameworkUri || uri == kKeywordsUri || uri == kKeywordsV11Uri;
}

QName Keyword(std::string_view local) { return {std::string(kKeywordsUri), std::string(local)}; }

QName FrameworkName(std::string_view local) { return {std::string(kFrameworkUri), std::string(local)}; }

QName SchemaType(std::string_view local) { return {std::string(kSchemaUri), std::string(local)}; }

std::optional<EPrintTicketScope> ScopePrefixOf(std::string_view local) {
    for (const ScopeNames& names : kScopes) {
        if (local.starts_with(names.prefix)) return names.scope;
    }
    return std::nullopt;
}

EPrintTicketScope ScopeOf(const QName& name) { return ScopePrefixOf(name.local).value_or(kPTJobScope); }

std::string_view ScopeName(EPrintTicketScope scope) {
    for (const ScopeNames& names : kScopes) {
        if (names.scope == scope) return names.name;
    }
    return "none";
}

std::optional<EPrintTicketScope> ScopeByName(std::string_view name) {
    for (const ScopeNames& names : kScopes) {
        if (names.name == name) return names.scope;
    }
    return std::nullopt;
}

}  // namespace devkit::printschema
