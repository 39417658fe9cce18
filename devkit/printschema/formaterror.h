#pragma once

#include <stdexcept>

namespace devkit::prntvpt {

// A document that is no ticket, or no capabilities: one line that says what is wrong with it.
class FormatError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace devkit::prntvpt
