#include "devkit/filterhost/sentpartcheck.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "devkit/common/error.h"
#include "devkit/common/xmlreader.h"
#include "devkit/package/partname.h"
#include "devkit/printschema/ticketcheck.h"

namespace devkit::filterhost {
namespace {

using common::Check;
using pipeline::Part;
using pipeline::PartKind;
using printschema::TicketProblem;

// What the markup of a page asks of the parts round it.
struct Needs {
    bool hasWidth = false;
    bool hasHeight = false;
    std::set<std::string> resources;  // as the markup names them
};

// "{ColorConvertedBitmap image.png profile.icc}" names two parts.
void AddImage(std::string_view source, std::set<std::string>& resources) {
    constexpr std::string_view kConverted = "{ColorConvertedBitmap ";
    if (!source.starts_with(kConverted)) {
        resources.emplace(source);
        return;
    }
    source.remove_prefix(kConverted.size());
    while (!source.empty()) {
        const std::size_t end = std::min(source.find_first_of(" }"), source.size());
        if (end > 0) resources.emplace(source.substr(0, end));
        source.remove_prefix(std::min(end + 1, source.size()));
    }
}

void AddResources(const common::XmlReader& reader, std::set<std::string>& resources) {
    static constexpr std::array<std::pair<std::string_view, const char*>, 3> kReferences{
        {{"Glyphs", "FontUri"}, {"ImageBrush", "ImageSource"}, {"ResourceDictionary", "Source"}}};
    const std::string element = reader.LocalName();
    for (const auto& [name, attribute] : kReferences) {
        if (element != name) continue;
        const std::optional<std::string> reference = reader.Attribute(attribute);
        if (reference && !reference->empty()) AddImage(*reference, resources);
    }
}

// Nothing for what is not well-formed.
std::optional<Needs> ReadNeeds(const std::string& markup) {
    Needs needs;
    try {
        common::XmlReader reader(markup, {}, common::Limits().page);
        if (!reader.NextElement()) return std::nullopt;
        needs.hasWidth = reader.Attribute("Width").has_value();
        needs.hasHeight = reader.Attribute("Height").has_value();
        while (reader.NextElement()) AddResources(reader, needs.resources);
    } catch (const common::Error&) {
        return std::nullopt;
    }
    return needs;
}

bool IsAmong(const std::vector<std::string>& names, const std::string& key) {
    return std::ranges::any_of(names, [&](const std::string& name) { return package::NameKey(name) == key; });
}

bool IsRelated(const Part& page, const std::string& key) {
    return std::ranges::any_of(page.resources, [&](const pipeline::PartPtr& resource) {
        return package::NameKey(resource->Name()) == key;
    });
}

std::string SizeProblem(const Needs& before, const Needs& after) {
    const bool lostWidth = before.hasWidth && !after.hasWidth;
    const bool lostHeight = before.hasHeight && !after.hasHeight;
    if (lostWidth && lostHeight) return "has no Width and no Height";
    if (lostWidth) return "has no Width";
    return lostHeight ? "has no Height" : "";
}

// What the page needed as this filter was given it. A page that it made needed nothing, and has to have a
// size.
Needs InputNeeds(Part& page) {
    const Needs none{true, true, {}};
    return page.IsNew() ? none : ReadNeeds(*page.ReadInput()).value_or(none);
}

bool Names(const Needs& needs, const Part& page, const std::string& key) {
    return std::ranges::any_of(needs.resources, [&](const std::string& reference) {
        return package::NameKey(package::ResolveReference(page.Name(), reference)) == key;
    });
}

void LookAtPage(Part& page, bool isRewritten, std::vector<SentPartFinding>& findings) {
    const std::optional<Needs> after = ReadNeeds(*page.Read());
    if (!after) return;
    // Seldom wanted, and as long to read as the page.
    std::optional<Needs> before;
    const auto input = [&]() -> const Needs& { return before ? *before : before.emplace(InputNeeds(page)); };
    const std::string title = "the markup of " + page.Title();
    if (isRewritten && !(after->hasWidth && after->hasHeight)) {
        if (const std::string problem = SizeProblem(input(), *after); !problem.empty())
            findings.push_back({Check::PageSize, title + " " + problem});
    }
    for (const std::string& reference : after->resources) {
        const std::string name = package::ResolveReference(page.Name(), reference);
        const std::string key = package::NameKey(name);
        if (IsRelated(page, key)) continue;
        if (IsAmong(page.deleted, key)) {
            findings.push_back({Check::ResourceDeleted,
                                title + " uses " + name + ", which the filter deleted from the page"});
        } else if (isRewritten && !Names(input(), page, key)) {
            findings.push_back(
                {Check::ResourceUnrelated, title + " names " + name + ", which the page does not relate"});
        }
    }
}

Check CheckOf(TicketProblem::Kind kind) {
    switch (kind) {
        case TicketProblem::Kind::NoTicket:
            return Check::TicketFormat;
        case TicketProblem::Kind::TwoPrefixes:
            return Check::TicketTwoPrefixes;
        case TicketProblem::Kind::BrokenRule:
            break;
    }
    return Check::TicketRule;
}

std::string TextOf(const TicketProblem& problem) {
    switch (problem.kind) {
        case TicketProblem::Kind::NoTicket:
            return " is no print ticket: " + problem.text;
        case TicketProblem::Kind::TwoPrefixes:
            return " has " + problem.text;
        case TicketProblem::Kind::BrokenRule:
            break;
    }
    return " does not keep the Print Schema: " + problem.text;
}

}  // namespace

std::vector<SentPartFinding> SentPartCheck::Look(const pipeline::SentPart& part) {
    std::vector<SentPartFinding> findings;
    if (part.part == nullptr) return findings;
    LookAtTicket(*part.part, findings);
    const bool isRewritten = part.MarkupRewritten() || part.part->IsNew();
    if (part.kind == PartKind::FixedPage && (isRewritten || !part.part->deleted.empty()))
        LookAtPage(*part.part, isRewritten, findings);
    return findings;
}

void SentPartCheck::LookAtTicket(const Part& part, std::vector<SentPartFinding>& findings) {
    if (part.ticket == nullptr || part.ticket == part.inputTicket || !part.ticket->IsNew()) return;
    const pipeline::Bytes ticket = part.ticket->Read();
    // One page after the other gets the same.
    if (m_lastTicket != nullptr && *m_lastTicket == *ticket) return;
    m_lastTicket = ticket;
    for (const TicketProblem& problem : printschema::CheckTicket(*ticket)) {
        const std::string text = TextOf(problem);
        if (m_ticketProblems.insert(text).second)
            findings.push_back({CheckOf(problem.kind),
                                "the print ticket " + part.ticket->Name() + " of " + part.Title() + text});
    }
}

}  // namespace devkit::filterhost
