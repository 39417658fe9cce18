#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace base::xps::printschema {

// A sheet's width and height in micrometres.
struct MediaDimensions {
    std::int32_t width = 0;
    std::int32_t height = 0;

    [[nodiscard]] bool operator==(const MediaDimensions&) const = default;
};

// A media size: an option of the PageMediaSize feature with the size of its sheet.
struct MediaSizeOption {
    std::wstring keyword;  // of the Print Schema Keywords namespace, without a prefix
    std::int32_t id = 0;
    MediaDimensions size;

    [[nodiscard]] bool operator==(const MediaSizeOption&) const = default;
};

// The option ids that the program names itself; every other id comes from the table.
struct MediaSizeSchema {
    static constexpr std::int32_t OptionUnknown = -1;
    static constexpr std::int32_t CustomMediaSize = 0;
    static constexpr std::int32_t PSCustomMediaSize = 1;
    static constexpr std::int32_t ISOA4 = 9;
    static constexpr std::int32_t NorthAmericaLetter = 94;
};

// One line of the media size list. The name is the keyword behind "MediaSizeSchema::".
struct MediaSizeRow {
    std::int32_t id;
    std::wstring_view name;
    MediaDimensions size;
};

// The list of all media sizes: the unknown one (-1), the custom ones (0 and 1) and those of a known size, by
// ascending id.
[[nodiscard]] std::span<const MediaSizeRow> MediaSizeRows() noexcept;

// The media sizes by id. Never changed once built; its records may be read by any thread.
class MediaSizeTable {
  public:
    using Record = std::shared_ptr<const MediaSizeOption>;

    // The table of MediaSizeRows(), built on first use.
    [[nodiscard]] static const MediaSizeTable& Instance();

    // The rows must hold the unknown media size. A name without "MediaSizeSchema::" throws std::logic_error.
    explicit MediaSizeTable(std::span<const MediaSizeRow> rows);

    // In ascending order of the ids.
    [[nodiscard]] const std::map<std::int32_t, Record>& Records() const noexcept { return m_records; }

    // The unknown media size when there is no such id.
    [[nodiscard]] const Record& ById(std::int32_t id) const;

    // The lowest id of exactly this size, the unknown media size when there is none.
    [[nodiscard]] const Record& BySize(const MediaDimensions& size) const;

    // Whether the id stands for a sheet of a known size. 172 does by this rule though the table does not hold
    // it.
    [[nodiscard]] static constexpr bool IsStandardSize(std::int32_t id) noexcept {
        return 2 <= id && id < 173;
    }

  private:
    std::map<std::int32_t, Record> m_records;
};

}  // namespace base::xps::printschema
