#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devkit/pipeline/job.h"

// Jobs of parts that stand in memory.
namespace systemtest {

[[nodiscard]] devkit::pipeline::InputPart InMemory(std::string name, std::string contentType,
                                                   std::string bytes);
[[nodiscard]] devkit::pipeline::InputPart TicketInMemory(std::string name, std::string bytes);
[[nodiscard]] devkit::pipeline::PageInput PageInMemory(
    std::string name, std::string markup, std::optional<devkit::pipeline::InputPart> ticket = {});

// A sequence with one document of the pages.
[[nodiscard]] std::shared_ptr<const devkit::pipeline::JobInput> JobInMemory(
    std::vector<devkit::pipeline::PageInput> pages, std::optional<devkit::pipeline::InputPart> jobTicket = {},
    std::optional<devkit::pipeline::InputPart> documentTicket = {});

}  // namespace systemtest
