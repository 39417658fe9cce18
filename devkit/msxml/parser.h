#pragma once

#include <string_view>

namespace devkit::msxml {

class Document;

// Parses a document in UTF-8 into an empty document, whatever encoding its declaration names. No entity is
// expanded but the five of XML, nothing is fetched, and a DTD is refused unless the settings allow it, in
// which case it is skipped. Throws ParseFailure, with what was read so far left in the document, and
// std::bad_alloc.
void ParseInto(Document& document, std::string_view utf8);

}  // namespace devkit::msxml
