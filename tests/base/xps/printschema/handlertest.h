#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>

#include "base/xml/xmlutility.h"
#include "base/xps/printschema/printschemahandler.h"
#include "eachdom.h"
#include "platform/bstr.h"
#include "platform/comptr.h"

namespace tests {

// A test of tickets in which "krk" is the private prefix.
class HandlerTest : public EachDomTest {
  protected:
    HandlerTest() { base::xps::printschema::SetPrivatePrefix(L"krk"); }
    ~HandlerTest() override { base::xps::printschema::SetPrivatePrefix({}); }
};

using Dom = platform::ComPtr<IXMLDOMDocument2>;
using Element = platform::ComPtr<IXMLDOMElement>;
using Node = platform::ComPtr<IXMLDOMNode>;

inline constexpr auto kKeywords = base::xps::printschema::SchemaNamespace::Keywords;
inline constexpr auto kPrivate = base::xps::printschema::SchemaNamespace::Private;

// The markup of one node.
[[nodiscard]] inline std::wstring Markup(IXMLDOMNode* pNode) {
    platform::Bstr xml;
    if (FAILED(pNode->get_xml(xml.Put()))) return L"no markup";
    return std::wstring(xml.View());
}

}  // namespace tests
