#pragma once

#include <stdexcept>

namespace devkit::filterhost {

// What the caller asked for cannot be done as asked; one line of text.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace devkit::filterhost
