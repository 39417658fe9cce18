#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace base::xps::printschema {

// The namespaces of print tickets and capabilities.
inline constexpr wchar_t kFrameworkNamespace[] =
    L"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";
inline constexpr wchar_t kKeywordsNamespace[] =
    L"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords";
// The maker's own: every private feature, option and property of the driver is in it.
inline constexpr wchar_t kPrivateNamespace[] = L"http://schemas.pagevalidate.example/printing/ptpc/2008/11";
inline constexpr wchar_t kXmlSchemaNamespace[] = L"http://www.w3.org/2001/XMLSchema";
inline constexpr wchar_t kXmlSchemaInstanceNamespace[] = L"http://www.w3.org/2001/XMLSchema-instance";

// Which namespace a name belongs to. What its prefix is in a document is known to PrintSchemaHandler.
enum class SchemaNamespace : std::uint32_t {
    Keywords = 0,
    Framework = 1,
    // The maker's own.
    Private = 2,
    // No namespace at all, only the prefix of last resort.
    Fallback = 3,
};

// The name of a feature, an option, a property or a parameter.
struct Qname {
    SchemaNamespace space = SchemaNamespace::Framework;
    std::wstring localName;

    [[nodiscard]] bool operator==(const Qname&) const = default;
};

// An ordered list of names. A feature or an option is known by its index in such a list. A derived list adds
// its names in its constructor and never changes afterwards, so any thread may read it.
class SchemaBase {
  public:
    // What IndexOf answers for a name that the list does not hold; negative as a signed number.
    static constexpr std::uint32_t kNotFound = 0xFFFFFFFF;

    SchemaBase(const SchemaBase&) = delete;
    SchemaBase& operator=(const SchemaBase&) = delete;

    [[nodiscard]] virtual const std::vector<Qname>& GetQnames() const;
    // The namespaces of the names, each once, in ascending order. std::logic_error for a list without names.
    [[nodiscard]] virtual const std::set<SchemaNamespace>& GetNamespaces() const;
    // std::invalid_argument when there is no such index.
    [[nodiscard]] virtual const Qname& GetQname(std::uint32_t index) const;
    // The first index of exactly this name, or kNotFound. Letter case and namespace count; a text ends at its
    // first null character. std::invalid_argument for a null pName.
    [[nodiscard]] virtual std::uint32_t IndexOf(const Qname& name) const;
    [[nodiscard]] virtual std::uint32_t IndexOf(SchemaNamespace space, const std::wstring& name) const;
    [[nodiscard]] virtual std::uint32_t IndexOf(SchemaNamespace space, const wchar_t* pName) const;
    virtual ~SchemaBase() = default;

  protected:
    SchemaBase() = default;

    void AddQname(SchemaNamespace space, const wchar_t* pName);
    void AddQname(Qname name);

    // The search of every IndexOf. std::invalid_argument for a null pTarget.
    [[nodiscard]] std::uint32_t Search(SchemaNamespace space, const wchar_t* pTarget) const;

  private:
    std::set<SchemaNamespace> m_namespaces;
    std::vector<Qname> m_qnames;
};

}  // namespace base::xps::printschema
