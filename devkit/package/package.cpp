#include "devkit/package/package.h"

#include <system_error>
#include <utility>

#include "devkit/common/file.h"
#include "devkit/package/packagestate.h"
#include "devkit/package/partname.h"
#include "devkit/package/zipwriter.h"

namespace devkit::package {

namespace {

constexpr std::string_view kRelationshipsContentType =
    "application/vnd.openxmlformats-package.relationships+xml";

// The content types and the relationships: what the package is made of, not what it holds.
bool IsInternal(std::string_view partName) {
    const std::string key = NameKey(partName);
    if (key == "/[content_types].xml") return true;
    const std::size_t slash = key.rfind('/');
    return key.ends_with(".rels") && slash >= 6 && key.substr(slash - 6, 6) == "/_rels";
}

// The file appears when all is written.
template <typename Write>
void WriteFile(const std::filesystem::path& input, const std::filesystem::path& file, Write write) {
    std::error_code ignored;
    if (!input.empty() && std::filesystem::equivalent(input, file, ignored))
        throw common::Error("cannot be written over its own input", common::PathText(file));
    common::OutputFile output(file);
    write(output);
    output.Commit();
}

}  // namespace

Package::Package(std::unique_ptr<PackageState> state) noexcept : m_state(std::move(state)) {}
Package::Package(Package&&) noexcept = default;
Package& Package::operator=(Package&&) noexcept = default;
Package::~Package() = default;

Package Package::Open(const std::filesystem::path& file, const common::Limits& limits) {
    Package package = Open(std::make_unique<common::FileSource>(file), common::PathText(file), limits);
    package.m_state->file = file;
    return package;
}

Package Package::Open(std::unique_ptr<common::ByteSource> source, std::string where,
                      const common::Limits& limits) {
    return Package(std::make_unique<PackageState>(std::move(source), std::move(where), limits));
}

std::vector<PartInfo> Package::Parts() const {
    std::vector<PartInfo> parts;
    for (const PackageState::Part& part : m_state->parts) {
        if (!part.removed && !IsInternal(part.name))
            parts.push_back(
                {part.name, m_state->types.Of(part.name), m_state->SizeOf(part), part.whole, part.number});
    }
    return parts;
}

std::optional<PartInfo> Package::Find(std::string_view name) const {
    const PackageState::Part* const pPart = m_state->Find(name);
    if (pPart == nullptr || IsInternal(name)) return std::nullopt;
    return PartInfo{pPart->name, m_state->types.Of(pPart->name), m_state->SizeOf(*pPart), pPart->whole,
                    pPart->number};
}

std::string Package::Read(std::string_view name) const {
    const PackageState::Part* const pPart = m_state->Find(name);
    if (pPart == nullptr) throw common::Error("is missing", name);
    return m_state->Read(*pPart, m_state->limits.maxPartBytes);
}

std::string Package::Add(std::string_view wantedName, std::string_view contentType, common::Content bytes) {
    std::string name = m_state->FreeName(wantedName);
    m_state->Put(name, std::move(bytes));
    m_state->typesChanged = m_state->types.Declare(name, contentType) || m_state->typesChanged;
    return name;
}

void Package::Replace(std::string_view name, common::Content bytes) {
    m_state->Put(m_state->Get(name).name, std::move(bytes));
}

void Package::Remove(std::string_view name) {
    const PackageState::Part* const pPart = m_state->Find(name);
    if (pPart == nullptr) return;
    const std::string relationships = RelationshipsPartOf(pPart->name);
    m_state->Remove(name);
    m_state->Remove(relationships);
}

std::vector<Relationship> Package::Relationships(std::string_view source) const {
    const PackageState::Part* const pPart = m_state->Find(RelationshipsPartOf(source));
    if (pPart == nullptr) return {};
    return ParseRelationships(m_state->Read(*pPart, m_state->limits.structure.maxBytes), pPart->name,
                              m_state->limits.structure);
}

void Package::SetRelationships(std::string_view source, const std::vector<Relationship>& relationships) {
    const std::string name = RelationshipsPartOf(source);
    if (relationships.empty()) {
        m_state->Remove(name);
        return;
    }
    m_state->PutAside(name, RelationshipsMarkup(relationships));
    m_state->typesChanged = m_state->types.Declare(name, kRelationshipsContentType) || m_state->typesChanged;
}

const common::Limits& Package::GetLimits() const noexcept { return m_state->limits; }
const std::string& Package::Where() const noexcept { return m_state->archive.Where(); }
const std::vector<std::string>& Package::Findings() const noexcept { return m_state->findings; }

void Package::Save(const std::filesystem::path& file) const& {
    WriteFile(m_state->file, file, [this](common::ByteSink& sink) { Save(sink); });
}

void Package::Save(const std::filesystem::path& file) && {
    WriteFile(m_state->file, file, [this](common::ByteSink& sink) { std::move(*this).Save(sink); });
}

void Package::Save(common::ByteSink& sink) const& { WriteZip(m_state->archive, m_state->Edit(), sink); }
void Package::Save(common::ByteSink& sink) && { WriteZip(m_state->archive, m_state->TakeEdit(), sink); }

}  // namespace devkit::package
