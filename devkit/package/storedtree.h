#pragma once

#include <string>

#include "devkit/common/recordlist.h"
#include "devkit/package/xpstree.h"

namespace devkit::package {

// A tree that is put by: its pages wait in a temporary file, but for the last few hundred. New markup of
// pages is not kept.
class StoredTree {
  public:
    StoredTree() = default;
    explicit StoredTree(const XpsTree& tree);

    // Whether it is this tree, and that has no new markup. Throws common::StorageError when the file cannot
    // be read, as Load does.
    [[nodiscard]] bool Is(const XpsTree& tree) const;
    [[nodiscard]] XpsTree Load() const;

  private:
    std::string m_frame;  // all but the pages, as a record
    common::RecordList<FixedPage> m_pages;
};

}  // namespace devkit::package
