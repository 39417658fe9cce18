#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <vector>

namespace devkit::msxml {

// The prefixes that are bound while elements are entered and left. Text is a string class for prefixes and
// URIs, View its view class.
template <typename Text, typename View>
class NamespaceScope {
  public:
    void Enter() { m_levels.push_back(m_declared.size()); }

    void Leave() {
        while (m_declared.size() > m_levels.back()) {
            m_declared.back()->second.pop_back();
            m_declared.pop_back();
        }
        m_levels.pop_back();
    }

    // Binds a prefix until the element that was entered last is left.
    void Declare(View prefix, View uri) {
        auto place = m_uris.find(prefix);
        if (place == m_uris.end()) place = m_uris.emplace(Text(prefix), std::vector<Text>()).first;
        m_declared.push_back(place);
        place->second.emplace_back(uri);
    }

    // Null for a prefix that is not bound. Good until the next change.
    [[nodiscard]] const Text* Find(View prefix) const {
        const auto place = m_uris.find(prefix);
        return place == m_uris.end() || place->second.empty() ? nullptr : &place->second.back();
    }

  private:
    using Uris = std::map<Text, std::vector<Text>, std::less<>>;

    Uris m_uris;  // for each prefix its URIs, the innermost last
    std::vector<typename Uris::iterator> m_declared;
    std::vector<std::size_t> m_levels;  // the count of declarations when each open element was entered
};

}  // namespace devkit::msxml
