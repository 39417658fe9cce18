#include "devkit/msxml/text/parsefailure.h"

#include <libxml/xmlerror.h>

#include <algorithm>
#include <utility>

namespace devkit::msxml {

ParseFailure FailureAt(XmlError code, std::wstring reason, std::wstring_view text, std::size_t position) {
    ParseFailure failure;
    failure.code = code;
    failure.reason = std::move(reason);
    position = std::min(position, text.size());
    const std::size_t lineBreak = position == 0 ? std::wstring_view::npos : text.rfind(L'\n', position - 1);
    const std::size_t start = lineBreak == std::wstring_view::npos ? 0 : lineBreak + 1;
    const std::size_t end = std::min(text.find_first_of(L"\r\n", start), text.size());
    failure.sourceText = text.substr(start, end > start ? end - start : 0);
    failure.line =
        1 + static_cast<long>(std::count(text.begin(), text.begin() + static_cast<long long>(start), L'\n'));
    failure.linePosition = static_cast<long>(position - start) + 1;
    failure.filePosition = static_cast<long>(position);
    return failure;
}

XmlError CodeOfLibraryError(int code) noexcept {
    switch (code) {
        case XML_ERR_DOCUMENT_EMPTY:
            return XmlMissingRoot;
        case XML_ERR_DOCUMENT_END:
            return XmlMultipleRoots;
        case XML_ERR_INVALID_HEX_CHARREF:
            return XmlInvalidHexadecimal;
        case XML_ERR_INVALID_DEC_CHARREF:
            return XmlInvalidDecimal;
        case XML_ERR_INVALID_CHARREF:
            return XmlInvalidUnicode;
        case XML_ERR_INVALID_CHAR:
        case XML_ERR_INVALID_ENCODING:
            return XmlBadCharData;
        case XML_ERR_ENTITYREF_SEMICOL_MISSING:
            return XmlMissingSemicolon;
        case XML_ERR_ENTITYREF_NO_NAME:
            return XmlBadStartNameChar;
        case XML_ERR_UNDECLARED_ENTITY:
        case XML_WAR_UNDECLARED_ENTITY:
            return XmlEntityUndefined;
        case XML_ERR_UNSUPPORTED_ENCODING:
        case XML_ERR_UNKNOWN_ENCODING:
            return XmlInvalidEncoding;
        case XML_ERR_STRING_NOT_CLOSED:
            return XmlUnclosedString;
        case XML_ERR_STRING_NOT_STARTED:
        case XML_ERR_ATTRIBUTE_NOT_STARTED:
            return XmlMissingQuote;
        case XML_ERR_ATTRIBUTE_NOT_FINISHED:
            return XmlExpectingCloseQuote;
        case XML_ERR_LT_IN_ATTRIBUTE:
            return XmlBadCharInString;
        case XML_ERR_ATTRIBUTE_WITHOUT_VALUE:
        case XML_ERR_EQUAL_REQUIRED:
            return XmlMissingEquals;
        case XML_ERR_ATTRIBUTE_REDEFINED:
            return XmlDuplicateAttribute;
        case XML_ERR_COMMENT_NOT_FINISHED:
            return XmlUnclosedComment;
        case XML_ERR_HYPHEN_IN_COMMENT:
            return XmlCommentSyntax;
        case XML_ERR_PI_NOT_STARTED:
            return XmlInstructionSyntax;
        case XML_ERR_PI_NOT_FINISHED:
            return XmlUnclosedInstruction;
        case XML_ERR_RESERVED_XML_NAME:
        case XML_ERR_XMLDECL_NOT_STARTED:
        case XML_ERR_UNKNOWN_VERSION:
        case XML_ERR_VERSION_MISSING:
            return XmlBadDeclaration;
        case XML_ERR_XMLDECL_NOT_FINISHED:
        case XML_ERR_STANDALONE_VALUE:
        case XML_ERR_ENCODING_NAME:
            return XmlDeclarationSyntax;
        case XML_ERR_MISPLACED_CDATA_END:
            return XmlInvalidCdataClosing;
        case XML_ERR_CDATA_NOT_FINISHED:
            return XmlUnclosedCdata;
        case XML_ERR_SPACE_REQUIRED:
            return XmlMissingWhiteSpace;
        case XML_ERR_NAME_REQUIRED:
            return XmlBadStartNameChar;
        case XML_NS_ERR_COLON:
            return XmlBadNameChar;
        case XML_ERR_GT_REQUIRED:
            return XmlExpectingTagEnd;
        case XML_ERR_LTSLASH_REQUIRED:
        case XML_ERR_TAG_NOT_FINISHED:
            return XmlUnclosedTag;
        case XML_ERR_TAG_NAME_MISMATCH:
            return XmlEndTagMismatch;
        default:
            return XmlInvalidAtRootLevel;
    }
}

}  // namespace devkit::msxml
