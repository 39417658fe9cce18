#pragma once

// The namespaces of print tickets and capabilities.
namespace base::xps::printschema {

inline constexpr wchar_t kFrameworkNamespace[] =
    L"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";
inline constexpr wchar_t kKeywordsNamespace[] =
    L"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords";
// The maker's own: every private feature, option and property of the driver is in it.
inline constexpr wchar_t kPrivateNamespace[] = L"http://schemas.pagevalidate.example/printing/ptpc/2008/11";
inline constexpr wchar_t kXmlSchemaNamespace[] = L"http://www.w3.org/2001/XMLSchema";
inline constexpr wchar_t kXmlSchemaInstanceNamespace[] = L"http://www.w3.org/2001/XMLSchema-instance";

}  // namespace base::xps::printschema
