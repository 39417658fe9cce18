#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "devkit/package/documentmarkup.h"
#include "devkit/package/package.h"
#include "devkit/package/rawarchive.h"
#include "devkit/package/xpsdocument.h"
#include "memorystorage.h"
#include "temporaryfolder.h"
#include "thrown.h"

namespace devkit::package {

using tests::ReadFileBytes;
using tests::TemporaryFolder;
using tests::WriteFileBytes;

inline const std::string kXps = "http://schemas.microsoft.com/xps/2005/06";
inline const std::string kTicket = kXps + "/printticket";
inline const std::string kResource = kXps + "/required-resource";

// The markup of a fixed document.
[[nodiscard]] inline std::string Document(const std::vector<std::string>& pages) {
    return NewDocumentMarkup(Flavour::MicrosoftXps, DocumentRoot::FixedDocument, pages);
}

// A document that has nothing but what it needs: "/s.fdseq", "/d.fdoc", "/p.fpage".
[[nodiscard]] inline std::vector<RawEntry> SmallDocument() {
    return {
        {"[Content_Types].xml",
         R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
         R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
         R"(<Default Extension="fpage" ContentType="application/vnd.ms-package.xps-fixedpage+xml"/></Types>)"},
        {"_rels/.rels",
         R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">)"
         R"(<Relationship Id="R1" Type="http://schemas.microsoft.com/xps/2005/06/fixedrepresentation")"
         R"( Target="/s.fdseq"/></Relationships>)"},
        {"s.fdseq", "<FixedDocumentSequence xmlns=\"" + kXps +
                        "\"><DocumentReference Source=\"d.fdoc\"/></FixedDocumentSequence>"},
        {"d.fdoc", "<FixedDocument xmlns=\"" + kXps + "\"><PageContent Source=\"p.fpage\"/></FixedDocument>"},
        {"p.fpage", "<FixedPage xmlns=\"" + kXps + "\" Width=\"100\" Height=\"200\"/>"},
    };
}

// The entry of that name, added when there is none.
inline RawEntry& EntryOf(std::vector<RawEntry>& entries, const std::string& name) {
    for (RawEntry& entry : entries) {
        if (entry.name == name) return entry;
    }
    return entries.emplace_back(name, std::string());
}

// A relationships part with one relationship in each pair of (type, target).
[[nodiscard]] inline std::string Links(const std::vector<std::pair<std::string, std::string>>& links) {
    std::vector<Relationship> relationships;
    for (const auto& [type, target] : links)
        relationships.push_back({FreeId(relationships), type, target, false});
    return RelationshipsMarkup(relationships);
}

[[nodiscard]] inline Package OpenBytes(std::string bytes, const common::Limits& limits = {}) {
    return Package::Open(std::make_unique<MemorySource>(std::move(bytes)), "test.xps", limits);
}

[[nodiscard]] inline Package OpenEntries(const std::vector<RawEntry>& entries,
                                         const common::Limits& limits = {}) {
    return OpenBytes(BuildZip(entries), limits);
}

[[nodiscard]] inline XpsDocument OpenDocument(const std::vector<RawEntry>& entries,
                                              const common::Limits& limits = {}) {
    return XpsDocument::Open(OpenEntries(entries, limits));
}

template <typename Saved>
[[nodiscard]] std::string SavedBytes(Saved& saved) {
    MemorySink sink;
    saved.Save(sink);
    return sink.bytes;
}

// What the action's common::Error says; empty when there is none.
template <typename Action>
[[nodiscard]] std::string ErrorOf(Action&& action) {
    return tests::MessageOf<common::Error>(std::forward<Action>(action));
}

[[nodiscard]] inline std::string OpeningError(const std::vector<RawEntry>& entries,
                                              const common::Limits& limits = {}) {
    return ErrorOf([&] { static_cast<void>(OpenDocument(entries, limits)); });
}

}  // namespace devkit::package
