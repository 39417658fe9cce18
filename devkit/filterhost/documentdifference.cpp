#include "devkit/filterhost/documentdifference.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "devkit/common/numbers.h"
#include "devkit/filterhost/documentprinter.h"
#include "devkit/package/pagedimensions.h"
#include "devkit/package/partname.h"
#include "devkit/printschema/difference.h"

namespace devkit::filterhost {
namespace {

using package::FixedDocument;
using package::FixedPage;
using package::NameKey;
using package::XpsDocument;
using Lines = std::vector<std::string>;

constexpr const char* kNothing = "(not set)";

void Append(Lines& lines, const std::string& prefix, const Lines& more) {
    for (const std::string& line : more) lines.push_back(prefix + line);
}

// What belongs together of two lists; null where one side has nothing.
template <typename Item>
struct Pair {
    const Item* pBefore = nullptr;
    const Item* pAfter = nullptr;
    std::size_t placeAfter = 0;  // where there is one

    [[nodiscard]] bool IsWhole() const noexcept { return pBefore != nullptr && pAfter != nullptr; }
};

// The places of the items by the keys of their names.
std::unordered_map<std::string, std::size_t> IndexOf(const auto& items) {
    std::unordered_map<std::string, std::size_t> index;
    for (std::size_t i = 0; i < items.size(); ++i) index.try_emplace(NameKey(items[i].name), i);
    return index;
}

// In the order of `before`; what only `after` has comes last. By place where no name is in both.
template <typename Items>
auto PairUp(const Items& before, const Items& after) {
    std::vector<Pair<typename Items::value_type>> pairs;
    const auto earlier = IndexOf(before);
    const auto later = IndexOf(after);
    const bool byName =
        std::ranges::any_of(earlier, [&](const auto& each) { return later.contains(each.first); });
    if (!byName) {
        for (std::size_t i = 0; i < std::max(before.size(), after.size()); ++i)
            pairs.push_back(
                {i < before.size() ? &before[i] : nullptr, i < after.size() ? &after[i] : nullptr, i});
        return pairs;
    }
    for (const auto& item : before) {
        const auto found = later.find(NameKey(item.name));
        if (found == later.end()) {
            pairs.push_back({&item, nullptr, 0});
        } else {
            pairs.push_back({&item, &after[found->second], found->second});
        }
    }
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (!earlier.contains(NameKey(after[i].name))) pairs.push_back({nullptr, &after[i], i});
    }
    return pairs;
}

// Whether the items that are in both come in another order.
template <typename Item>
bool IsReordered(const std::vector<Pair<Item>>& pairs) {
    std::size_t next = 0;
    for (const Pair<Item>& pair : pairs) {
        if (!pair.IsWhole()) continue;
        if (pair.placeAfter < next) return true;
        next = pair.placeAfter + 1;
    }
    return false;
}

class Comparison {
  public:
    Comparison(const XpsDocument& before, const XpsDocument& after) : m_before(before), m_after(after) {}

    Lines Run() {
        AddTickets("job", m_before.sequence.ticket, m_after.sequence.ticket);
        const auto documents = PairUp(m_before.sequence.documents, m_after.sequence.documents);
        if (IsReordered(documents)) m_lines.emplace_back("the fixed documents come in another order");
        for (std::size_t i = 0; i < documents.size(); ++i) {
            const std::string title = "document " + std::to_string(i + 1);
            if (!AddMissing(title, documents[i]))
                CompareFixedDocuments(title, *documents[i].pBefore, *documents[i].pAfter);
        }
        return std::move(m_lines);
    }

  private:
    // Whether one of them is not there, which is told.
    template <typename Item>
    bool AddMissing(const std::string& title, const Pair<Item>& pair) {
        if (pair.IsWhole()) return false;
        const bool isFirst = pair.pBefore != nullptr;
        m_lines.push_back(title + " " + (isFirst ? pair.pBefore : pair.pAfter)->name + ": only in the " +
                          (isFirst ? "first" : "second"));
        return true;
    }

    void CompareFixedDocuments(const std::string& title, const FixedDocument& before,
                               const FixedDocument& after) {
        AddTickets(title, before.ticket, after.ticket);
        const auto pages = PairUp(before.pages, after.pages);
        if (IsReordered(pages)) m_lines.push_back(title + ": the pages come in another order");
        for (std::size_t i = 0; i < pages.size(); ++i) {
            const std::string page = title + ", page " + std::to_string(i + 1);
            if (!AddMissing(page, pages[i])) ComparePages(page, *pages[i].pBefore, *pages[i].pAfter);
        }
    }

    void ComparePages(const std::string& title, const FixedPage& before, const FixedPage& after) {
        const std::string markup = m_before.ReadMarkup(before);
        const std::string newMarkup = m_after.ReadMarkup(after);
        if (markup != newMarkup) {
            const std::string size = SizeOf(markup);
            const std::string newSize = SizeOf(newMarkup);
            if (size != newSize) m_lines.push_back(title + ": " + size + " -> " + newSize);
            m_lines.push_back(title + ": the markup differs, " + BytesText(markup.size()) + " -> " +
                              BytesText(newMarkup.size()));
        }
        AddTickets(title, before.ticket, after.ticket);
        AddResources(title, before, after);
    }

    static std::string SizeOf(const std::string& markup) {
        const auto size = package::ReadPageDimensions(markup);
        return size ? SizeText(*size) : "no size";
    }

    void AddTickets(const std::string& title, const std::optional<std::string>& before,
                    const std::optional<std::string>& after) {
        if (!before && !after) return;
        if (!before || !after) {
            m_lines.push_back(title + ": a ticket only in the " + (before ? "first" : "second"));
            return;
        }
        const std::string ticket = m_before.ReadPart(*before);
        const std::string newTicket = m_after.ReadPart(*after);
        if (ticket == newTicket) return;
        try {
            Append(m_lines, title + ": ticket: ", DiffTickets(ticket, newTicket));
        } catch (const printschema::FormatError& error) {
            m_lines.push_back(title + ": the tickets differ, and one is none: " + error.what());
        }
    }

    void AddResources(const std::string& title, const FixedPage& before, const FixedPage& after) {
        const auto has = [](const FixedPage& page, const std::string& name) {
            return std::ranges::any_of(
                page.resources, [&](const std::string& each) { return NameKey(each) == NameKey(name); });
        };
        for (const std::string& name : before.resources) {
            if (!has(after, name)) {
                m_lines.push_back(title + ": resource " + name + " only in the first");
            } else if (ReadResource(m_before, name) != ReadResource(m_after, name)) {
                m_lines.push_back(title + ": the bytes of resource " + name + " differ");
            }
        }
        for (const std::string& name : after.resources) {
            if (!has(before, name)) m_lines.push_back(title + ": resource " + name + " only in the second");
        }
    }

    // Nothing for one that is missing.
    static std::optional<std::string> ReadResource(const XpsDocument& document, const std::string& name) {
        if (!document.GetPackage().Find(name)) return std::nullopt;
        return document.ReadPart(name);
    }

    const XpsDocument& m_before;
    const XpsDocument& m_after;
    Lines m_lines;
};

}  // namespace

Lines DiffTickets(std::string_view before, std::string_view after) {
    const auto first = printschema::ReadFramework(before, printschema::Tag::PrintTicket);
    const auto second = printschema::ReadFramework(after, printschema::Tag::PrintTicket);
    Lines lines;
    for (const printschema::Difference& each : printschema::CompareTickets(first, second)) {
        lines.push_back(each.name + ": " + each.before.value_or(kNothing) + " -> " +
                        each.after.value_or(kNothing));
    }
    return lines;
}

Lines DiffDocuments(const XpsDocument& before, const XpsDocument& after) {
    return Comparison(before, after).Run();
}

}  // namespace devkit::filterhost
