#include "memoryjob.h"

#include <utility>

namespace systemtest {

using devkit::pipeline::InputPart;
using devkit::pipeline::JobInput;
using devkit::pipeline::PageInput;

InputPart InMemory(std::string name, std::string contentType, std::string bytes) {
    auto shared = std::make_shared<const std::string>(std::move(bytes));
    return {std::move(name), std::move(contentType), [shared = std::move(shared)] { return shared; }};
}

InputPart TicketInMemory(std::string name, std::string bytes) {
    return InMemory(std::move(name), "application/vnd.ms-printing.printticket+xml", std::move(bytes));
}

PageInput PageInMemory(std::string name, std::string markup, std::optional<InputPart> ticket) {
    return {InMemory(std::move(name), "application/vnd.ms-package.xps-fixedpage+xml", std::move(markup)),
            std::move(ticket),
            {}};
}

std::shared_ptr<const JobInput> JobInMemory(std::vector<PageInput> pages, std::optional<InputPart> jobTicket,
                                            std::optional<InputPart> documentTicket) {
    auto input = std::make_shared<JobInput>();
    input->sequence =
        InMemory("/job.fdseq", "application/vnd.ms-package.xps-fixeddocumentsequence+xml", "sequence");
    input->ticket = std::move(jobTicket);
    input->documents = {{InMemory("/1.fdoc", "application/vnd.ms-package.xps-fixeddocument+xml", "document"),
                         std::move(documentTicket), std::move(pages)}};
    return input;
}

}  // namespace systemtest
