#include "devkit/edges/marked.h"

namespace devkit::edges {

int Marked(int number) {
    int result = number;
    if (number > 0) result = -number;
    return result;
}

}  // namespace devkit::edges
