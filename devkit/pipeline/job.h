#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
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
    // Behind these, pages that are made when they are asked for: so many, by their number from 0.
    std::size_t laterPages = 0;
    std::function<PageInput(std::size_t)> makePage{};

    [[nodiscard]] std::size_t PageCount() const noexcept { return pages.size() + laterPages; }
    [[nodiscard]] PageInput PageAt(std::size_t number) const {
        return number < pages.size() ? pages[number] : makePage(number - pages.size());
    }
};

struct JobInput {
    std::optional<InputPart> thumbnail;
    InputPart sequence;
    std::optional<InputPart> ticket;
    std::vector<DocumentInput> documents;
    // The bytes of the document with what a filter made of it. Unset when the document is not to be changed.
    // Throws common::Error. May be called once, when nothing more is read.
    std::function<std::string(const SentParts& parts)> package;
};

// The tree of a document as it stands. Parts are read from the document when the filter asks for them; the
// input keeps it alive. Throws common::Error.
[[nodiscard]] std::shared_ptr<const JobInput> MakeJobInput(
    const std::shared_ptr<const package::XpsDocument>& document);
// The same of a document that may be changed, so that the job can be packaged.
[[nodiscard]] std::shared_ptr<const JobInput> MakeJobInput(
    const std::shared_ptr<package::XpsDocument>& document);
// The document that these are the bytes of. Throws common::Error, naming it by `where`.
[[nodiscard]] std::shared_ptr<const JobInput> MakeJobInput(const Bytes& package, const std::string& where);

// Puts what the filter sent into the tree of the document that it was read from: pages and documents in their
// sending order, rewritten markup, tickets, resources and thumbnail. Parts that the filter made get a legal
// and unique name near to the one it gave. The parts must hold a FixedDocumentSequence. Throws
// common::Error. Each part is let go when it is in the tree.
void ApplySentParts(package::XpsDocument& document, SentParts parts);

}  // namespace devkit::pipeline
