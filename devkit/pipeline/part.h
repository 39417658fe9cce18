#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/common/bytestore.h"
#include "devkit/pipeline/streams.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

enum class PartKind {
    XpsDocument,
    FixedDocumentSequence,
    FixedDocument,
    FixedPage,
    PrintTicket,
    Image,
    Font,
    ColorProfile,
    ResourceDictionary,
    Thumbnail,
    Unknown,
};

// The content types of fonts.
inline constexpr std::string_view kPlainFont = "application/vnd.ms-opentype";
inline constexpr std::string_view kObfuscatedFont = "application/vnd.ms-package.obfuscated-opentype";

// "FixedPage".
[[nodiscard]] const char* NameOf(PartKind kind);
// The kind of a page's resource by its content type, with no regard to letter case or parameters.
[[nodiscard]] PartKind KindOfContentType(std::string_view contentType);
// A part of the input as the provider finds it.
struct InputPart {
    std::string name;  // UTF-8, "/Documents/1/Pages/1.fpage"
    std::string contentType;
    std::function<Bytes()> read;  // throws std::exception when the input cannot be read
};

// Which page of the input: its document and its number in that, from 0.
struct PagePlace {
    std::uint32_t document = 0;
    std::uint32_t page = 0;
};

// What a filter made of a page of the input: new markup, another ticket or none, or nothing at all.
struct PageChange {
    struct Ticket {
        std::string name;  // the filter's own
        common::Content bytes;
    };

    [[nodiscard]] bool IsNone() const noexcept { return !markup && !ticketReplaced; }

    std::optional<common::Content> markup;
    bool ticketReplaced = false;
    std::optional<Ticket> ticket;  // of its making; none when the page has none any more
};

// One part of the document on its way through the filter: its name, its bytes, and the parts that hang on it.
// The COM objects that the filter sees are views of it; several may show the same part. For the pipeline
// thread only.
class Part {
  public:
    Part(PartKind kind, InputPart input);
    // A part that the filter makes; its bytes come with BeginWriting.
    Part(PartKind kind, std::string name);
    // The part as the next filter gets it: its bytes as they stand, without the parts that hang on it.
    struct HandedOn {};
    Part(HandedOn, Part& part);

    [[nodiscard]] PartKind Kind() const noexcept { return m_kind; }
    [[nodiscard]] const std::string& Name() const noexcept { return m_input.name; }
    [[nodiscard]] const std::string& ContentType() const noexcept { return m_input.contentType; }
    void SetContentType(std::string type) { m_input.contentType = std::move(type); }
    // Whether a filter made it, this one or one before it.
    [[nodiscard]] bool IsNew() const noexcept { return m_isNew; }
    // "FixedPage /Documents/1/Pages/1.fpage".
    [[nodiscard]] std::string Title() const;

    // The bytes as they stand: what was last written and closed, else the input's, else none. Throws what
    // the input's reader throws.
    [[nodiscard]] Bytes Read();
    // The bytes as a filter reads and writes them: those of an obfuscated font of the input are made plain.
    [[nodiscard]] Bytes ReadPlain();
    // The bytes as a package has them: those of a new font that is to be obfuscated are.
    [[nodiscard]] common::Content Packaged();
    // Gives what was written into the store, until it is read again, and keeps nothing of what was read.
    // Throws common::StorageError, and keeps what was written in memory, when the store cannot take it.
    void PutAside(common::ByteStore& store);
    // The bytes as this filter was given them, none for a part that it makes.
    [[nodiscard]] Bytes ReadInput();
    // Whether the part has bytes that a filter wrote, this one or one before it.
    [[nodiscard]] bool IsWritten();
    // Whether a write stream is open.
    [[nodiscard]] bool IsBeingWritten();
    // Of a page of the input with all resources that hung on it there, no more and no less, what was made of
    // it and put aside; none while somebody holds what could still be written, and when there is more to
    // tell.
    [[nodiscard]] std::optional<PageChange> FinalChange();
    // Null when a write stream is open already.
    [[nodiscard]] std::shared_ptr<Writing> BeginWriting();

    EXpsCompressionOptions compression = Compression_Normal;
    std::optional<PagePlace> place;  // of a page of the input
    bool sent = false;
    bool attached = false;   // a filter hung it on another part
    bool obfuscate = false;  // a font that the filter wants obfuscated

    std::shared_ptr<Part> ticket;                  // of a sequence, document or page
    std::shared_ptr<Part> inputTicket;             // what the input has for it
    std::shared_ptr<Part> thumbnail;               // of the XPS document
    std::vector<std::shared_ptr<Part>> resources;  // of a page, without its ticket
    std::vector<std::string> deleted;              // names of the resources that the filter took from a page

  private:
    void TakeWritten();
    [[nodiscard]] bool IsUntouched();
    [[nodiscard]] bool IsAtRest();

    PartKind m_kind;
    InputPart m_input;
    bool m_isNew = false;
    bool m_isObfuscated = false;  // a font, in the input
    bool m_wasWritten = false;    // by a filter before this one
    std::weak_ptr<const std::string> m_read;
    std::shared_ptr<Writing> m_writing;
    // What was last written, in one of two places.
    Bytes m_written;
    std::optional<common::Content> m_aside;
};

using PartPtr = std::shared_ptr<Part>;

// A part as it stood when the filter sent it. Names are the filter's own, UTF-8.
struct SentPart {
    PartKind kind = PartKind::Unknown;  // Unknown for all that came by SendXpsUnknown
    std::string name;                   // empty for the XPS document and for an object that is not the kit's
    PartPtr part;                       // null for an object that is not the kit's
    // Set, and then instead of the name and the part, once a page of the input is let go by all.
    std::optional<PagePlace> place{};
    std::shared_ptr<const PageChange> change{};  // of that page; null when it went on as it came

    // Whether the filter replaced the bytes of a part of the input.
    [[nodiscard]] bool MarkupRewritten() const {
        return part != nullptr && !part->IsNew() && part->IsWritten();
    }
    // Whether the part has another ticket than the input gave it, or none where the input gave one.
    [[nodiscard]] bool TicketReplaced() const { return part != nullptr && part->ticket != part->inputTicket; }
};

// In sending order. Not in one piece, which would be copied while it grows.
using SentParts = std::deque<SentPart>;

}  // namespace devkit::pipeline
