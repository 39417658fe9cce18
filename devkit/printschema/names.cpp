#include "devkit/printschema/names.h"

#include <array>
#include <string>
#include <utility>

namespace devkit::prntvpt {
namespace {

struct ScopeNames {
    EPrintTicketScope scope;
    std::string_view prefix;
    std::string_view name;
};

constexpr std::array<ScopeNames, 3> Scopes{{{kPTPageScope, "Page", "page"},
                                            {kPTDocumentScope, "Document", "document"},
                                            {kPTJobScope, "Job", "job"}}};

}  // namespace

bool IsPublicNamespace(std::string_view uri) {
    return uri == FrameworkUri || uri == KeywordsUri || uri == KeywordsV11Uri;
}

QName Keyword(std::string_view local) { return {std::string(KeywordsUri), std::string(local)}; }

QName FrameworkName(std::string_view local) { return {std::string(FrameworkUri), std::string(local)}; }

QName SchemaType(std::string_view local) { return {std::string(SchemaUri), std::string(local)}; }

std::optional<EPrintTicketScope> ScopePrefixOf(std::string_view local) {
    for (const ScopeNames& names : Scopes) {
        if (local.starts_with(names.prefix)) return names.scope;
    }
    return std::nullopt;
}

EPrintTicketScope ScopeOf(const QName& name) { return ScopePrefixOf(name.local).value_or(kPTJobScope); }

std::string_view ScopeName(EPrintTicketScope scope) {
    for (const ScopeNames& names : Scopes) {
        if (names.scope == scope) return names.name;
    }
    return "none";
}

std::optional<EPrintTicketScope> ScopeByName(std::string_view name) {
    for (const ScopeNames& names : Scopes) {
        if (names.name == name) return names.scope;
    }
    return std::nullopt;
}

}  // namespace devkit::prntvpt
