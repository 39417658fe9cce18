#include "devkit/msxml/parsefailure.h"

#include <urlmon.h>

#include <string_view>

#include "devkit/msxml/errorcodes.h"

namespace devkit::msxml {

namespace {

// "%1" stands for the detail.
std::wstring_view TextFor(HRESULT code) noexcept {
    switch (static_cast<unsigned>(code)) {
        case XmlEntityUndefined:
            return L"Reference to undefined entity '%1'.";
        case XmlPrefixUndeclared:
            return L"Reference to undeclared namespace prefix: '%1'.";
        case XmlMissingEquals:
            return L"Missing equals sign between attribute and attribute value.";
        case XmlMissingQuote:
            return L"A string literal was expected, but no opening quote character was found.";
        case XmlCommentSyntax:
            return L"Incorrect syntax was used in a comment.";
        case XmlBadStartNameChar:
            return L"A name was started with an invalid character.";
        case XmlBadNameChar:
            return L"A name contained an invalid character.";
        case XmlBadCharInString:
            return L"The character '<' cannot be used in an attribute value.";
        case XmlDeclarationSyntax:
            return L"Invalid syntax for an xml declaration.";
        case XmlBadCharData:
            return L"An invalid character was found in text content.";
        case XmlMissingWhiteSpace:
            return L"Required white space was missing.";
        case XmlExpectingTagEnd:
            return L"The character '>' was expected.";
        case XmlMissingSemicolon:
            return L"A semi colon character was expected.";
        case XmlInstructionSyntax:
            return L"Incorrect syntax was used in a processing instruction.";
        case XmlExpectingCloseQuote:
            return L"A string literal was not closed, or the closing quote was not found.";
        case XmlMultipleColons:
            return L"Multiple colons are not allowed in a name.";
        case XmlInvalidDecimal:
            return L"Invalid character for decimal digit.";
        case XmlInvalidHexadecimal:
            return L"Invalid character for hexadecimal digit.";
        case XmlInvalidUnicode:
            return L"Invalid Unicode character value for this platform.";
        case XmlUnclosedTag:
            return L"The following tags were not closed: %1.";
        case XmlDuplicateAttribute:
            return L"Duplicate attribute.";
        case XmlMultipleRoots:
            return L"Only one top level element is allowed in an XML document.";
        case XmlInvalidAtRootLevel:
            return L"Invalid at the top level of the document.";
        case XmlBadDeclaration:
            return L"Invalid xml declaration.";
        case XmlMissingRoot:
            return L"XML document must have a top level element.";
        case XmlUnexpectedEof:
            return L"Unexpected end of file.";
        case XmlInvalidCdataClosing:
            return L"The sequence ']]>' is not allowed in text content.";
        case XmlUnclosedInstruction:
            return L"A processing instruction was not closed.";
        case XmlUnclosedStartTag:
            return L"Element was not closed.";
        case XmlUnclosedString:
            return L"A string literal was not closed.";
        case XmlUnclosedComment:
            return L"A comment was not closed.";
        case XmlUnclosedCdata:
            return L"A CDATA section was not closed.";
        case XmlReservedNamespace:
            return L"The namespace prefix is not allowed to start with the reserved string.";
        case XmlEndTagMismatch:
            return L"End tag does not match the start tag '%1'.";
        case XmlInvalidEncoding:
            return L"System does not support the specified encoding.";
        case XmlInvalidSwitch:
            return L"Switch from current encoding to specified encoding not supported.";
        case XmlDtdProhibited:
        case XmlDtdProhibitedByNewParser:
            return L"DTD is prohibited.";
        case XmlElementDepth:
            return L"The document is nested deeper than MaxElementDepth allows.";
        case static_cast<unsigned>(INET_E_OBJECT_NOT_FOUND):
            return L"The system cannot locate the object specified.";
        case static_cast<unsigned>(INET_E_UNKNOWN_PROTOCOL):
            return L"Only local files can be loaded.";
        default:
            return L"The document could not be read.";
    }
}

}  // namespace

std::wstring ReasonFor(HRESULT code, const std::wstring& detail) {
    std::wstring reason(TextFor(code));
    const std::size_t place = reason.find(L"%1");
    if (place != std::wstring::npos) reason.replace(place, 2, detail);
    return reason + L"\r\n";
}

}  // namespace devkit::msxml
