#pragma once

#include "platform/windows.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/pipeline/behaviour.h"
#include "devkit/pipeline/documentprovider.h"
#include "devkit/pipeline/jobproperties.h"
#include "devkit/pipeline/runobserver.h"

namespace devkit::pipeline {

enum class Apartment {
    None,            // the pipeline thread has not entered COM
    SingleThreaded,  // it stands in a single-threaded apartment of its own
};

// Where the pipeline lets the filter go.
enum class LastRelease {
    Caller,       // on the thread that made it
    OtherThread,  // on a fresh thread that has not entered COM
};

struct RunOptions {
    JobProperties properties;
    Behaviour behaviour;
    std::vector<ExtraPart> extraParts;
    // The switches that were applied, "KEY=VALUE", without the failures of calls.
    std::vector<std::string> switches;
    Apartment apartment = Apartment::None;
    LastRelease lastRelease = LastRelease::Caller;
    // False: the filters are initialised and let go, as when another filter of the chain cannot be
    // initialised.
    bool startsOperation = true;
    // ShutdownOperation comes from another thread when part N (from 1) is asked for; 0: never. The
    // provider waits with its answer until ShutdownOperation has returned or, when `cancelConcurrently` is
    // set, until it is about to be called; at most one second.
    unsigned cancelAt = 0;
    bool cancelConcurrently = false;
    // ShutdownOperation comes twice, from two threads at the same time.
    bool cancelTwice = false;
    // How long StartOperation may take to return after ShutdownOperation.
    std::chrono::milliseconds stopTimeout{30000};
    // Cancels the job after that time, when it is not zero.
    std::chrono::milliseconds timeout{0};
    // Called on the pipeline thread before StartOperation, once the thread stands in its apartment; what it
    // returns is destroyed there after StartOperation.
    std::function<std::shared_ptr<void>()> onPipelineThread;
    // Called on the pipeline thread when the filter has entered an apartment there; what it returns is
    // destroyed before the filter leaves it.
    std::function<std::shared_ptr<void>()> onApartmentEntered;
    std::shared_ptr<RunObserver> observer;
};

// A switch that is not known, or a value that it does not take: one line.
class SwitchError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Sets what the text "KEY=VALUE" says, and keeps the text. Throws SwitchError. The keys and their values:
//
//     fail=CALL[@N[+]]=CODE   call N (from 1, and with "+" all later ones) of "Interface::Method" or
//     "Method",
//                             or of "Method(ARGUMENT)" alone, fails; CODE is a number or a constant's name
//     short-reads=N           ReadBytes gives at most N bytes          short-writes=N   WriteBytes takes at
//     most N end-flag=with-data|alone                        missing-ticket=failure|null
//     after-cancel=fail|end|continue                  cancel=waits|concurrent|twice
//     reader=xps|unknown|null                         writer=xps|unknown|null
//     ambiguous-document=on|off                       slow-part=MILLISECONDS
//     apartment=none|single                           last-release=caller|other-thread
//     start=yes|never
void ApplySwitch(RunOptions& options, std::string_view text);

// Reads "NAME=TYPE:VALUE", a property with its value: bool:true or bool:false, int:N, uint:N or string:TEXT.
// Throws SwitchError.
[[nodiscard]] PropertyValues::value_type ParseProperty(std::string_view text);

}  // namespace devkit::pipeline
