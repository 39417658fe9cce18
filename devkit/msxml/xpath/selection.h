#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "devkit/msxml/tree/node.h"
#include "devkit/msxml/xpath/namespaces.h"

namespace devkit::msxml {

class QueryTree;

// Answers the XPath queries of a document.
class Selector {
  public:
    Selector() noexcept;
    ~Selector();

    std::vector<SelectionNamespace> namespaces;

    // The nodes that an XPath 1.0 expression selects from a node of the document, in document order: the
    // first ones up to the limit. Namespace declarations are no attributes to XPath, and its namespace axis
    // is empty. Refused with XmlNotAllowed for an expression that is not XPath, has a prefix that is not
    // declared or gives no nodes but a value.
    [[nodiscard]] std::vector<NodeRef> Select(Node& node, std::wstring_view expression,
                                              std::size_t limit = static_cast<std::size_t>(-1));

  private:
    [[nodiscard]] QueryTree& CurrentTree(Node& root);

    std::unique_ptr<QueryTree> m_pTree;  // the one that was built last
};

}  // namespace devkit::msxml
