#include "devkit/fuzz/markupscan.h"

#include <algorithm>

namespace devkit::fuzz {
namespace {

constexpr std::string_view kWhite = " \t\r\n";

class Scanner {
  public:
    explicit Scanner(std::string_view markup) : m_markup(markup) {}

    MarkupScan Scan() {
        std::size_t at = 0;
        while ((at = m_markup.find('<', at)) != std::string_view::npos) at = TakeTag(at);
        return std::move(m_scan);
    }

  private:
    // From the "<" at `at`; gives where to go on.
    std::size_t TakeTag(std::size_t at) {
        const std::string_view rest = m_markup.substr(at);
        if (rest.starts_with("<!--")) return Behind("-->", at);
        if (rest.starts_with("<![CDATA[")) return Behind("]]>", at);
        if (rest.starts_with("<?")) return Behind("?>", at);
        if (rest.starts_with("<!")) return Behind(">", at);
        if (rest.starts_with("</")) {
            const std::size_t end = Behind(">", at);
            if (!m_open.empty()) {
                m_scan.elements[m_open.back()].all.end = end;
                m_open.pop_back();
            }
            return end;
        }
        return TakeStartTag(at);
    }

    std::size_t TakeStartTag(std::size_t at) {
        ScannedElement element;
        element.depth = m_open.size();
        element.name = {at + 1, std::min(m_markup.find_first_of(" \t\r\n/>", at + 1), m_markup.size())};
        std::size_t next = element.name.end;
        while (next < m_markup.size() && m_markup[next] != '>') next = TakeAttribute(next);
        const std::size_t end = std::min(next + 1, m_markup.size());
        element.startTag = {at, end};
        const bool isEmpty = end >= 2 && m_markup.substr(0, end).ends_with("/>");
        element.all = {at, isEmpty ? end : m_markup.size()};
        if (!isEmpty) m_open.push_back(m_scan.elements.size());
        m_scan.elements.push_back(element);
        return end;
    }

    // What follows the tag's name or another attribute; gives where to go on, at least one byte further.
    std::size_t TakeAttribute(std::size_t at) {
        const std::size_t name = m_markup.find_first_not_of(kWhite, at);
        if (name == std::string_view::npos) return m_markup.size();
        if (m_markup[name] == '>') return name;
        const std::size_t equals = m_markup.find_first_of("=<>\"'/ \t\r\n", name);
        if (equals == std::string_view::npos) return m_markup.size();
        if (m_markup[equals] != '=' || equals + 1 >= m_markup.size()) return std::max(equals, name + 1);
        const char quote = m_markup[equals + 1];
        if (quote != '"' && quote != '\'') return equals + 1;
        const std::size_t close = m_markup.find(quote, equals + 2);
        if (close == std::string_view::npos) return m_markup.size();
        m_scan.attributes.push_back({{at, close + 1}, {name, equals}, {equals + 2, close}});
        return close + 1;
    }

    [[nodiscard]] std::size_t Behind(std::string_view text, std::size_t at) const {
        const std::size_t found = m_markup.find(text, at);
        return found == std::string_view::npos ? m_markup.size() : found + text.size();
    }

    const std::string_view m_markup;
    MarkupScan m_scan;
    std::vector<std::size_t> m_open;
};

}  // namespace

MarkupScan ScanMarkup(std::string_view markup) { return Scanner(markup).Scan(); }

}  // namespace devkit::fuzz
