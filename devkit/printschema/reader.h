#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/printschema/element.h"

namespace devkit::printschema {

// A document that is no ticket, or no capabilities: one line that says what is wrong with it.
class FormatError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The most bytes that a document may have.
inline constexpr std::size_t kMaxDocumentSize = 32U * 1024U * 1024U;

// What a document that defines a name twice is worth.
enum class Duplicates { Refuse, KeepFirst };
// A ScoredProperty that has a Value and a ParameterRef.
enum class MixedValues { KeepFirst, Refuse };

struct PrefixBinding {
    std::string prefix;
    std::string uri;
};

struct FrameworkDocument {
    Element root;
    // Every prefix that the document declares, once, with its first namespace; not the default namespace.
    std::vector<PrefixBinding> prefixes;
    // A name stood twice among siblings, and the first one was kept.
    bool hadDuplicates = false;
};

// Reads a document of the Print Schema Framework, in UTF-8 or UTF-16, whose root is to be `root`. Throws
// FormatError for what is not well-formed, holds a document type declaration, is larger than kMaxDocumentSize
// or nested too deep, and for what the framework forbids: another root or version, elements in the wrong
// place, missing or unbound names, private attributes, text outside Value, more than one value where one is
// allowed, more than ten elements of one kind inside each other, a name twice among siblings (Option may
// repeat). Elements of other namespaces are skipped.
[[nodiscard]] FrameworkDocument ReadFramework(std::string_view bytes, Tag root,
                                              Duplicates duplicates = Duplicates::Refuse,
                                              MixedValues mixedValues = MixedValues::Refuse);

}  // namespace devkit::printschema
