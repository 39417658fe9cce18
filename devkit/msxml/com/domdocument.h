#pragma once

#include "platform/windows.h"

namespace devkit::msxml {

// Creates an empty DOM document with the behaviour that is documented for DOMDocument60, without COM's class
// table: IXMLDOMDocument2, IStream and their bases. The caller releases *ppDocument,
// which is null after a failure. E_POINTER for a null ppDocument, E_NOINTERFACE for an interface that the
// document does not have, E_OUTOFMEMORY.
//
// One thread at a time may use a document with its nodes, lists and streams; which thread that is may change.
[[nodiscard]] HRESULT CreateDomDocument(REFIID iid, void** ppDocument) noexcept;

// The objects of this library that are alive in the process: documents, nodes (held by a caller or only by
// their tree), lists, maps, streams, parse errors and class objects. It is 0 when nothing has leaked. Any
// thread may ask.
[[nodiscard]] long LiveObjectCount() noexcept;

// Calls that fail put null into the caller's out-pointers. Windows' document leaves there what there was; a
// filter that relies on either shows when all documents of the process do as Windows' does. Any thread may
// say so.
void LeaveOutPointersOfFailures(bool leave) noexcept;

}  // namespace devkit::msxml
