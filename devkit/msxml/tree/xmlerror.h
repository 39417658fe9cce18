#pragma once

namespace devkit::msxml {

// Why something is refused, in the codes of MSXML 6 where it has one.
enum XmlError : unsigned {
    XmlNotAllowed = 1,  // the tree has no place for it
    XmlPrefixConflict,  // a prefix would mean two namespaces on one element

    XmlEntityUndefined = 0xC00CE002,
    XmlPrefixUndeclared = 0xC00CE01D,
    XmlMissingEquals = 0xC00CE501,
    XmlMissingQuote = 0xC00CE502,
    XmlCommentSyntax = 0xC00CE503,
    XmlBadStartNameChar = 0xC00CE504,
    XmlBadNameChar = 0xC00CE505,
    XmlBadCharInString = 0xC00CE506,
    XmlDeclarationSyntax = 0xC00CE507,
    XmlBadCharData = 0xC00CE508,
    XmlMissingWhiteSpace = 0xC00CE509,
    XmlExpectingTagEnd = 0xC00CE50A,
    XmlMissingSemicolon = 0xC00CE50D,
    XmlInternalError = 0xC00CE512,
    XmlInstructionSyntax = 0xC00CE51A,
    XmlExpectingCloseQuote = 0xC00CE51B,
    XmlMultipleColons = 0xC00CE51C,
    XmlInvalidDecimal = 0xC00CE51D,
    XmlInvalidHexadecimal = 0xC00CE51E,
    XmlInvalidUnicode = 0xC00CE51F,
    XmlUnclosedTag = 0xC00CE553,
    XmlDuplicateAttribute = 0xC00CE554,
    XmlMultipleRoots = 0xC00CE555,
    XmlInvalidAtRootLevel = 0xC00CE556,
    XmlBadDeclaration = 0xC00CE557,
    XmlMissingRoot = 0xC00CE558,
    XmlInvalidCdataClosing = 0xC00CE55C,
    XmlUnclosedInstruction = 0xC00CE55D,
    XmlUnclosedString = 0xC00CE560,
    XmlUnclosedComment = 0xC00CE561,
    XmlUnclosedCdata = 0xC00CE564,
    XmlReservedNamespace = 0xC00CE568,
    XmlEndTagMismatch = 0xC00CE56D,
    XmlInvalidEncoding = 0xC00CE56E,
    XmlInvalidSwitch = 0xC00CE56F,
    XmlDtdProhibited = 0xC00CE584,
    XmlElementDepth = 0xC00CE586,
    XmlDtdProhibitedByNewParser = 0xC00CEE4E,
};

// Thrown where the tree, its markup or a query of it is refused.
struct Refused {
    XmlError code;
};

}  // namespace devkit::msxml
