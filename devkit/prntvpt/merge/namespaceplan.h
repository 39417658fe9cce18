#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/printschema/element.h"
#include "devkit/printschema/reader.h"
#include "devkit/prntvpt/merge/switches.h"

namespace devkit::prntvpt {

// Which prefix each namespace of a document has that is to be written.
class NamespacePlan {
  public:
    // `privateUris` come first among the private ones, so that the device's own is ns0000; `inputPrefixes`
    // are those that prefixes=collide binds to other namespaces.
    NamespacePlan(PrefixStyle style, const Element& root, const std::vector<std::string>& privateUris,
                  const std::vector<printschema::PrefixBinding>& inputPrefixes);

    // "psf:" or, where the framework is the default namespace, nothing.
    [[nodiscard]] const std::string& ElementPrefix() const noexcept { return m_elementPrefix; }
    // "psk:ISOA4".
    [[nodiscard]] std::string Qualify(const QName& name) const;
    // The prefix of the namespace, without a colon.
    [[nodiscard]] const std::string& PrefixOf(std::string_view uri) const;

    // What the root declares, in the order of writing: framework, instance, schema, private ones, keywords.
    // An empty prefix is the default namespace.
    [[nodiscard]] const std::vector<printschema::PrefixBinding>& Declarations() const noexcept {
        return m_declarations;
    }
    // How many of them come before the version attribute.
    [[nodiscard]] std::size_t LeadingDeclarations() const noexcept { return m_leading; }

  private:
    void Assign(PrefixStyle style, const std::vector<std::string>& uris,
                const std::vector<printschema::PrefixBinding>& inputPrefixes);
    void Declare(PrefixStyle style, const std::vector<std::string>& uris, bool namesFramework);

    std::map<std::string, std::string, std::less<>> m_prefixes;  // by URI
    std::vector<printschema::PrefixBinding> m_declarations;
    std::string m_elementPrefix;
    std::size_t m_leading = 0;
};

// The namespaces of an element's own name, value and attributes, without its children's.
[[nodiscard]] std::vector<std::string> OwnUris(const Element& element);

}  // namespace devkit::prntvpt
