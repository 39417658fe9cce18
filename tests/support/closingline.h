#pragma once

#include <string>

namespace tests {

// The line that tells the launcher of a test program (cmake/run_test.py) that the program came to its end.
// The launcher hands the line's text over in the environment, from which it is taken away: programs that the
// test starts must not print it. Made first thing in main.
class ClosingLine {
  public:
    ClosingLine();

    // Prints the line, if there is a launcher, with the status that main returns next. Returns the status.
    int Print(int status) const;

  private:
    std::string m_text;
};

}  // namespace tests
