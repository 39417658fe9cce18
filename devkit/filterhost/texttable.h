#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace devkit::filterhost {

using TextId = std::size_t;

// Texts that come again and again, such as tickets: each is kept once, and named by its number. A number
// holds for as long as the table does.
class TextTable {
  public:
    // The number of the text, which is that of an equal one that is there; none for none.
    std::optional<TextId> Add(std::optional<std::string> text) {
        if (!text) return std::nullopt;
        if (const auto known = m_ids.find(*text); known != m_ids.end()) return known->second;
        const TextId id = m_texts.size();
        m_ids.emplace(m_texts.emplace_back(std::move(*text)), id);
        return id;
    }
    // By their numbers.
    [[nodiscard]] const std::deque<std::string>& All() const noexcept { return m_texts; }

    TextTable() = default;
    // The views into the texts follow a move: a deque's elements stay where they are.
    TextTable(TextTable&&) = default;
    TextTable& operator=(TextTable&&) = default;
    TextTable(const TextTable&) = delete;
    TextTable& operator=(const TextTable&) = delete;
    ~TextTable() = default;

  private:
    std::deque<std::string> m_texts;
    std::unordered_map<std::string_view, TextId> m_ids;
};

}  // namespace devkit::filterhost
