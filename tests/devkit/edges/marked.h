#pragma once

namespace devkit::edges {

// Of this function's code each edge that runs is marked.
int Marked(int number);

}  // namespace devkit::edges
