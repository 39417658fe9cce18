#pragma once

#include "devkit/msxml/comobject.h"
#include "platform/msxml6.h"

namespace devkit::msxml {

// What implementation gives. The features are "XML", "DOM" and "MS-DOM", in versions 1.0 and, for the
// last, 2.0.
class DomImplementation final : public ComObject<IXMLDOMImplementation> {
  public:
    HRESULT STDMETHODCALLTYPE hasFeature(BSTR feature, BSTR version, VARIANT_BOOL* pHas) override;
};

}  // namespace devkit::msxml
