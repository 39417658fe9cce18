#pragma once

#include "platform/windows.h"

#include "base/xml/xmlnodecomparator.h"
#include "platform/msxml6.h"

namespace base::xps::printschema {

// Two nodes of print tickets are the same when they have the same qualified name and the same "name"
// attribute, or both none. Names are compared as text: the same name under another prefix is another name.
// Values are not compared.
class PrintTicketStructureComparator : public xml::XmlNodeComparator {
  public:
    [[nodiscard]] bool IsSameNode(IXMLDOMNode* pFirst, IXMLDOMNode* pSecond) const override;
    [[nodiscard]] std::optional<std::wstring> KeyOf(IXMLDOMNode* pNode) const override;
};

}  // namespace base::xps::printschema
