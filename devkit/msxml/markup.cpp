#include "devkit/msxml/markup.h"

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/errorcodes.h"
#include "devkit/msxml/unicode.h"

namespace devkit::msxml {

namespace {

void CheckCharacters(std::wstring_view text) {
    if (FindForbiddenCharacter(text) != std::wstring_view::npos) throw ComError{Hresult(XmlBadCharData)};
}

std::wstring_view EscapeFor(wchar_t c) noexcept {
    switch (c) {
        case L'&':
            return L"&amp;";
        case L'<':
            return L"&lt;";
        case L'>':
            return L"&gt;";
        case L'"':
            return L"&quot;";
        case L'\t':
            return L"&#x9;";
        case L'\n':
            return L"&#xA;";
        case L'\r':
            return L"&#xD;";
        default:
            return {};
    }
}

void AppendEscaped(std::wstring& out, std::wstring_view text, std::wstring_view escaped) {
    CheckCharacters(text);
    for (;;) {
        const std::size_t next = text.find_first_of(escaped);
        out += text.substr(0, next);
        if (next == std::wstring_view::npos) return;
        out += EscapeFor(text[next]);
        text.remove_prefix(next + 1);
    }
}

}  // namespace

void AppendText(std::wstring& out, std::wstring_view text) { AppendEscaped(out, text, L"&<>\r"); }

void AppendAttribute(std::wstring& out, std::wstring_view name, std::wstring_view value) {
    out.append(name).append(L"=\"");
    AppendEscaped(out, value, L"&<>\"\t\n\r");
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
    if (isDivided) throw ComError{Hresult(XmlCommentSyntax)};
    out.append(L"<!--").append(data).append(L"-->");
}

void AppendInstruction(std::wstring& out, std::wstring_view target, std::wstring_view data) {
    CheckCharacters(data);
    if (data.find(L"?>") != std::wstring_view::npos) throw ComError{Hresult(XmlInstructionSyntax)};
    out.append(L"<?").append(target);
    if (!data.empty()) out.append(L" ").append(data);
    out += L"?>";
}

}  // namespace devkit::msxml
