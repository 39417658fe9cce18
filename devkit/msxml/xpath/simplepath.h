#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "devkit/msxml/tree/node.h"
#include "devkit/msxml/xpath/namespaces.h"

namespace devkit::msxml {

// The XPath expressions that filters ask most: element names from the node down or anywhere, each perhaps
// with the value of one attribute, as in //p:a[@b = "c"]/p:d | //p:e. They are answered on the tree itself,
// without a copy of it for the XML library. A path refers to the expression and the namespaces that it was
// read from, which outlive it.
class SimplePath {
  public:
    // None for any other expression, valid or not, and for one with a prefix that is not declared.
    [[nodiscard]] static std::optional<SimplePath> Parse(std::wstring_view expression,
                                                         const std::vector<SelectionNamespace>& namespaces);

    // Whether it asks from the root of the tree on, which has to be a document then.
    [[nodiscard]] bool IsAbsolute() const noexcept {
        return m_start == Start::Root || m_start == Start::Document;
    }

    // The first nodes in document order, up to the limit.
    [[nodiscard]] std::vector<NodeRef> Select(Node& node, std::size_t limit) const;

  private:
    enum class Start {
        Child,     // a
        Root,      // /a
        Below,     // .//a
        Document,  // //a
    };
    struct Step {
        std::wstring_view local;
        std::wstring_view uri;
        std::wstring_view attribute;  // empty when there is none to look at
        std::wstring_view value;
        bool isFirst = false;  // of an alternative
    };
    class Reader;

    [[nodiscard]] static bool Matches(const Step& step, const Node& node);
    [[nodiscard]] bool LeadsTo(const Node& node, const Node& base) const;
    void SelectBelow(Node& base, std::size_t limit, std::vector<NodeRef>& found) const;
    void SelectDown(Node& base, std::size_t limit, std::vector<NodeRef>& found) const;

    Start m_start = Start::Child;
    std::vector<Step> m_steps;  // of one alternative after the other
};

}  // namespace devkit::msxml
