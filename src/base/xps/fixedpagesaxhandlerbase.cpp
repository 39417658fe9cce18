#include "base/xps/fixedpagesaxhandlerbase.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "base/logging/check.h"
#include "base/xps/decimal.h"

namespace base::xps {
namespace {

constexpr std::wstring_view kWidth = L"Width";
constexpr std::wstring_view kHeight = L"Height";
// A constant, so that its length is not counted for each attribute.
constexpr std::wstring_view kEscaped = L"UnicodeString";

// False when the parser refuses one of the texts, or gives no storage for one that is not empty.
bool ReadAttribute(ISAXAttributes& attributes, int index, TagAttribute& attribute) {
    struct Text {
        const wchar_t* pText = nullptr;
        int length = 0;
    };
    Text uri;
    Text localName;
    Text name;
    Text value;
    if (FAILED(attributes.getName(index, &uri.pText, &uri.length, &localName.pText, &localName.length,
                                  &name.pText, &name.length)) ||
        FAILED(attributes.getValue(index, &value.pText, &value.length))) {
        return false;
    }
    const auto isReadable = [](const Text& text) {
        return text.length == 0 || (text.length > 0 && text.pText != nullptr);
    };
    const auto view = [](const Text& text) {
        constexpr std::wstring_view kEmpty = L"";
        return text.length == 0 ? kEmpty
                                : std::wstring_view(text.pText, static_cast<std::size_t>(text.length));
    };
    if (!isReadable(localName) || !isReadable(name) || !isReadable(value)) return false;
    attribute = {view(name), view(value), view(localName) == kEscaped};
    return true;
}

}  // namespace

std::wstring_view FixedPageSaxHandlerBase::TextOf(const wchar_t* text, int length) noexcept {
    if (text == nullptr || length < 0) return {};
    return {text, static_cast<std::size_t>(length)};
}

std::span<const TagAttribute> FixedPageSaxHandlerBase::ReadAttributes(ISAXAttributes* pAttributes) {
    m_attributes.clear();
    int count = 0;
    if (pAttributes == nullptr || FAILED(pAttributes->getLength(&count))) return {};
    for (int index = 0; index < count; ++index) {
        if (!ReadAttribute(*pAttributes, index, m_attributes.emplace_back())) return {};
    }
    return m_attributes;
}

FixedPageSaxHandlerBase::AttributeTable FixedPageSaxHandlerBase::ToTable(
    std::span<const TagAttribute> attributes) {
    AttributeTable table;
    for (const TagAttribute& attribute : attributes) {
        table.insert_or_assign(std::wstring(attribute.name),
                               AttributeValue{std::wstring(attribute.value), attribute.isEscaped});
    }
    return table;
}

std::vector<TagAttribute> FixedPageSaxHandlerBase::ToAttributes(const AttributeTable& table) {
    std::vector<TagAttribute> attributes;
    attributes.reserve(table.size());
    for (const auto& [name, value] : table) attributes.push_back({name, value.text, value.isEscaped});
    return attributes;
}

Box FixedPageSaxHandlerBase::ReadPage(AttributeTable& table) {
    const float height = ParseDecimal(table[std::wstring(kHeight)].text);
    const float width = ParseDecimal(table[std::wstring(kWidth)].text);
    return {0, 0, width, height};
}

void FixedPageSaxHandlerBase::RewriteSize(AttributeTable& table, const Box& page, const Matrix& matrix) {
    const auto width = table.find(kWidth);
    const auto height = table.find(kHeight);
    if (width == table.end() || height == table.end()) {
        logging::Throw<exception::Error>("FixedPage Hegiht/Width attribute is required by XPS.");
    }
    const Box turned = TransformCornerBox(page, matrix);
    width->second.text = FormatDecimal(turned.Width());
    height->second.text = FormatDecimal(turned.Height());
}

void FixedPageSaxHandlerBase::RewriteBleedBox(AttributeTable& table, const Box& page, const Matrix& matrix) {
    constexpr auto kIsRemoved = [](const Box& unturned, const Box& box) {
        return box.left > 0 || box.top > 0 || unturned.Width() > box.Width() ||
               unturned.Height() > box.Height();
    };
    RewriteBox(table, L"BleedBox", kIsRemoved, page, matrix);
}

void FixedPageSaxHandlerBase::RewriteContentBox(AttributeTable& table, const Box& page,
                                                const Matrix& matrix) {
    constexpr auto kIsRemoved = [](const Box& unturned, const Box& box) {
        return box.left < 0 || box.top < 0 || box.Width() > unturned.Width() ||
               box.Height() > unturned.Height();
    };
    RewriteBox(table, L"ContentBox", kIsRemoved, page, matrix);
}

void FixedPageSaxHandlerBase::RewriteBox(AttributeTable& table, std::wstring_view name, BoxTest isRemoved,
                                         const Box& page, const Matrix& matrix) {
    const auto attribute = table.find(name);
    if (attribute == table.end()) return;
    try {
        const Box parsed = ParseBox(attribute->second.text);
        const Box box = OffsetBox(TransformCornerBox(parsed, matrix), {parsed.left, parsed.top});
        if (!isRemoved(page, box)) {
            attribute->second.text = FormatDecimals(std::array{box.left, box.top, box.right, box.bottom});
            return;
        }
    } catch (const std::invalid_argument&) {
        // Falls through to the removal: a page is complete without the attribute.
    }
    table.erase(attribute);
}

Box FixedPageSaxHandlerBase::ParseBox(std::wstring_view text) {
    if (text.empty()) logging::Throw<std::invalid_argument>("text is empty.");
    std::array<float, 4> values{};
    std::size_t count = 0;
    for (std::size_t start = 0; start <= text.size(); ++count) {
        const std::size_t end = std::min(text.find(L',', start), text.size());
        const std::wstring_view value = text.substr(start, end - start);
        // An empty place between commas, or behind the last one, is no value.
        if (count == values.size() || value.find_first_not_of(L" \t\r\n") == std::wstring_view::npos) {
            logging::Throw<std::invalid_argument>("the value comma deliminated should consist 4 value.");
        }
        values[count] = ParseDecimal(value);
        start = end + 1;
    }
    if (count != values.size()) {
        logging::Throw<std::invalid_argument>("the value comma deliminated should consist 4 value.");
    }
    const auto [x, y, width, height] = values;
    return {x, y, x + width, y + height};
}

}  // namespace base::xps
