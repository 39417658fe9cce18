#include "devkit/pipeline/job.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "devkit/common/storage.h"
namespace devkit::pipeline {
namespace {

// A document that several filters read, each on its own thread; its package takes one at a time.
struct SharedDocument {
    std::shared_ptr<const package::XpsDocument> document;
    std::shared_ptr<std::mutex> lock = std::make_shared<std::mutex>();

    const package::XpsDocument* operator->() const noexcept { return document.get(); }
};
using Document = SharedDocument;

// Of most parts the content type is what their place says.
InputPart MakePart(const Document& document, const std::string& name) {
    return {name, {}, [document, name] {
                const std::lock_guard guard(*document.lock);
                return std::make_shared<const std::string>(document->ReadPart(name));
            }};
}

std::optional<InputPart> MakePart(const Document& document, const std::optional<std::string>& name) {
    return name ? std::optional(MakePart(document, *name)) : std::nullopt;
}

InputPart MakeTypedPart(const Document& document, const std::string& name) {
    InputPart part = MakePart(document, name);
    if (const auto info = document->GetPackage().Find(name)) part.contentType = info->contentType;
    return part;
}

PageInput MakePage(const Document& document, const package::FixedPage& page) {
    PageInput input{MakePart(document, page.name), MakePart(document, page.ticket), {}};
    for (const std::string& name : page.resources) {
        InputPart resource = MakeTypedPart(document, name);
        const PartKind kind = KindOfContentType(resource.contentType);
        input.resources.push_back({kind, std::move(resource)});
    }
    return input;
}

constexpr std::string_view kFixedDocumentContentType = "application/vnd.ms-package.xps-fixeddocument+xml";
constexpr std::string_view kUnknownContentType = "application/octet-stream";

std::string ContentTypeOfNew(const Part& part) {
    switch (part.Kind()) {
        case PartKind::FixedDocument:
            return std::string(kFixedDocumentContentType);
        case PartKind::FixedPage:
            return std::string(package::kFixedPageContentType);
        case PartKind::PrintTicket:
            return std::string(package::kPrintTicketContentType);
        case PartKind::ColorProfile:
            return "application/vnd.ms-color.iccprofile";
        case PartKind::ResourceDictionary:
            return "application/vnd.ms-package.xps-resourcedictionary+xml";
        case PartKind::Font:
            return part.ContentType().empty() ? std::string(kPlainFont) : part.ContentType();
        case PartKind::Image:
        case PartKind::Thumbnail:
            return part.ContentType().empty() ? "image/png" : part.ContentType();
        default:
            return std::string(kUnknownContentType);
    }
}

std::shared_ptr<JobInput> TreeOf(const Document& document) {
    auto job = std::make_shared<JobInput>();
    const package::FixedDocumentSequence& sequence = document->sequence;
    if (document->thumbnail) job->thumbnail = MakeTypedPart(document, *document->thumbnail);
    job->sequence = MakePart(document, sequence.name);
    job->ticket = MakePart(document, sequence.ticket);
    for (std::size_t i = 0; i < sequence.documents.size(); ++i) {
        const package::FixedDocument& fixedDocument = sequence.documents[i];
        DocumentInput& input = job->documents.emplace_back();
        input.markup = MakePart(document, fixedDocument.name);
        input.ticket = MakePart(document, fixedDocument.ticket);
        input.laterPages = fixedDocument.pages.size();
        // The tree has each page already; what is made of it takes several times the memory.
        input.makePage = [document, i](std::size_t number) {
            const std::lock_guard guard(*document.lock);
            return MakePage(document, document->sequence.documents[i].pages[number]);
        };
    }
    return job;
}

// Builds the tree of the output from the parts in their order.
class TreeBuilder {
  public:
    explicit TreeBuilder(package::XpsDocument& document)
        : m_document(document), m_input(std::exchange(document.sequence.documents, {})) {}

    void Add(const SentPart& sent) {
        switch (sent.kind) {
            case PartKind::XpsDocument:
                m_document.thumbnail = NameInPackage(sent.part->thumbnail);
                break;
            case PartKind::FixedDocumentSequence:
                m_document.sequence.ticket = NameInPackage(sent.part->ticket);
                break;
            case PartKind::FixedDocument:
                m_documents.push_back({*NameInPackage(sent.part), NameInPackage(sent.part->ticket), {}});
                break;
            case PartKind::FixedPage:
                m_documents.back().pages.push_back(sent.place ? TakePage(sent) : MakePage(sent));
                break;
            default:
                break;
        }
    }

    void Finish() { m_document.sequence.documents = std::move(m_documents); }

  private:
    package::FixedPage MakePage(const SentPart& sent) {
        package::FixedPage page;
        page.name = *NameInPackage(sent.part);
        if (sent.MarkupRewritten()) page.markup = sent.part->Packaged();
        page.ticket = NameInPackage(sent.part->ticket);
        for (const PartPtr& resource : sent.part->resources)
            page.resources.push_back(*NameInPackage(resource));
        return page;
    }

    // The page of the input, which is sent no second time.
    package::FixedPage TakePage(const SentPart& sent) {
        package::FixedPage page = std::move(m_input[sent.place->document].pages[sent.place->page]);
        page.markup.reset();
        if (sent.change == nullptr) return page;
        page.markup = sent.change->markup;
        if (sent.change->ticketReplaced) page.ticket = AddTicket(sent.change->ticket);
        return page;
    }

    std::optional<std::string> AddTicket(const std::optional<PageChange::Ticket>& ticket) {
        if (!ticket) return std::nullopt;
        return m_document.AddPart(ticket->name, package::kPrintTicketContentType, ticket->bytes);
    }

    // The part's name in the package. A part that the filter made is added the first time that it is met.
    std::optional<std::string> NameInPackage(const PartPtr& part) {
        if (part == nullptr) return std::nullopt;
        if (!part->IsNew()) return part->Name();
        if (const auto place = m_added.find(part); place != m_added.end()) return place->second;
        std::string name = m_document.AddPart(part->Name(), ContentTypeOfNew(*part), part->Packaged());
        // One that hangs nowhere else cannot be met again.
        if (part.use_count() > 1) m_added.emplace(part, name);
        return name;
    }

    package::XpsDocument& m_document;
    std::vector<package::FixedDocument> m_input;
    std::vector<package::FixedDocument> m_documents;
    std::map<PartPtr, std::string> m_added;
};

}  // namespace

std::shared_ptr<const JobInput> MakeJobInput(const std::shared_ptr<const package::XpsDocument>& document) {
    return TreeOf({document});
}

std::shared_ptr<const JobInput> MakeJobInput(const std::shared_ptr<package::XpsDocument>& document) {
    const Document shared{document};
    const std::shared_ptr<JobInput> job = TreeOf(shared);
    job->package = [document, lock = shared.lock](const SentParts& parts) {
        const std::lock_guard guard(*lock);
        ApplySentParts(*document, parts);
        common::MemorySink sink;
        std::move(*document).Save(sink);
        return sink.Take();
    };
    return job;
}

std::shared_ptr<const JobInput> MakeJobInput(const Bytes& package, const std::string& where) {
    return MakeJobInput(std::make_shared<package::XpsDocument>(package::XpsDocument::Open(
        package::Package::Open(std::make_unique<common::MemorySource>(package), where))));
}

void ApplySentParts(package::XpsDocument& document, SentParts parts) {
    TreeBuilder builder(document);
    for (; !parts.empty(); parts.pop_front()) builder.Add(parts.front());
    builder.Finish();
}

}  // namespace devkit::pipeline
