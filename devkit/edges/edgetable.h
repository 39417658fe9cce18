#pragma once

#include <cstddef>

namespace devkit::edges {

// A program or a DLL can tell which edges of its code have run: ways from one block to the next. Its table
// has a byte for each, not zero once the edge has run; two edges may share one. Whoever reads the table may
// clear it. It goes with its module.
//
// Exported by the module under kTableFunction: gives the table and puts its size into *pSize.
using TableFunction = unsigned char*(std::size_t* pSize);
inline constexpr const char* kTableFunction = "EdgesOfModule";
inline constexpr std::size_t kMostEdges = std::size_t{1} << 20;  // of a table

}  // namespace devkit::edges
