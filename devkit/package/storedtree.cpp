#include "devkit/package/storedtree.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace devkit::package {

namespace {

std::string FrameOf(const XpsTree& tree) {
    std::string bytes;
    common::RecordWriter write(bytes);
    const FixedDocumentSequence& sequence = tree.sequence;
    write(sequence.name, sequence.implied, sequence.ticket, tree.thumbnail, sequence.documents.size());
    for (const FixedDocument& document : sequence.documents)
        write(document.name, document.ticket, document.pages.size());
    return bytes;
}

bool IsSame(const FixedPage& left, const FixedPage& right) {
    return left.name == right.name && left.ticket == right.ticket && left.resources == right.resources;
}

}  // namespace

StoredTree::StoredTree(const XpsTree& tree) : m_frame(FrameOf(tree)) {
    for (const FixedDocument& document : tree.sequence.documents) {
        for (const FixedPage& page : document.pages)
            m_pages.push_back({page.name, std::nullopt, page.ticket, page.resources});
    }
}

bool StoredTree::Is(const XpsTree& tree) const {
    if (m_frame != FrameOf(tree)) return false;
    auto stored = m_pages.begin();
    for (const FixedDocument& document : tree.sequence.documents) {
        for (const FixedPage& page : document.pages) {
            if (page.markup || !IsSame(page, *stored)) return false;
            ++stored;
        }
    }
    return true;
}

XpsTree StoredTree::Load() const {
    XpsTree tree;
    FixedDocumentSequence& sequence = tree.sequence;
    std::size_t documents = 0;
    common::RecordReader read(m_frame);
    read(sequence.name, sequence.implied, sequence.ticket, tree.thumbnail, documents);
    auto page = m_pages.begin();
    for (std::size_t i = 0; i < documents; ++i) {
        FixedDocument& document = sequence.documents.emplace_back();
        std::size_t pages = 0;
        read(document.name, document.ticket, pages);
        for (; pages > 0; --pages, ++page) document.pages.push_back(*page);
    }
    return tree;
}

}  // namespace devkit::package
