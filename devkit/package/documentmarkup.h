#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "devkit/common/limits.h"
#include "devkit/package/xpsvocabulary.h"

namespace devkit::package {

// The markup of a sequence or of a fixed document.
enum class DocumentRoot { FixedDocumentSequence, FixedDocument };

struct DocumentMarkup {
    DocumentRoot root = DocumentRoot::FixedDocument;
    // What the DocumentReference or PageContent elements refer to, as written; empty where one says nothing.
    // Of alternate content the branch that a consumer of XPS takes.
    std::vector<std::string> references;
};

// Throws common::Error, naming the part, when the markup is neither or cannot be read.
[[nodiscard]] DocumentMarkup ParseDocumentMarkup(std::string_view markup, const std::string& partName,
                                                 const common::XmlLimits& limits);

// The markup with references to these parts, in this order, and no others. An element that is there stays
// with all that it holds; a new one refers to the part by its absolute name. The encoding stays.
[[nodiscard]] std::string WithReferences(std::string_view markup, const std::string& partName,
                                         const std::vector<std::string>& parts);

// The markup of a new sequence or document, in UTF-8.
[[nodiscard]] std::string NewDocumentMarkup(Flavour flavour, DocumentRoot root,
                                            const std::vector<std::string>& parts);

}  // namespace devkit::package
