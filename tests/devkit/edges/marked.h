#pragma once

namespace devkit::edges {

// Of this function's code each edge that runs is marked.
int Marked(int number);

// Two loops of one block each, which follows itself but for the first time.
void Loop(int times);
void OtherLoop(int times);

}  // namespace devkit::edges
