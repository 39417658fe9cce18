#pragma once

#include "platform/windows.h"

#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "platform/prntvpt.h"

namespace devkit::printschema {

// A name with its namespace. Prefixes end where a document is read and begin where one is written; in between
// there are only these.
struct QName {
    std::string uri;
    std::string local;

    friend auto operator<=>(const QName&, const QName&) = default;
};

// Namespaces of the Print Schema and of XML Schema.
inline constexpr std::string_view kFrameworkUri =
    "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";
inline constexpr std::string_view kKeywordsUri =
    "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords";
inline constexpr std::string_view kKeywordsV11Uri =
    "http://schemas.microsoft.com/windows/2013/05/printing/printschemakeywordsv11";
inline constexpr std::string_view kInstanceUri = "http://www.w3.org/2001/XMLSchema-instance";
inline constexpr std::string_view kSchemaUri = "http://www.w3.org/2001/XMLSchema";

// Whether every provider knows the names of this namespace: the framework and the public keywords.
[[nodiscard]] bool IsPublicNamespace(std::string_view uri);

// Names of the public keywords, of the framework and of XML Schema's types.
[[nodiscard]] QName Keyword(std::string_view local);
[[nodiscard]] QName FrameworkName(std::string_view local);
[[nodiscard]] QName SchemaType(std::string_view local);

// The scope that the name of a root feature, parameter or property begins with (Print Schema, scoping
// prefix); nothing when it begins with none. The case counts.
[[nodiscard]] std::optional<EPrintTicketScope> ScopePrefixOf(std::string_view local);

// The scope that an entry belongs to: a name without a scope prefix belongs to the job.
[[nodiscard]] EPrintTicketScope ScopeOf(const QName& name);

// "page", "document", "job".
[[nodiscard]] std::string_view ScopeName(EPrintTicketScope scope);
[[nodiscard]] std::optional<EPrintTicketScope> ScopeByName(std::string_view name);

}  // namespace devkit::printschema
