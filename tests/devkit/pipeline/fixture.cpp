#include "devkit/pipeline/fixture.h"

#include "devkit/common/text.h"
#include "platform/bstr.h"

namespace devkit::pipeline {
namespace {

constexpr const char* kTicketType = "application/vnd.ms-printing.printticket+xml";
constexpr const char* kPageType = "application/vnd.ms-package.xps-fixedpage+xml";

InputPart Page(const std::string& name) {
    return InMemory(
        name, kPageType,
        "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"816\" Height=\"1056\" "
        "xml:lang=\"en\"><!-- " +
            name + " --></FixedPage>");
}

ResourceInput Resource(const std::string& name, const std::string& contentType) {
    return {KindOfContentType(contentType), InMemory(name, contentType, "bytes of " + name)};
}

}  // namespace

InputPart InMemory(std::string name, std::string contentType, std::string bytes) {
    return {std::move(name), std::move(contentType),
            [shared = std::make_shared<const std::string>(std::move(bytes))] { return shared; }};
}

void Write(Part& part, std::string_view bytes) {
    const auto writing = part.BeginWriting();
    writing->Append(bytes.data(), bytes.size());
    writing->Close();
}

PartPtr Made(PartKind kind, std::string name, std::string_view bytes) {
    PartPtr part = std::make_shared<Part>(kind, std::move(name));
    Write(*part, bytes);
    return part;
}

std::shared_ptr<JobInput> SampleJob() {
    const auto job = std::make_shared<JobInput>();
    job->thumbnail = InMemory("/thumbnail.png", "image/png", "thumbnail");
    job->sequence =
        InMemory("/seq.fdseq", "application/vnd.ms-package.xps-fixeddocumentsequence+xml", "sequence");
    job->ticket = InMemory("/job_PT.xml", kTicketType, "job ticket");
    const char* const documentType = "application/vnd.ms-package.xps-fixeddocument+xml";
    DocumentInput first{InMemory("/1/1.fdoc", documentType, "document 1"),
                        InMemory("/1/PT.xml", kTicketType, "document ticket"),
                        {}};
    first.pages.push_back(
        {Page("/1/1.fpage"),
         InMemory("/1/1_PT.xml", kTicketType, "page ticket"),
         {Resource("/1/font.odttf", "application/vnd.ms-package.obfuscated-opentype"),
          Resource("/1/image.png", "image/png"),
          Resource("/1/profile.icc", "application/vnd.ms-color.iccprofile"),
          Resource("/1/styles.dict", "application/vnd.ms-package.xps-resourcedictionary+xml"),
          Resource("/1/other.bin", "application/octet-stream")}});
    first.pages.push_back({Page("/1/2.fpage"), std::nullopt, {}});
    DocumentInput second{InMemory("/2/2.fdoc", documentType, "document 2"), std::nullopt, {}};
    second.pages.push_back({Page("/2/1.fpage"), std::nullopt, {}});
    job->documents = {std::move(first), std::move(second)};
    return job;
}

std::string ReadAll(IPrintReadStream* pStream) {
    std::string text;
    for (BOOL end = FALSE; !end;) {
        char block[64];
        ULONG count = 0;
        if (FAILED(pStream->ReadBytes(block, sizeof(block), &count, &end))) return "(failed)";
        text.append(block, count);
    }
    return text;
}

std::wstring UriOf(IPartBase* pPart) {
    platform::Bstr uri;
    if (FAILED(pPart->GetUri(uri.Put()))) return L"(failed)";
    return std::wstring(uri.View());
}

const ContextPtr& PipelineTest::Context() {
    if (m_context == nullptr) m_context = std::make_shared<RunContext>();
    return m_context;
}

Behaviour PipelineTest::Failing(std::string method, HRESULT code, std::string argument, unsigned nth) {
    Behaviour behaviour;
    behaviour.faults.push_back({std::move(method), std::move(argument), nth, code, false});
    return behaviour;
}

}  // namespace devkit::pipeline
