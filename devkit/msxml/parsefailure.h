#pragma once

#include "platform/windows.h"

#include <string>

namespace devkit::msxml {

// Why the last load failed, as IXMLDOMParseError tells it. A code of 0 stands for no failure.
struct ParseFailure {
    HRESULT code = S_OK;
    std::wstring reason;      // one English sentence and a line break
    std::wstring sourceText;  // the line that the failure is in
    std::wstring url;         // of a load from a file
    long line = 0;            // from 1; 0 when there is no place
    long linePosition = 0;    // from 1, in characters
    long filePosition = 0;    // from 0, in characters
};

// The text for a code. A detail such as a name takes the place that the text has for it.
[[nodiscard]] std::wstring ReasonFor(HRESULT code, const std::wstring& detail);

}  // namespace devkit::msxml
