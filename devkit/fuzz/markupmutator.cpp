#include "devkit/fuzz/markupmutator.h"

#include <array>
#include <optional>
#include <string_view>

#include "devkit/fuzz/hostilevalues.h"
#include "devkit/fuzz/markupscan.h"
#include "platform/utf.h"

namespace devkit::fuzz {
namespace {

using std::string_view_literals::operator""sv;

constexpr std::string_view kLittleEndian = "\xFF\xFE";

void Replace(std::string& markup, const Place& place, std::string_view text) {
    if (markup.size() - place.Size() + text.size() > kMostMarkup) return;
    markup.replace(place.begin, place.Size(), text);
}

void Insert(std::string& markup, std::size_t at, std::string_view text) { Replace(markup, {at, at}, text); }

std::string At(const std::string& markup, const Place& place) {
    return markup.substr(place.begin, place.Size());
}

// What of the markup a mutation may change: where there is none of a kind, it does nothing.
class Markup {
  public:
    Markup(std::string& text, Random& random) : m_text(text), m_random(random), m_scan(ScanMarkup(text)) {}

    [[nodiscard]] Random& Chance() const { return m_random; }
    [[nodiscard]] std::string& Text() const { return m_text; }
    // Any but the first, so that something is left, where there are several.
    [[nodiscard]] const ScannedElement* Element() const {
        if (m_scan.elements.empty()) return nullptr;
        const std::size_t first = m_scan.elements.size() > 1 ? 1 : 0;
        return &m_scan.elements[first + m_random.Below(m_scan.elements.size() - first)];
    }
    // Any of them.
    [[nodiscard]] const ScannedElement* Tag() const {
        return m_scan.elements.empty() ? nullptr : &m_random.Pick(m_scan.elements);
    }
    [[nodiscard]] const ScannedAttribute* Attribute() const {
        return m_scan.attributes.empty() ? nullptr : &m_random.Pick(m_scan.attributes);
    }
    // Where an attribute can be put into a start tag.
    [[nodiscard]] std::optional<std::size_t> PlaceForAttribute() const {
        const ScannedElement* const pElement = Tag();
        return pElement == nullptr ? std::nullopt : std::optional(pElement->name.end);
    }

  private:
    std::string& m_text;
    Random& m_random;
    const MarkupScan m_scan;
};

void DropElement(const Markup& markup) {
    if (const auto* const p = markup.Element()) Replace(markup.Text(), p->all, "");
}

void DoubleElement(const Markup& markup) {
    if (const auto* const p = markup.Element()) Insert(markup.Text(), p->all.end, At(markup.Text(), p->all));
}

void MoveElement(const Markup& markup) {
    const auto* const pFrom = markup.Element();
    const auto* const pTo = markup.Element();
    if (pFrom == nullptr || pTo->all.begin >= pFrom->all.begin) return;
    const std::string moved = At(markup.Text(), pFrom->all);
    Replace(markup.Text(), pFrom->all, "");
    Insert(markup.Text(), pTo->all.begin, moved);
}

void NestElement(const Markup& markup) {
    static constexpr std::array<std::size_t, 7> kDepths{2, 10, 100, 255, 257, 1000, 5000};
    const auto* const p = markup.Element();
    if (p == nullptr) return;
    const std::string name = At(markup.Text(), p->name);
    const std::size_t depth = markup.Chance().Pick(kDepths);
    if (depth * (2 * name.size() + 5) > kMostMarkup) return;
    const Place inside = p->all;
    std::string open;
    std::string close;
    for (std::size_t i = 0; i < depth; ++i) {
        open += "<" + name + ">";
        close += "</" + name + ">";
    }
    Insert(markup.Text(), inside.end, close);
    Insert(markup.Text(), inside.begin, open);
}

void RepeatElement(const Markup& markup) {
    static constexpr std::array<std::size_t, 4> kCounts{10, 100, 1000, 10000};
    const auto* const p = markup.Element();
    if (p == nullptr) return;
    const std::string one = At(markup.Text(), p->all);
    const std::size_t count = markup.Chance().Pick(kCounts);
    if (count * one.size() > kMostMarkup) return;
    std::string many;
    for (std::size_t i = 0; i < count; ++i) many += one;
    Insert(markup.Text(), p->all.end, many);
}

void RenameElement(const Markup& markup) {
    static constexpr std::array kElements{"FixedPage"sv, "Canvas"sv,   "Path"sv,    "x:a"sv,
                                          "xmlns"sv,     "a:b:c"sv,    "Feature"sv, "PrintTicket"sv,
                                          "1a"sv,        "\xC3\xA9"sv, ""sv};
    const auto* const p = markup.Tag();
    if (p == nullptr) return;
    const std::string name(markup.Chance().Pick(kElements));
    const std::string before = At(markup.Text(), p->name);
    // With its end tag, or without.
    const std::string endTag = "</" + before + ">";
    const std::size_t end = p->all.end - endTag.size();
    const bool isBoth = p->all.Size() > endTag.size() && !markup.Chance().OneIn(4) &&
                        markup.Text().compare(end, endTag.size(), endTag) == 0;
    if (isBoth) Replace(markup.Text(), {end + 2, end + 2 + before.size()}, name);
    Replace(markup.Text(), p->name, name);
}

void DropAttribute(const Markup& markup) {
    if (const auto* const p = markup.Attribute()) Replace(markup.Text(), p->all, "");
}

void DoubleAttribute(const Markup& markup) {
    if (const auto* const p = markup.Attribute())
        Insert(markup.Text(), p->all.end, At(markup.Text(), p->all));
}

void SwapValues(const Markup& markup) {
    const auto* pFirst = markup.Attribute();
    const auto* pSecond = markup.Attribute();
    if (pFirst == nullptr || pFirst == pSecond) return;
    if (pFirst->value.begin > pSecond->value.begin) std::swap(pFirst, pSecond);
    const std::string first = At(markup.Text(), pFirst->value);
    const std::string second = At(markup.Text(), pSecond->value);
    Replace(markup.Text(), pSecond->value, first);
    Replace(markup.Text(), pFirst->value, second);
}

void SetNumber(const Markup& markup) {
    if (const auto* const p = markup.Attribute())
        Replace(markup.Text(), p->value, HostileNumber(markup.Chance()));
}

void SetText(const Markup& markup) {
    if (const auto* const p = markup.Attribute())
        Replace(markup.Text(), p->value, HostileText(markup.Chance()));
}

void RenameAttribute(const Markup& markup) {
    static constexpr std::array kAttributes{"Width"sv,   "Height"sv,          "name"sv, "xmlns"sv,
                                            "xmlns:x"sv, "xmlns:"sv,          "x:a"sv,  "xml:lang"sv,
                                            "a:b:c"sv,   "RenderTransform"sv, "1"sv};
    if (const auto* const p = markup.Attribute())
        Replace(markup.Text(), p->name, markup.Chance().Pick(kAttributes));
}

void AddAttributes(const Markup& markup) {
    static constexpr std::array<std::size_t, 5> kCounts{1, 10, 100, 1000, 5000};
    const auto at = markup.PlaceForAttribute();
    if (!at) return;
    std::string many;
    const std::size_t count = markup.Chance().Pick(kCounts);
    for (std::size_t i = 0; i < count; ++i) many += " a" + std::to_string(i) + "=\"1\"";
    Insert(markup.Text(), *at, many);
}

void AddLongAttribute(const Markup& markup) {
    static constexpr std::array<std::size_t, 5> kSizes{1000, 32767, 32768, 65536, 1 << 20};
    if (const auto at = markup.PlaceForAttribute())
        Insert(markup.Text(), *at, " long=\"" + LongText(markup.Chance().Pick(kSizes)) + "\"");
}

void AddLongName(const Markup& markup) {
    static constexpr std::array<std::size_t, 3> kSizes{1000, 40000, 100000};
    const std::string name = LongText(markup.Chance().Pick(kSizes));
    const auto* const p = markup.Element();
    if (p == nullptr) return;
    Insert(markup.Text(), p->all.begin, "<" + name + "/>");
}

void AddDeclaration(const Markup& markup) {
    static constexpr std::array kDeclarations{
        " xmlns=\"\""sv,
        " xmlns:x=\"\""sv,
        " xmlns:xml=\"a\""sv,
        " xmlns:xmlns=\"a\""sv,
        " xmlns=\"http://a\""sv,
        " xmlns:psk=\"http://a\""sv,
        " xmlns:psf=\"a\""sv,
        " xmlns:krk=\"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords\""sv};
    if (const auto at = markup.PlaceForAttribute())
        Insert(markup.Text(), *at, markup.Chance().Pick(kDeclarations));
}

void InsertNode(const Markup& markup) {
    static constexpr std::array kNodes{"<!---->"sv,
                                       "<!-- a -- b -->"sv,
                                       "<?a b?>"sv,
                                       "<?xml version=\"1.0\"?>"sv,
                                       "<![CDATA[<a>]]>"sv,
                                       "<![CDATA["sv,
                                       "]]>"sv,
                                       "&#9;"sv,
                                       "&#0;"sv,
                                       "&#xD800;"sv,
                                       "&#x110000;"sv,
                                       "&unknown;"sv,
                                       "&"sv,
                                       "<"sv,
                                       ">"sv,
                                       "text"sv,
                                       "</a>"sv,
                                       "<a>"sv,
                                       "<a xmlns:p=\"u\"><p:b/></a>"sv,
                                       "<p:q/>"sv,
                                       "<FixedPage/>"sv,
                                       "<a b='\"'/>"sv,
                                       "\xEF\xBB\xBF"sv};
    const auto* const p = markup.Tag();
    if (p == nullptr) return;
    const Place place = markup.Chance().OneIn(2) ? p->all : p->startTag;
    Insert(markup.Text(), markup.Chance().OneIn(2) ? place.begin : place.end, markup.Chance().Pick(kNodes));
}

struct Mutator {
    std::string_view name;
    void (*apply)(const Markup&);
};

constexpr std::array kMutators{
    Mutator{"an element dropped", DropElement},
    Mutator{"an element doubled", DoubleElement},
    Mutator{"an element moved", MoveElement},
    Mutator{"an element nested", NestElement},
    Mutator{"an element repeated", RepeatElement},
    Mutator{"an element renamed", RenameElement},
    Mutator{"an attribute dropped", DropAttribute},
    Mutator{"an attribute doubled", DoubleAttribute},
    Mutator{"two values swapped", SwapValues},
    Mutator{"a number set", SetNumber},
    Mutator{"a number set", SetNumber},
    Mutator{"a text set", SetText},
    Mutator{"an attribute renamed", RenameAttribute},
    Mutator{"attributes added", AddAttributes},
    Mutator{"a long attribute added", AddLongAttribute},
    Mutator{"a long name added", AddLongName},
    Mutator{"a declaration added", AddDeclaration},
    Mutator{"a node inserted", InsertNode},
};

void DeclareEntities(std::string& markup, Random& random) {
    static constexpr std::array kDoctypes{
        "<!DOCTYPE a>"sv,
        "<!DOCTYPE a [<!ENTITY b \"c\">]>"sv,
        "<!DOCTYPE a SYSTEM \"http://localhost/a.dtd\">"sv,
        "<!DOCTYPE a [<!ENTITY b SYSTEM \"file:///c:/windows/win.ini\">]>"sv,
        "<!DOCTYPE a [<!ENTITY b \"&b;\">]>"sv,
        "<!DOCTYPE a [<!ENTITY b \"bbbbbbbbbb\"><!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d "
        "\"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\"><!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;&d;&d;\">]>"sv};
    std::size_t at = 0;
    if (markup.starts_with("<?xml")) {
        const std::size_t end = markup.find("?>");
        if (end != std::string::npos) at = end + 2;
    }
    Insert(markup, at, random.Pick(kDoctypes));
    const MarkupScan scan = ScanMarkup(markup);
    if (!scan.attributes.empty()) Insert(markup, random.Pick(scan.attributes).value.begin, "&b;");
}

void SayEncoding(std::string& markup, Random& random) {
    static constexpr std::array kDeclarations{"<?xml version=\"1.0\" encoding=\"utf-16\"?>"sv,
                                              "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>"sv,
                                              "<?xml version=\"1.0\" encoding=\"none\"?>"sv,
                                              "<?xml version=\"1.1\"?>"sv,
                                              "<?xml version=\"2.0\"?>"sv,
                                              "<?xml?>"sv,
                                              " <?xml version=\"1.0\"?>"sv,
                                              "<?xml version=\"1.0\" standalone=\"yes\"?>"sv,
                                              "\xEF\xBB\xBF"sv,
                                              "\xEF\xBB\xBF\xEF\xBB\xBF"sv};
    std::size_t end = 0;
    if (markup.starts_with("<?xml")) end = std::min(markup.find("?>"), markup.size() - 2) + 2;
    Replace(markup, {0, end}, random.Pick(kDeclarations));
}

void InsertBytes(std::string& markup, Random& random) {
    static constexpr std::array kBytes{
        "\x00"sv,         "\x01"sv,         "\x08"sv,         "\x0B"sv,         "\x0C"sv,
        "\x1F"sv,         "\x7F"sv,         "\xC2\x85"sv,     "\x80"sv,         "\xC0\x80"sv,
        "\xED\xA0\x80"sv, "\xED\xB0\x80"sv, "\xEF\xBF\xBE"sv, "\xEF\xBF\xBF"sv, "\xF4\x90\x80\x80"sv,
        "\xFF"sv,         "\xFE\xFF"sv,     "\xF0\x9F"sv,     "\xE2\x80\xA8"sv};
    Insert(markup, random.Below(markup.size() + 1), random.Pick(kBytes));
}

void ChangeBytes(std::string& markup, Random& random) {
    const std::size_t count = 1 + random.Below(4);
    for (std::size_t i = 0; i < count && !markup.empty(); ++i)
        markup[random.Below(markup.size())] = static_cast<char>(random.Below(256));
}

void CutEnd(std::string& markup, Random& random) { markup.resize(random.Below(markup.size() + 1)); }

void AddRubbish(std::string& markup, Random& random) {
    static constexpr std::array kRubbish{"<a/>"sv,  "text"sv,         "\x00\x00\x00"sv,
                                         "<!-- "sv, "</FixedPage>"sv, "\n\n"sv};
    Insert(markup, random.OneIn(2) ? 0 : markup.size(), random.Pick(kRubbish));
}

// As UTF-16 with its mark, without, of the other order, with a byte too many.
void TurnIntoUtf16(std::string& markup, Random& random) {
    if (markup.size() > kMostMarkup / 2) return;
    const std::wstring wide = platform::ToUtf16(markup);
    const std::size_t kind = random.Below(8);
    std::string bytes(kind == 1 ? "" : kind == 2 ? "\xFE\xFF" : kLittleEndian);
    for (const wchar_t unit : wide) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8 & 0xFF);
        bytes += kind == 2 ? high : low;
        bytes += kind == 2 ? low : high;
    }
    if (kind == 3) bytes.pop_back();
    if (kind == 4) bytes += '\0';
    if (kind == 5) bytes += std::string_view("\x00\xD8", 2);
    markup = std::move(bytes);
}

struct ByteMutator {
    std::string_view name;
    void (*apply)(std::string&, Random&);
};

constexpr std::array kByteMutators{
    ByteMutator{"entities declared", DeclareEntities},
    ByteMutator{"an encoding declared", SayEncoding},
    ByteMutator{"bytes inserted", InsertBytes},
    ByteMutator{"bytes changed", ChangeBytes},
    ByteMutator{"the end cut off", CutEnd},
    ByteMutator{"rubbish added", AddRubbish},
    ByteMutator{"turned into UTF-16", TurnIntoUtf16},
};

// The text behind a mark of UTF-16; nothing for any other.
std::optional<std::string> DecodedUtf16(const std::string& bytes) {
    if (!bytes.starts_with(kLittleEndian)) return std::nullopt;
    std::wstring wide;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = static_cast<unsigned char>(bytes[i + 1]);
        wide += static_cast<wchar_t>(low | high << 8);
    }
    return platform::ToUtf8(wide);
}

}  // namespace

std::string MutateEncoding(std::string& markup, Random& random) {
    const ByteMutator& mutator = random.Pick(kByteMutators);
    mutator.apply(markup, random);
    return std::string(mutator.name);
}

std::string MutateMarkup(std::string& markup, Random& random) {
    if (random.OneIn(5)) return MutateEncoding(markup, random);
    std::optional<std::string> decoded = DecodedUtf16(markup);
    std::string& text = decoded ? *decoded : markup;
    const Mutator& mutator = random.Pick(kMutators);
    mutator.apply(Markup(text, random));
    if (decoded) {
        markup = kLittleEndian;
        for (const wchar_t unit : platform::ToUtf16(text)) {
            markup += static_cast<char>(unit & 0xFF);
            markup += static_cast<char>(unit >> 8 & 0xFF);
        }
    }
    return std::string(mutator.name);
}

}  // namespace devkit::fuzz
