#include "base/xps/printschema/schemabase.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/logging/check.h"

namespace base::xps::printschema {

using logging::Throw;
using logging::ThrowIfNull;

const std::vector<Qname>& SchemaBase::GetQnames() const { return m_qnames; }

const std::set<SchemaNamespace>& SchemaBase::GetNamespaces() const {
    if (m_namespaces.empty())
        Throw<std::logic_error>("namespaces should be initialized in constructor through AddQname().");
    return m_namespaces;
}

const Qname& SchemaBase::GetQname(std::uint32_t index) const {
    if (index >= m_qnames.size()) Throw<std::invalid_argument>("The index you specified is out of range.");
    return m_qnames[index];
}

std::uint32_t SchemaBase::IndexOf(const Qname& name) const {
    return IndexOf(name.space, name.localName.c_str());
}

std::uint32_t SchemaBase::IndexOf(SchemaNamespace space, const std::wstring& name) const {
    return Search(space, name.c_str());
}

std::uint32_t SchemaBase::IndexOf(SchemaNamespace space, const wchar_t* pName) const {
    ThrowIfNull(pName, "pName is null.");
    return Search(space, pName);
}

void SchemaBase::AddQname(SchemaNamespace space, const wchar_t* pName) { AddQname(Qname{space, pName}); }

void SchemaBase::AddQname(Qname name) {
    m_namespaces.insert(name.space);
    m_qnames.push_back(std::move(name));
}

std::uint32_t SchemaBase::Search(SchemaNamespace space, const wchar_t* pTarget) const {
    ThrowIfNull(pTarget, "pTarget is null.");
    const std::wstring_view target = pTarget;
    const auto found = std::ranges::find_if(
        m_qnames, [&](const Qname& name) { return name.localName == target && name.space == space; });
    return found == m_qnames.end() ? kNotFound : static_cast<std::uint32_t>(found - m_qnames.begin());
}

}  // namespace base::xps::printschema
