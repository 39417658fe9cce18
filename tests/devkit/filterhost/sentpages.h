#pragma once

#include "platform/windows.h"

#include <memory>
#include <string>

#include "devkit/pipeline/part.h"

namespace devkit::filterhost {

inline constexpr const char* kLetterSize = "Width=\"816\" Height=\"1056\"";

// A page of that content.
[[nodiscard]] inline std::string Markup(const std::string& content, const char* size = kLetterSize) {
    return "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" " + std::string(size) + ">" +
           content + "</FixedPage>";
}

[[nodiscard]] inline pipeline::PartPtr PartOfInput(pipeline::PartKind kind, const std::string& name,
                                                   const std::string& bytes) {
    return std::make_shared<pipeline::Part>(
        kind, pipeline::InputPart{name, "", [bytes] { return std::make_shared<const std::string>(bytes); }});
}

// As a filter writes it.
inline void Write(pipeline::Part& part, const std::string& bytes) {
    const auto writing = part.BeginWriting();
    writing->Append(bytes.data(), bytes.size());
    writing->Close();
}

}  // namespace devkit::filterhost
