#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "devkit/common/content.h"
#include "devkit/common/record.h"

namespace devkit::package {

// The tree of an XPS document, in sending order. Part names are those of the package; a ticket may hang in
// several places, every document and page stands in the tree once.

struct FixedPage {
    std::string name;
    std::optional<common::Content> markup;  // new markup; unset while the page keeps its own
    std::optional<std::string> ticket;      // the part's name
    std::vector<std::string> resources;  // names of the fonts, images, dictionaries ... that the page needs
};

// All but the new markup, for a tree that is put by.
template <typename Visit>
void RecordFields(Visit& visit, common::MaybeConst<FixedPage> auto& page) {
    visit(page.name, page.ticket, page.resources);
}

struct FixedDocument {
    std::string name;
    std::optional<std::string> ticket;
    // Not in one piece, which would be copied while it grows.
    std::deque<FixedPage> pages;
};

struct FixedDocumentSequence {
    std::string name;
    // Set when the package starts with a fixed document: the sequence of this one document has no part of its
    // own until a change needs one.
    bool implied = false;
    std::optional<std::string> ticket;
    std::vector<FixedDocument> documents;
};

struct XpsTree {
    FixedDocumentSequence sequence;
    std::optional<std::string> thumbnail;  // of the package; the part's name
};

}  // namespace devkit::package
