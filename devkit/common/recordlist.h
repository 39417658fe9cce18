#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "devkit/common/error.h"
#include "devkit/common/file.h"
#include "devkit/common/record.h"

namespace devkit::common {

// A list that grows at its end and is read from its beginning. Its last elements are in memory; what there
// was before them waits in a temporary file as records. Where there can be no such file, all stays in memory.
template <typename Element>
class RecordList {
  public:
    static constexpr std::size_t kInMemory = 256;

    class Iterator;
    using value_type = Element;
    using const_iterator = Iterator;

    RecordList() = default;
    explicit RecordList(std::vector<Element> elements) : m_recent(std::move(elements)) {}

    void push_back(Element element) {
        if (m_recent.size() >= kInMemory) PutAside();
        m_recent.push_back(std::move(element));
    }
    [[nodiscard]] std::size_t size() const noexcept { return m_aside + m_recent.size(); }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }
    // The last one, of which there must be one.
    [[nodiscard]] const Element& back() const { return m_recent.back(); }
    // Reading throws StorageError when the file fails.
    [[nodiscard]] Iterator begin() const { return Iterator(*this); }
    [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

  private:
    void PutAside() {
        if (m_stays) return;
        std::string bytes;
        RecordWriter write(bytes);
        for (const Element& element : m_recent) write(element);
        const std::size_t size = bytes.size();
        try {
            if (m_file == nullptr) m_file = std::make_unique<TemporaryFile>();
            m_file->Append(bytes.data(), size);
        } catch (const StorageError&) {
            m_stays = true;
            return;
        }
        m_blocks.push_back({size, m_recent.size()});
        m_aside += m_recent.size();
        m_recent.clear();
    }

    // Elements that were put aside together.
    struct Block {
        std::size_t size = 0;
        std::size_t count = 0;
    };

    std::vector<Element> m_recent;
    std::unique_ptr<TemporaryFile> m_file;
    std::vector<Block> m_blocks;
    std::size_t m_aside = 0;
    bool m_stays = false;
};

// Goes through the list once; the list must not change meanwhile.
template <typename Element>
class RecordList<Element>::Iterator {
  public:
    using value_type = Element;
    using difference_type = std::ptrdiff_t;

    explicit Iterator(const RecordList& list) : m_pList(&list) { Load(); }

    const Element& operator*() const noexcept {
        return m_block < m_pList->m_blocks.size() ? m_elements[m_place] : m_pList->m_recent[m_place];
    }
    const Element* operator->() const noexcept { return &**this; }
    Iterator& operator++() {
        ++m_place;
        if (m_block < m_pList->m_blocks.size() && m_place == m_elements.size()) {
            m_offset += m_pList->m_blocks[m_block++].size;
            m_place = 0;
            Load();
        }
        return *this;
    }
    void operator++(int) { ++*this; }
    friend bool operator==(const Iterator& place, std::default_sentinel_t) noexcept { return place.IsEnd(); }

  private:
    [[nodiscard]] bool IsEnd() const noexcept {
        return m_block == m_pList->m_blocks.size() && m_place == m_pList->m_recent.size();
    }
    void Load() {
        if (m_block == m_pList->m_blocks.size()) return;
        const Block& block = m_pList->m_blocks[m_block];
        std::string bytes(block.size, '\0');
        m_pList->m_file->ReadAt(m_offset, bytes.data(), bytes.size());
        RecordReader read(bytes);
        m_elements.resize(block.count);
        for (Element& element : m_elements) read(element);
    }

    const RecordList* m_pList;
    std::size_t m_block = 0;  // behind all of them: the elements in memory
    std::uint64_t m_offset = 0;
    std::size_t m_place = 0;
    std::vector<Element> m_elements;  // of the block
};

}  // namespace devkit::common
