#pragma once

#include "platform/windows.h"

#include <optional>
#include <string>
#include <vector>

#include "devkit/fuzz/random.h"

namespace devkit::fuzz {

// What a filter meets beside the document: the device, what its print ticket provider and the pipeline
// answer, what the property bags hold. The texts are those of the host's options.
struct Environment {
    std::string device;                         // a model; empty: the host's own choice
    std::vector<std::string> providerSwitches;  // --provider
    std::vector<std::string> pipelineSwitches;  // --pipeline
    std::vector<std::string> properties;        // --property
    std::vector<std::string> driverValues;      // --driver-property
    std::optional<std::string> userTicket;      // its bytes, which need not be a ticket
    unsigned cancelAt = 0;
    // With which a filter may fail here, whatever the document: those that calls of the pipeline and of the
    // provider answer, those of entries of the wrong kind.
    std::vector<HRESULT> expectedCodes;
};

// Each changes one thing and gives what was done, in a few words.
std::string MutateProvider(Environment& environment, Random& random);
std::string MutatePipeline(Environment& environment, Random& random);
std::string MutateProperties(Environment& environment, Random& random);
std::string MutateUserTicket(Environment& environment, Random& random);

// A print ticket of the job with the settings that filters look at most.
[[nodiscard]] std::string UsualTicket();

}  // namespace devkit::fuzz
