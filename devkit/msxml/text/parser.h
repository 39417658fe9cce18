#pragma once

#include <string_view>

#include "devkit/msxml/tree/node.h"

namespace devkit::msxml {

// What a document may be.
struct ParseRules {
    bool prohibitDtd = true;
    bool newParser = false;      // only changes the code with which a DTD is refused
    long maxElementDepth = 256;  // 0: no limit
};

// Parses a document in UTF-8 into an empty document, whatever encoding its declaration names. No entity is
// expanded but the five of XML, nothing is fetched, and a DTD is refused unless the rules allow it, in
// which case it is skipped. White space between tags is dropped unless the document or xml:space preserves
// it. Throws ParseFailure, with what was read so far left in the document, and std::bad_alloc.
void ParseInto(Document& document, const ParseRules& rules, std::string_view utf8);

}  // namespace devkit::msxml
