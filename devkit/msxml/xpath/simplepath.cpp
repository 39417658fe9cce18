#include "devkit/msxml/xpath/simplepath.h"

#include <algorithm>
#include <utility>

#include "devkit/msxml/tree/attributes.h"
#include "devkit/msxml/tree/data.h"

namespace devkit::msxml {

namespace {

constexpr std::size_t kUsualSteps = 4;

}  // namespace

// Takes an expression to pieces from the left. Every Take says whether the piece was there.
class SimplePath::Reader {
  public:
    Reader(std::wstring_view text, const std::vector<SelectionNamespace>& namespaces) noexcept
        : m_rest(text), m_namespaces(namespaces) {}

    [[nodiscard]] bool Take(std::wstring_view token) {
        SkipSpace();
        if (!m_rest.starts_with(token)) return false;
        m_rest.remove_prefix(token.size());
        return true;
    }

    [[nodiscard]] Start TakeStart() {
        if (Take(L".//")) return Start::Below;
        if (Take(L"//")) return Start::Document;
        return Take(L"/") ? Start::Root : Start::Child;
    }

    [[nodiscard]] bool TakeStep(Step& step) {
        if (!TakeName(step.local)) return false;
        if (m_rest.starts_with(L':')) {
            m_rest.remove_prefix(1);
            const std::wstring* const pUri = FindUri(m_namespaces, step.local);
            if (pUri == nullptr || m_rest.starts_with(L':') || !TakeName(step.local)) return false;
            step.uri = *pUri;
        }
        if (!Take(L"[")) return !IsCall();
        return Take(L"@") && TakeName(step.attribute) && Take(L"=") && TakeLiteral(step.value) && Take(L"]");
    }

    [[nodiscard]] bool IsAtEnd() {
        SkipSpace();
        return m_rest.empty();
    }

  private:
    void SkipSpace() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(L" \t\r\n"), m_rest.size())); }

    // An ASCII name without a colon; others are the XML library's.
    [[nodiscard]] bool TakeName(std::wstring_view& name) {
        SkipSpace();
        if (m_rest.empty() || !BeginsName(m_rest.front())) return false;
        const auto end = std::find_if_not(m_rest.begin(), m_rest.end(), &ContinuesName);
        name = m_rest.substr(0, static_cast<std::size_t>(end - m_rest.begin()));
        m_rest.remove_prefix(name.size());
        return m_rest.empty() || m_rest.front() < 0x80;
    }

    [[nodiscard]] static constexpr bool BeginsName(wchar_t character) noexcept {
        return (character >= L'a' && character <= L'z') || (character >= L'A' && character <= L'Z') ||
               character == L'_';
    }
    [[nodiscard]] static constexpr bool ContinuesName(wchar_t character) noexcept {
        return BeginsName(character) || (character >= L'0' && character <= L'9') || character == L'-' ||
               character == L'.';
    }

    [[nodiscard]] bool TakeLiteral(std::wstring_view& value) {
        SkipSpace();
        if (!m_rest.starts_with(L'"') && !m_rest.starts_with(L'\'')) return false;
        const std::size_t end = m_rest.find(m_rest.front(), 1);
        if (end == std::wstring_view::npos) return false;
        value = m_rest.substr(1, end - 1);
        m_rest.remove_prefix(end + 1);
        return true;
    }

    // Whether the name was that of a function, a node type or an axis.
    [[nodiscard]] bool IsCall() {
        SkipSpace();
        return m_rest.starts_with(L'(') || m_rest.starts_with(L':');
    }

    std::wstring_view m_rest;
    const std::vector<SelectionNamespace>& m_namespaces;
};

std::optional<SimplePath> SimplePath::Parse(std::wstring_view expression,
                                            const std::vector<SelectionNamespace>& namespaces) {
    Reader reader(expression, namespaces);
    SimplePath path;
    path.m_steps.reserve(kUsualSteps);
    bool isOneOfSeveral = false;
    do {
        const Start start = reader.TakeStart();
        isOneOfSeveral = !path.m_steps.empty();
        if (isOneOfSeveral && start != path.m_start) return std::nullopt;
        path.m_start = start;
        const std::size_t first = path.m_steps.size();
        do {
            if (!reader.TakeStep(path.m_steps.emplace_back())) return std::nullopt;
        } while (reader.Take(L"/"));
        path.m_steps[first].isFirst = true;
    } while (reader.Take(L"|"));
    const bool isAnywhere = path.m_start == Start::Below || path.m_start == Start::Document;
    if (!reader.IsAtEnd() || (isOneOfSeveral && !isAnywhere)) return std::nullopt;
    return path;
}

std::vector<NodeRef> SimplePath::Select(Node& node, std::size_t limit) const {
    Node& base = IsAbsolute() ? node.OwnerDocument() : node;
    std::vector<NodeRef> found;
    if (m_start == Start::Below || m_start == Start::Document) {
        SelectBelow(base, limit, found);
    } else {
        SelectDown(base, limit, found);
    }
    return found;
}

bool SimplePath::Matches(const Step& step, const Node& node) {
    if (!node.Is(Kind::Element) || node.GetName()->Local() != step.local ||
        node.GetName()->Uri() != step.uri) {
        return false;
    }
    if (step.attribute.empty()) return true;
    const Node* const pAttribute = FindAttribute(node, step.attribute, std::wstring_view());
    std::wstring room;
    return pAttribute != nullptr && RawText(*pAttribute, room) == step.value;
}

// Whether the steps of an alternative lead to the node from somewhere below the base.
bool SimplePath::LeadsTo(const Node& node, const Node& base) const {
    const Node* pNode = &node;  // null where the alternative has failed
    for (auto step = m_steps.rbegin(); step != m_steps.rend(); ++step) {
        const bool isMatch = pNode != nullptr && pNode != &base && Matches(*step, *pNode);
        if (isMatch && step->isFirst) return true;
        pNode = step->isFirst ? &node : isMatch ? pNode->Parent() : nullptr;
    }
    return false;
}

void SimplePath::SelectBelow(Node& base, std::size_t limit, std::vector<NodeRef>& found) const {
    if (base.Is(Kind::Attribute)) return;
    for (Node* pNode = base.NextWithin(base); pNode != nullptr && found.size() < limit;
         pNode = pNode->NextWithin(base)) {
        if (pNode->Is(Kind::Element) && LeadsTo(*pNode, base)) found.emplace_back(pNode);
    }
}

// Follows the steps depth first, which is in document order since every match is on one level.
void SimplePath::SelectDown(Node& base, std::size_t limit, std::vector<NodeRef>& found) const {
    std::vector<Node*> open;
    Node* pNode = base.Children().pFirst;
    while (found.size() < limit) {
        if (pNode == nullptr) {
            if (open.empty()) return;
            pNode = open.back()->Next();
            open.pop_back();
            continue;
        }
        if (!Matches(m_steps[open.size()], *pNode)) {
            pNode = pNode->Next();
        } else if (open.size() + 1 == m_steps.size()) {
            found.emplace_back(pNode);
            pNode = pNode->Next();
        } else {
            open.push_back(pNode);
            pNode = pNode->Children().pFirst;
        }
    }
}

}  // namespace devkit::msxml
