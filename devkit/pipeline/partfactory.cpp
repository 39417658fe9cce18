#include "devkit/pipeline/partfactory.h"

#include "devkit/common/error.h"
#include "devkit/pipeline/fixedpageobject.h"
#include "devkit/pipeline/resourceobjects.h"
#include "devkit/pipeline/ticketedobjects.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class AmbiguousDocumentObject final : public XpsDocumentObject {
  public:
    using XpsDocumentObject::XpsDocumentObject;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        const HRESULT hr = XpsDocumentObject::QueryInterface(iid, ppObject);
        if (hr != E_NOINTERFACE) return hr;
        return common::Guarded([&]() -> HRESULT {
            for (const PartKind kind :
                 {PartKind::FixedDocumentSequence, PartKind::FixedDocument, PartKind::FixedPage}) {
                const auto other =
                    MakePartObject(SharedContext(), std::make_shared<Part>(kind, "/ambiguous"));
                if (SUCCEEDED(other->QueryInterface(iid, ppObject))) return S_OK;
            }
            return E_NOINTERFACE;
        });
    }
};

}  // namespace

ComPtr<IUnknown> MakePartObject(const ContextPtr& context, const PartPtr& part) {
    switch (part->Kind()) {
        case PartKind::XpsDocument:
            return MakeIdentity<XpsDocumentObject>(context, part);
        case PartKind::FixedDocumentSequence:
            return MakeIdentity<FixedDocumentSequenceObject>(context, part);
        case PartKind::FixedDocument:
            return MakeIdentity<FixedDocumentObject>(context, part);
        case PartKind::FixedPage:
            return MakeIdentity<FixedPageObject>(context, part);
        default:
            return MakeResourceObject(context, part);
    }
}

ComPtr<IUnknown> MakeAmbiguousDocument(const ContextPtr& context, const PartPtr& part) {
    return MakeIdentity<AmbiguousDocumentObject>(context, part);
}

}  // namespace devkit::pipeline
