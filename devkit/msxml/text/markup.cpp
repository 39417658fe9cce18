#include "devkit/msxml/text/markup.h"

#include "devkit/msxml/tree/characters.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml {

namespace {

void CheckCharacters(std::wstring_view text) {
    if (FindForbiddenCharacter(text) != std::wstring_view::npos) throw Refused{XmlBadCharData};
}

std::wstring_view EscapeFor(wchar_t c, bool isInQuotes, std::wstring_view lineFeed) noexcept {
    switch (c) {
        case L'&':
            return L"&amp;";
        case L'<':
            return L"&lt;";
        case L'>':
            return L"&gt;";
        case L'"':
            return isInQuotes ? L"&quot;" : L"\"";
        case L'\t':
            return isInQuotes ? L"&#x9;" : L"\t";
        case L'\n':
            return lineFeed;
        default:
            return L"&#xD;";
    }
}

bool IsPlain(wchar_t c) noexcept {
    return c > L'>' || (c != L'&' && c != L'<' && c != L'>' && c != L'"' && c >= L' ');
}

void AppendEscaped(std::wstring& out, std::wstring_view text, bool isInQuotes, std::wstring_view lineFeed) {
    CheckCharacters(text);
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsPlain(text[i])) continue;
        out.append(text, start, i - start).append(EscapeFor(text[i], isInQuotes, lineFeed));
        start = i + 1;
    }
    out.append(text, start);
}

}  // namespace

void AppendText(std::wstring& out, std::wstring_view text, std::wstring_view lineFeed) {
    AppendEscaped(out, text, false, lineFeed);
}

void AppendAttribute(std::wstring& out, std::wstring_view name, std::wstring_view value) {
    out.append(name).append(L"=\"");
    AppendEscaped(out, value, true, L"&#xA;");
    out += L'"';
}

void AppendCdata(std::wstring& out, std::wstring_view data) {
    CheckCharacters(data);
    out += L"<![CDATA[";
    for (;;) {
        const std::size_t end = data.find(L"]]>");
        if (end == std::wstring_view::npos) break;
        out.append(data.substr(0, end + 2)).append(L"]]><![CDATA[");
        data.remove_prefix(end + 2);
    }
    out.append(data).append(L"]]>");
}

void AppendComment(std::wstring& out, std::wstring_view data) {
    CheckCharacters(data);
    const bool isDivided = data.find(L"--") != std::wstring_view::npos || data.ends_with(L'-');
    if (isDivided) throw Refused{XmlCommentSyntax};
    out.append(L"<!--").append(data).append(L"-->");
}

void AppendInstruction(std::wstring& out, std::wstring_view target, std::wstring_view data) {
    CheckCharacters(data);
    if (data.find(L"?>") != std::wstring_view::npos) throw Refused{XmlInstructionSyntax};
    out.append(L"<?").append(target);
    if (!data.empty()) out.append(L" ").append(data);
    out += L"?>";
}

}  // namespace devkit::msxml
