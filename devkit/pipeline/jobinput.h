#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "devkit/package/xpsdocument.h"
#include "devkit/pipeline/part.h"

namespace devkit::pipeline {

// The document that a run sends through the filter. It is read only, so one input can serve many runs, one
// after the other.

struct ResourceInput {
    PartKind kind = PartKind::Unknown;
    InputPart part;
};

struct PageInput {
    InputPart markup;
    std::optional<InputPart> ticket;
    std::vector<ResourceInput> resources;
};

struct DocumentInput {
    InputPart markup;
    std::optional<InputPart> ticket;
    std::vector<PageInput> pages;
};

struct JobInput {
    std::optional<InputPart> thumbnail;
    InputPart sequence;
    std::optional<InputPart> ticket;
    std::vector<DocumentInput> documents;
};

// The tree of a document as it stands. Parts are read from the document when the filter asks for them; the
// input keeps it alive. Throws package::PackageError.
[[nodiscard]] std::shared_ptr<const JobInput> MakeJobInput(
    const std::shared_ptr<const package::XpsDocument>& document);

}  // namespace devkit::pipeline
