#include "devkit/edges/marked.h"

namespace devkit::edges {

int Marked(int number) {
    int result = number;
    if (number > 0) result = -number;
    return result;
}

void Loop(int times) {
    volatile int i = 0;
    do {
        i = i + 1;
    } while (i < times);
}

void OtherLoop(int times) {
    volatile int i = times;
    do {
        i = i - 1;
    } while (i > 0);
}

}  // namespace devkit::edges
