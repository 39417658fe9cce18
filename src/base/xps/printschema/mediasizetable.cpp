#include "base/xps/printschema/mediasizetable.h"

#include <algorithm>
#include <stdexcept>

#include "base/logging/check.h"

namespace base::xps::printschema {
namespace {

[[nodiscard]] std::wstring KeywordOf(std::wstring_view name) {
    constexpr std::wstring_view kPrefix = L"MediaSizeSchema::";
    const std::size_t found = name.find(kPrefix);
    if (found == std::wstring_view::npos) logging::Throw<std::logic_error>("Encounterd unexpect state.");
    return std::wstring(name).erase(found, kPrefix.size());
}

}  // namespace

const MediaSizeTable& MediaSizeTable::Instance() {
    static const MediaSizeTable kTable(MediaSizeRows());
    return kTable;
}

MediaSizeTable::MediaSizeTable(std::span<const MediaSizeRow> rows) {
    for (const MediaSizeRow& row : rows) {
        m_records.emplace(row.id, std::make_shared<const MediaSizeOption>(
                                      MediaSizeOption{KeywordOf(row.name), row.id, row.size}));
    }
}

const MediaSizeTable::Record& MediaSizeTable::ById(std::int32_t id) const {
    const auto found = m_records.find(id);
    return found == m_records.end() ? m_records.at(MediaSizeSchema::OptionUnknown) : found->second;
}

const MediaSizeTable::Record& MediaSizeTable::BySize(const MediaDimensions& size) const {
    const auto found =
        std::ranges::find_if(m_records, [&](const auto& entry) { return entry.second->size == size; });
    return found == m_records.end() ? m_records.at(MediaSizeSchema::OptionUnknown) : found->second;
}

}  // namespace base::xps::printschema
