#pragma once

#include <string>

#include "base/xml/xmlutility.h"

namespace tests {

// The saved document without the line break that a DOM may end it with.
[[nodiscard]] inline std::wstring DomText(IXMLDOMDocument2* pDom) {
    std::wstring text = base::xml::DomToString(pDom);
    text.erase(text.find_last_not_of(L"\r\n") + 1);
    return text;
}

}  // namespace tests
