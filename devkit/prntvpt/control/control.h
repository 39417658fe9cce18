#pragma once

#include "platform/windows.h"

// What the simulated prntvpt.dll exports beside the functions of the platform: a host sets the simulation up,
// and reads what it saw, through these. All texts are UTF-8 and end with a zero. Any thread may call, at any
// time. They are looked up by name (GetProcAddress) in the module that the host has loaded by its full path;
// SimulatedProvider in simulatedprovider.h does that.
//
// CONFIGURATION, one JSON object:
//   "device"    folder of a device model (devkit/devices/NAME). Required.
//   "printers"  list of printer names that can be opened, without regard to case. Default: those of the
//   model. "switches"  list of "KEY=VALUE" texts, in any order; of a key that comes twice the last one holds,
//   but
//               every "fault=" counts. Default value first:
//     private=known|strict|all     names that the device does not report go | the device's own private
//                                  features go too | foreign features, parameters and properties stay
//     strict=features|options      whether private=strict also removes private options of public features
//     prefixes=std|mangled|default-ns|local|collide    namespace prefixes of what is written
//     order=device|input|reversed                      order of the elements of what is written
//     encoding=utf8|utf8-bom|utf16le                   encoding of what is written
//     whitespace=none|pretty|comments                  layout; comments come with processing instructions
//     duplicates=refuse|first      a ticket that defines a name twice
//     mixed-values=first|refuse    a scored property that has both a Value and a ParameterRef
//     orphans=keep|prune           parameters to which no selected option refers
//     fallback=default|nearest     what replaces a media size that the device lacks
//     option-props=strip|keep-perfect    properties of options
//     drop-is-conflict=0|1         whether dropping what is foreign makes the result S_PT_CONFLICT_RESOLVED
//     thread=enforce|warn|off      a handle used on a thread that did not open it
//   variants of the device:
//     bins=job|document|page       scope of the input bin feature
//     no-scaling=0|1  no-copies=0|1      the device lacks PageScaling, the copies parameters
//     feed=scored|property|absent  how bins state FeedDirection
//     imageable=oriented|portrait|absent   PageImageableSize follows the orientation, does not, is not there
//     us=0|1                       Letter is the default sheet
//     snapshot=N                   adds PageDevmodeSnapshot with N bytes in base64; 0: none
//     private-size-names=0|1       all media sizes are private options "UserNNNNNNNNNN"
//   faults, fault=MODE[:ARGUMENT][@N][:SCOPE]. N: only the Nth call of the function concerned (of that scope,
//   if one is given), counted from the last SimConfigure or SimReset; SCOPE: job, document, page:
//     open-denied open-gone open-rpc
//     merge-refuse-base merge-refuse-delta merge-fail merge-oom
//     s-ok                         a good merge answers S_OK
//     conflict[:FEATURE]           one setting (default PageOrientation) is changed, S_PT_CONFLICT_RESOLVED
//     conflict-silent[:FEATURE]    the same, S_PT_NO_CONFLICT
//     out-empty out-truncated out-notxml out-wrongroot out-duplicate out-missing:FEATURE out-bad-value
//     out-rewound                  the result stream is left at its start
//     out-shortwrite               the result stream fails half-way: STG_E_MEDIUMFULL
//     slow:MILLISECONDS            opening, merging and asking for capabilities wait first
//     caps-notimpl caps-fail caps-noimageable caps-zero-extent
//     bstr-null-on-error           failures give no error text
//     bstr-on-success              successes give one
//   "record_tickets"  whether the log keeps the texts of tickets and capabilities. Default: true.
//   "record_calls"    whether the report has the calls. Default: true. Who listens to them needs no second
//   copy,
//                     which would grow with each.
// A key or value that is not of this list is an error.
//
// Where no host configures the DLL, the environment variable PRNTVPT_CONFIGURATION may name a file with such
// an object; it is read at the first call. Without either, there is no printer.
//
// REPORT, one JSON object:
//   "configuration"  {"device", "printers", "switches": every switch with its value, "faults": list}
//   "calls"          in the order of their start: {"sequence" (the number of the call, from 1), "function",
//                    "handle" (number or null), "scope" ("job",
//                    "document", "page" or null), "thread", "impersonating", "expected_token" (boolean, null
//                    when none is expected), "result" ("0x00040001"), "base", "delta", "output" (texts as
//                    read and written, null when there was none), "media_size", "feed_direction" (what the
//                    ticket that was written says about the sheet, or null), "error" (text of the BSTR or
//                    null), "two_prefixes" (the name that stands twice in "base", with two prefixes of one
//                    namespace, in words, or null), "start" (nanoseconds of the clock that never goes back),
//                    "in_streams" (of them, spent in the caller's streams), "own" (the rest)}; the ticket of
//                    PTGetPrintCapabilities is its "base"
//   "counts"         {function: calls}, only functions that were called
//   "open_handles"   list of {"handle", "printer", "thread"}
//   "breaches"       list of {"stop", "text"}: A00E a handle used after its closing, A00F a handle that was
//                    never given out, A010 used on another thread than its own, A011 closed on another
//                    thread, A012 left open by a thread that ended or at SimFinish
//   "idle_faults"    those of the configuration's faults that have not struck yet
//   "notes"          list of texts: what is legal and yet worth a look (a call without the expected token, a
//                    name without a scope prefix)
extern "C" {

// Sets everything up anew: handles that are open keep the device that they were opened with, the log and the
// counters are emptied. E_INVALIDARG with one line of text in pError (cut to cbError bytes, may be null) when
// the configuration is wrong or the device model cannot be read; the old one then stays in force.
using SimConfigureFunction = HRESULT WINAPI(const char* pConfiguration, char* pError, SIZE_T cbError);

// The id of the token that the calls are expected to run under is taken from this one, which stays the
// caller's; null: none is expected. HRESULT of the system when the token cannot be queried.
using SimExpectTokenFunction = HRESULT WINAPI(HANDLE token);

// Is given each call when it ends, on the thread of the call: one element of "calls" as JSON. It must not
// throw.
using SimListener = void WINAPI(void* pContext, const char* pCall);
// Null: nobody listens. A listener that is replaced may still be in a call on another thread.
using SimListenFunction = void WINAPI(SimListener* pListener, void* pContext);

// Size of the text with its zero, in bytes; the text is written when cb is enough. It can have grown by the
// next call.
using SimReportFunction = SIZE_T WINAPI(char* pReport, SIZE_T cb);

// The default ticket of the device with its variants, written under the switches in force; the same protocol.
// The size is 0 when nothing is configured. Under encoding=utf16le the text holds zeros.
using SimDefaultTicketFunction = SIZE_T WINAPI(char* pTicket, SIZE_T cb);

// Empties the log and the counters, also those of the faults.
using SimResetFunction = void WINAPI();

// The run is over: what is still open is a breach (A012).
using SimFinishFunction = void WINAPI();
}
