#include "devkit/msxml/text/parser.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <cstring>
#include <exception>
#include <memory>
#include <new>

#include "devkit/msxml/text/parsefailure.h"
#include "devkit/msxml/text/treebuilder.h"
#include "platform/utf.h"

namespace devkit::msxml {

namespace {

struct ContextFree {
    void operator()(xmlParserCtxt* pContext) const noexcept {
        // The parser keeps the declarations of a DTD in a document of its own and forgets it when it is
        // stopped.
        xmlFreeDoc(pContext->myDoc);
        xmlFreeParserCtxt(pContext);
    }
};

std::string_view View(const xmlChar* text) noexcept {
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

std::string_view View(const xmlChar* text, int length) noexcept {
    return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)};
}

// One run of the parser: what its callbacks work on and the first thing that went wrong.
class Run {
  public:
    Run(Document& document, const ParseRules& rules, std::string_view utf8);

    void Go();

  private:
    // The parser must not see an exception: it is kept, and the parser is stopped.
    template <typename Event>
    static void Handle(void* pRun, Event&& event) noexcept {
        auto& run = *static_cast<Run*>(pRun);
        if (run.m_hasFailed) return;
        try {
            event(run);
        } catch (...) {
            run.Note(std::current_exception());
        }
    }

    static void OnStartElement(void* pRun, const xmlChar* name, const xmlChar** attributes);
    static void OnEndElement(void* pRun, const xmlChar* name);
    static void OnCharacters(void* pRun, const xmlChar* text, int length);
    static void OnCdata(void* pRun, const xmlChar* text, int length);
    static void OnComment(void* pRun, const xmlChar* text);
    static void OnInstruction(void* pRun, const xmlChar* target, const xmlChar* data);
    static void OnDoctype(void* pRun, const xmlChar* name, const xmlChar* publicId, const xmlChar* systemId);
    static void OnReference(void* pRun, const xmlChar* name);
    static void OnError(void* pRun, const char* format, ...);

    void Note(std::exception_ptr error) noexcept;
    void NotePlace(int line, int column) noexcept;
    [[noreturn]] void Report();
    [[noreturn]] void Fail(XmlError code, const std::string& reason) const;
    [[nodiscard]] std::size_t Position() const;

    const ParseRules& m_rules;
    std::string_view m_utf8;
    TreeBuilder m_builder;
    std::vector<TreeBuilder::RawAttribute> m_attributes;  // of the element that starts
    std::unique_ptr<xmlParserCtxt, ContextFree> m_pContext;
    bool m_hasFailed = false;
    std::exception_ptr m_error;  // null when the parser itself found the failure
    int m_libraryCode = 0;
    std::string m_libraryMessage;
    int m_line = 0;
    int m_column = 0;
};

Run::Run(Document& document, const ParseRules& rules, std::string_view utf8)
    : m_rules(rules), m_utf8(utf8), m_builder(document, rules.maxElementDepth) {
    if (utf8.size() > 0x7FFFFFFF) throw std::bad_alloc();
    m_pContext.reset(xmlCreateMemoryParserCtxt(utf8.data(), static_cast<int>(utf8.size())));
    if (!m_pContext) throw std::bad_alloc();

    // The first version of the parser's interface is used because it alone gives declarations and other
    // attributes in their common order.
    xmlSAXHandler& handler = *m_pContext->sax;
    std::memset(&handler, 0, sizeof handler);
    handler.initialized = 1;
    handler.startElement = OnStartElement;
    handler.endElement = OnEndElement;
    handler.characters = OnCharacters;
    handler.ignorableWhitespace = OnCharacters;
    handler.cdataBlock = OnCdata;
    handler.comment = OnComment;
    handler.processingInstruction = OnInstruction;
    handler.internalSubset = OnDoctype;
    handler.reference = OnReference;
    handler.error = OnError;
    handler.fatalError = OnError;
    m_pContext->userData = this;
    // Depth is the builder's to limit, and the size of a text has no limit. Without NOENT an ampersand in an
    // attribute comes as a reference; entities of a DTD are not found in either case.
    xmlCtxtUseOptions(m_pContext.get(),
                      XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_HUGE | XML_PARSE_IGNORE_ENC);
}

void Run::Go() {
    constexpr std::string_view kOpening = "<?xml";
    constexpr std::string_view kSpace = " \t\r\n";
    const bool hasDeclaration = m_utf8.starts_with(kOpening) && m_utf8.size() > kOpening.size() &&
                                kSpace.find(m_utf8[kOpening.size()]) != std::string_view::npos;
    if (hasDeclaration) {
        const std::size_t end = m_utf8.find("?>");
        const std::size_t length = end == std::string_view::npos ? end : end - kOpening.size();
        Handle(this,
               [&](Run& run) { run.m_builder.Declaration(run.m_utf8.substr(kOpening.size(), length)); });
    }
    if (!m_hasFailed) xmlParseDocument(m_pContext.get());
    if (m_hasFailed) Report();
    if (m_pContext->wellFormed == 0) Fail(XmlInternalError, "The text is not well-formed");
}

void Run::OnStartElement(void* pRun, const xmlChar* name, const xmlChar** attributes) {
    Handle(pRun, [&](Run& run) {
        std::vector<TreeBuilder::RawAttribute>& list = run.m_attributes;
        list.clear();
        for (const xmlChar** pNext = attributes; pNext != nullptr && *pNext != nullptr; pNext += 2) {
            list.push_back({View(pNext[0]), View(pNext[1])});
        }
        run.m_builder.StartElement(View(name), list);
    });
}

void Run::OnEndElement(void* pRun, const xmlChar*) {
    Handle(pRun, [](Run& run) { run.m_builder.EndElement(); });
}

void Run::OnCharacters(void* pRun, const xmlChar* text, int length) {
    Handle(pRun, [&](Run& run) { run.m_builder.Characters(View(text, length)); });
}

void Run::OnCdata(void* pRun, const xmlChar* text, int length) {
    Handle(pRun, [&](Run& run) { run.m_builder.Cdata(View(text, length)); });
}

void Run::OnComment(void* pRun, const xmlChar* text) {
    Handle(pRun, [&](Run& run) { run.m_builder.Comment(View(text)); });
}

void Run::OnInstruction(void* pRun, const xmlChar* target, const xmlChar* data) {
    Handle(pRun, [&](Run& run) { run.m_builder.Instruction(View(target), View(data)); });
}

void Run::OnDoctype(void* pRun, const xmlChar*, const xmlChar*, const xmlChar*) {
    Handle(pRun, [](Run& run) {
        if (!run.m_rules.prohibitDtd) return;
        throw BuildFailure{run.m_rules.newParser ? XmlDtdProhibitedByNewParser : XmlDtdProhibited,
                           "DTDs are prohibited"};
    });
}

// Entities of a DTD are not expanded, so a reference to one means nothing here.
void Run::OnReference(void* pRun, const xmlChar* name) {
    Handle(pRun, [&](Run&) {
        throw BuildFailure{XmlEntityUndefined, "Entity not defined: " + std::string(View(name))};
    });
}

void Run::OnError(void* pRun, const char*, ...) {
    auto& run = *static_cast<Run*>(pRun);
    if (run.m_hasFailed) return;
    const xmlError& error = run.m_pContext->lastError;
    run.NotePlace(error.line, error.int2);
    run.m_libraryCode = error.code;
    try {
        run.m_libraryMessage = error.message == nullptr ? "" : error.message;
    } catch (...) {
        run.m_error = std::current_exception();
    }
    run.m_hasFailed = true;
}

void Run::Note(std::exception_ptr error) noexcept {
    const xmlParserInput* const pInput = m_pContext->input;
    NotePlace(pInput == nullptr ? 1 : pInput->line, pInput == nullptr ? 1 : pInput->col);
    m_error = std::move(error);
    m_hasFailed = true;
    xmlStopParser(m_pContext.get());
}

void Run::NotePlace(int line, int column) noexcept {
    m_line = line;
    m_column = column;
}

void Run::Report() {
    if (m_error) {
        try {
            std::rethrow_exception(m_error);
        } catch (const BuildFailure& failure) {
            Fail(failure.code, failure.reason);
        }
    }
    if (m_libraryCode == XML_ERR_NO_MEMORY) throw std::bad_alloc();
    Fail(CodeOfLibraryError(m_libraryCode), m_libraryMessage);
}

void Run::Fail(XmlError code, const std::string& reason) const {
    const std::string_view line = std::string_view(reason).substr(0, reason.find('\n'));
    throw FailureAt(code, platform::ToUtf16(line), platform::ToUtf16(m_utf8), Position());
}

// The line and column of the failure as a place in the wide text.
std::size_t Run::Position() const {
    const std::wstring text = platform::ToUtf16(m_utf8);
    std::size_t start = 0;
    for (int line = 1; line < m_line; ++line) {
        const std::size_t lineBreak = text.find(L'\n', start);
        if (lineBreak == std::wstring::npos) break;
        start = lineBreak + 1;
    }
    const std::size_t end = std::min(text.find(L'\n', start), text.size());
    return std::min(start + static_cast<std::size_t>(m_column > 0 ? m_column - 1 : 0), end);
}

}  // namespace

void ParseInto(Document& document, const ParseRules& rules, std::string_view utf8) {
    // The parser would take a null byte for the end.
    const std::size_t null = utf8.find('\0');
    if (null != std::string_view::npos) {
        throw FailureAt(XmlBadCharData, L"XML has no null character", platform::ToUtf16(utf8),
                        platform::ToUtf16(utf8.substr(0, null)).size());
    }
    if (utf8.empty()) throw FailureAt(XmlMissingRoot, L"The document is empty", {}, 0);
    Run(document, rules, utf8).Go();
}

}  // namespace devkit::msxml
