#pragma once

#include <cstddef>
#include <string>

#include "devkit/fuzz/random.h"

namespace devkit::fuzz {

// No mutation makes markup longer than this.
inline constexpr std::size_t kMostMarkup = std::size_t{4} << 20;

// Changes markup in one way, mostly of UTF-8, that need not be well-formed; UTF-16 is taken for what it is
// and stays so. Gives what was done, in a few words.
std::string MutateMarkup(std::string& markup, Random& random);

// One change that every markup can take, whatever its elements: bytes, encodings, declarations.
std::string MutateEncoding(std::string& markup, Random& random);

}  // namespace devkit::fuzz
