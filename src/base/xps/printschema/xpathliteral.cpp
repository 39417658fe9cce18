#include "base/xps/printschema/xpathliteral.h"

namespace base::xps::printschema {

std::wstring XPathLiteral(std::wstring_view text) {
    std::wstring pieces = L"\"";
    for (const wchar_t character : text) {
        if (character == L'"') {
            pieces += L"\", '\"', \"";
        } else {
            pieces += character;
        }
    }
    pieces += L'"';
    return text.find(L'"') == std::wstring_view::npos ? pieces : L"concat(" + pieces + L")";
}

}  // namespace base::xps::printschema
