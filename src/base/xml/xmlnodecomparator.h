#pragma once

#include "platform/windows.h"

#include <optional>
#include <string>

#include "platform/msxml6.h"

namespace base::xml {

// Decides for the merger whether a node of one document stands for the same thing as a node of another.
class XmlNodeComparator {
  public:
    virtual ~XmlNodeComparator() = default;

    // Both nodes are borrowed for the call. A failing DOM call throws HresultError.
    [[nodiscard]] virtual bool IsSameNode(IXMLDOMNode* pFirst, IXMLDOMNode* pSecond) const = 0;

    // A text of which two nodes have the same exactly when they are the same, and which merging children and
    // namespace declarations into a node does not change. A comparator that has none is asked for every pair.
    [[nodiscard]] virtual std::optional<std::wstring> KeyOf(IXMLDOMNode* pNode) const;
};

inline std::optional<std::wstring> XmlNodeComparator::KeyOf(IXMLDOMNode*) const { return std::nullopt; }

}  // namespace base::xml
