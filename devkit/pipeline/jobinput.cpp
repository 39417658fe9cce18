#include "devkit/pipeline/jobinput.h"

#include <string>
#include <utility>

namespace devkit::pipeline {
namespace {

using Document = std::shared_ptr<const package::XpsDocument>;

InputPart MakePart(const Document& document, const std::string& name) {
    const std::optional<package::PartInfo> info = document->GetPackage().Find(name);
    return {name, info ? info->contentType : std::string(),
            [document, name] { return std::make_shared<const std::string>(document->ReadPart(name)); }};
}

std::optional<InputPart> MakePart(const Document& document, const std::optional<std::string>& name) {
    return name ? std::optional(MakePart(document, *name)) : std::nullopt;
}

PageInput MakePage(const Document& document, const package::FixedPage& page) {
    PageInput input{MakePart(document, page.name), MakePart(document, page.ticket), {}};
    for (const std::string& name : page.resources) {
        InputPart resource = MakePart(document, name);
        const PartKind kind = KindOfContentType(resource.contentType);
        input.resources.push_back({kind, std::move(resource)});
    }
    return input;
}

}  // namespace

std::shared_ptr<const JobInput> MakeJobInput(const Document& document) {
    const auto job = std::make_shared<JobInput>();
    const package::FixedDocumentSequence& sequence = document->sequence;
    job->thumbnail = MakePart(document, document->thumbnail);
    job->sequence = MakePart(document, sequence.name);
    job->ticket = MakePart(document, sequence.ticket);
    for (const package::FixedDocument& fixedDocument : sequence.documents) {
        DocumentInput input{
            MakePart(document, fixedDocument.name), MakePart(document, fixedDocument.ticket), {}};
        for (const package::FixedPage& page : fixedDocument.pages)
            input.pages.push_back(MakePage(document, page));
        job->documents.push_back(std::move(input));
    }
    return job;
}

}  // namespace devkit::pipeline
