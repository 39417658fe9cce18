#pragma once

#include "platform/windows.h"

#include <chrono>
#include <vector>

#include "devkit/pipeline/filtercalls.h"

namespace devkit::pipeline {

// What the pipeline answers after a cancellation. The platform documents none of it, so a filter must end
// under each.
enum class AfterCancel {
    FailGetXpsPart,  // GetXpsPart fails with HRESULT_FROM_WIN32(ERROR_CANCELLED)
    EndOfParts,      // GetXpsPart answers S_OK and no part
    KeepGiving,      // parts keep coming; sending them fails with HRESULT_FROM_WIN32(ERROR_CANCELLED)
};

// What a part without a ticket (or a document without a thumbnail) answers.
enum class MissingPart {
    NotFound,         // E_ELEMENT_NOT_FOUND
    SuccessWithNull,  // S_OK and no object
};

enum class EndFlag {
    WithLastData,   // set by the read that delivers the last byte
    AfterLastData,  // set by a read of its own that delivers nothing
};

// What RequestReader and RequestWriter give out.
enum class StreamKind {
    Xps,           // IXpsDocumentProvider, IXpsDocumentConsumer
    Unrecognised,  // the same objects, but QueryInterface knows them as IUnknown alone
    None,          // S_OK and a null pointer
};

// How the pipeline behaves where its documentation leaves room, and what is to go wrong.
struct Behaviour {
    ULONG maxBytesPerRead = 0;   // ReadBytes delivers at most so many; 0: as many as asked for
    ULONG maxBytesPerWrite = 0;  // WriteBytes takes at most so many; 0: all
    EndFlag endFlag = EndFlag::WithLastData;
    MissingPart missingPart = MissingPart::NotFound;
    StreamKind reader = StreamKind::Xps;
    StreamKind writer = StreamKind::Xps;
    bool ambiguousDocument = false;  // the XPS document answers the interfaces of every other part as well
    std::chrono::milliseconds slowPart{0};  // GetXpsPart waits so long, less when the job is cancelled
    AfterCancel afterCancel = AfterCancel::FailGetXpsPart;
    std::vector<Fault> faults;
    bool keepCalls = false;  // keep the calls as text
};

}  // namespace devkit::pipeline
