#pragma once

#include "platform/windows.h"

#include "devkit/pipeline/part.h"
#include "devkit/pipeline/runcontext.h"
#include "platform/comptr.h"

namespace devkit::pipeline {

// A new object for the part, of the kind that the part is.
[[nodiscard]] platform::ComPtr<IUnknown> MakePartObject(const ContextPtr& context, const PartPtr& part);

// An XPS document that also answers IFixedDocumentSequence, IFixedDocument and IFixedPage, each with a part
// named "/ambiguous" that is not of the job. A filter that asks for IXpsDocument first never meets them.
[[nodiscard]] platform::ComPtr<IUnknown> MakeAmbiguousDocument(const ContextPtr& context,
                                                               const PartPtr& part);

}  // namespace devkit::pipeline
