#include "devkit/filterhost/jsonlines.h"

#include <iterator>
#include <vector>

#include <nlohmann/json.hpp>

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;

// Goes through a text and counts the lines of what is behind it.
class CountingIterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* place, std::size_t* pLine) : m_place(place), m_pLine(pLine) {}
    reference operator*() const { return *m_place; }
    CountingIterator& operator++() {
        if (*m_place++ == '\n') ++*m_pLine;
        return *this;
    }
    friend bool operator==(const CountingIterator& left, const CountingIterator& right) {
        return left.m_place == right.m_place;
    }

  private:
    const char* m_place;
    std::size_t* m_pLine;
};

// A member's line is that of its key: behind a number the parser has already read on.
class LineReader final : public Json::json_sax_t {
  public:
    explicit LineReader(const std::size_t& line) : m_line(line) {}

    std::map<std::string, std::size_t> lines;

    bool null() override { return Value(); }
    bool boolean(bool) override { return Value(); }
    bool number_integer(number_integer_t) override { return Value(); }
    bool number_unsigned(number_unsigned_t) override { return Value(); }
    bool number_float(number_float_t, const string_t&) override { return Value(); }
    bool string(string_t&) override { return Value(); }
    bool binary(binary_t&) override { return Value(); }
    bool start_object(std::size_t) override { return Begin(false); }
    bool start_array(std::size_t) override { return Begin(true); }
    bool end_object() override { return End(); }
    bool end_array() override { return End(); }
    bool key(string_t& name) override {
        m_levels.back().step = name;
        lines.emplace(Place(), m_line);
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const Json::exception&) override { return false; }

  private:
    struct Level {
        bool isArray = false;
        std::size_t count = 0;
        std::string step;
    };

    [[nodiscard]] std::string Place() const {
        std::string place;
        for (const Level& level : m_levels) place += "/" + level.step;
        return place;
    }
    bool Value() {
        if (m_levels.empty() || !m_levels.back().isArray) return true;
        m_levels.back().step = std::to_string(m_levels.back().count++);
        lines.emplace(Place(), m_line);
        return true;
    }
    bool Begin(bool isArray) {
        Value();
        m_levels.push_back({isArray, 0, {}});
        return true;
    }
    bool End() {
        m_levels.pop_back();
        return true;
    }

    const std::size_t& m_line;
    std::vector<Level> m_levels;
};

}  // namespace

std::map<std::string, std::size_t> LinesOf(std::string_view json) {
    std::size_t line = 1;
    LineReader reader(line);
    const bool isRead = Json::sax_parse(CountingIterator(json.data(), &line),
                                        CountingIterator(json.data() + json.size(), &line), &reader);
    return isRead ? std::move(reader.lines) : std::map<std::string, std::size_t>();
}

}  // namespace devkit::filterhost
