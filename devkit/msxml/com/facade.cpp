#include "devkit/msxml/com/facade.h"

namespace devkit::msxml {

NodeRef NodeOf(IUnknown* pObject) noexcept {
    void* pFound = nullptr;
    if (pObject == nullptr || FAILED(pObject->QueryInterface(kIidOfNode, &pFound))) return NodeRef();
    auto* const pNode = static_cast<Node*>(pFound);
    NodeRef node(pNode);
    pNode->Drop();
    return node;
}

}  // namespace devkit::msxml
