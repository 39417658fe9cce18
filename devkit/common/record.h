#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace devkit::common {

// Values as bytes, for this process to read again: numbers as they are in memory, texts, what may be unset,
// lists, and structures that have a function beside them which names their fields:
//
//     template <typename Visit>
//     void RecordFields(Visit& visit, common::MaybeConst<Size> auto& size) { visit(size.width, size.height);
//     }
template <typename Given, typename Value>
concept MaybeConst = std::is_same_v<std::remove_const_t<Given>, Value>;

template <typename Value>
concept TextValue = std::is_same_v<Value, std::string>;
template <typename Value>
concept ListValue = std::is_same_v<Value, std::vector<typename Value::value_type>>;
template <typename Value>
concept PlainValue = std::is_trivially_copyable_v<Value>;

class RecordWriter {
  public:
    explicit RecordWriter(std::string& bytes) : m_bytes(bytes) {}

    template <typename... Values>
    void operator()(const Values&... values) {
        (Put(values), ...);
    }

  private:
    void Put(const PlainValue auto& value) {
        m_bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
    }
    void Put(const TextValue auto& text) {
        Put(text.size());
        m_bytes += text;
    }
    template <typename Value>
    void Put(const std::optional<Value>& value) requires(!PlainValue<Value>) {
        Put(value.has_value());
        if (value) Put(*value);
    }
    void Put(const ListValue auto& list) {
        Put(list.size());
        for (const auto& value : list) Put(value);
    }
    template <typename Value>
    void Put(const Value& value) requires(!PlainValue<Value> && !TextValue<Value> && !ListValue<Value>) {
        RecordFields(*this, value);
    }

    std::string& m_bytes;
};

class RecordReader {
  public:
    explicit RecordReader(std::string_view bytes) : m_bytes(bytes) {}

    // Throws std::out_of_range when the bytes end before the values do.
    template <typename... Values>
    void operator()(Values&... values) {
        (Take(values), ...);
    }
    [[nodiscard]] std::string_view Rest() const noexcept { return m_bytes; }

  private:
    std::string_view Bytes(std::size_t size) {
        if (size > m_bytes.size()) throw std::out_of_range("a record is cut off");
        const std::string_view bytes = m_bytes.substr(0, size);
        m_bytes.remove_prefix(size);
        return bytes;
    }
    void Take(PlainValue auto& value) { std::memcpy(&value, Bytes(sizeof(value)).data(), sizeof(value)); }
    void Take(TextValue auto& text) {
        std::size_t size = 0;
        Take(size);
        text = Bytes(size);
    }
    template <typename Value>
    void Take(std::optional<Value>& value) requires(!PlainValue<Value>) {
        bool isSet = false;
        Take(isSet);
        value.reset();
        if (isSet) Take(value.emplace());
    }
    void Take(ListValue auto& list) {
        std::size_t size = 0;
        Take(size);
        list.clear();
        for (std::size_t i = 0; i < size; ++i) Take(list.emplace_back());
    }
    template <typename Value>
    void Take(Value& value) requires(!PlainValue<Value> && !TextValue<Value> && !ListValue<Value>) {
        RecordFields(*this, value);
    }

    std::string_view m_bytes;
};

}  // namespace devkit::common
