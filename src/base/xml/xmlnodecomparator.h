#pragma once

#include "platform/windows.h"

#include "platform/msxml6.h"

namespace base::xml {

// Decides for the merger whether a node of one document stands for the same thing as a node of another.
class XmlNodeComparator {
  public:
    virtual ~XmlNodeComparator() = default;

    // Both nodes are borrowed for the call. A failing DOM call throws HresultError.
    [[nodiscard]] virtual bool IsSameNode(IXMLDOMNode* pFirst, IXMLDOMNode* pSecond) const = 0;
};

}  // namespace base::xml
