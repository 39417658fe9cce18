#include "devkit/filterhost/edgewatch.h"

#include <algorithm>

#include "devkit/common/file.h"
#include "devkit/edges/edgetable.h"

namespace devkit::filterhost {
namespace {

std::span<unsigned char> TableOf(HMODULE module) {
    const auto function = reinterpret_cast<edges::TableFunction*>(
        reinterpret_cast<void*>(GetProcAddress(module, edges::kTableFunction)));
    std::size_t size = 0;
    unsigned char* const pTable = function == nullptr ? nullptr : function(&size);
    return {pTable, std::min(pTable == nullptr ? 0 : size, edges::kMostEdges)};
}

void Add(std::span<const unsigned char> table, std::size_t first, std::unordered_set<std::uint32_t>& known,
         fuzz::Edges& edges) {
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto number = static_cast<std::uint32_t>(first + i);
        if (table[i] != 0 && known.insert(number).second) edges.push_back(number);
    }
}

}  // namespace

EdgeWatch::EdgeWatch(const std::filesystem::path& filter)
    : m_filter(LoadLibraryExW(filter.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)),
      m_filters(m_filter == nullptr ? std::span<unsigned char>() : TableOf(m_filter.get())),
      m_own(TableOf(GetModuleHandleW(nullptr))) {
    if (m_filters.empty()) {
        throw NoEdges("--guided: " + common::PathText(filter.filename()) +
                      " has no table of its edges; docs/testing.md says how it gets one");
    }
    for (const std::span<unsigned char> table : {m_filters, m_own})
        std::ranges::fill(table, static_cast<unsigned char>(0));
}

fuzz::Edges EdgeWatch::Reached(std::unordered_set<std::uint32_t>& known) const {
    fuzz::Edges edges;
    Add(m_filters, 0, known, edges);
    Add(m_own, edges::kMostEdges, known, edges);
    return edges;
}

}  // namespace devkit::filterhost
