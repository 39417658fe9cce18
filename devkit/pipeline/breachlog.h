#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace devkit::pipeline {

// The rules of the pipeline that a filter broke, one line of text each, in the order of their finding.
// Any thread may add.
class BreachLog {
  public:
    void Add(std::string text);
    [[nodiscard]] std::vector<std::string> Lines() const;

  private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_lines;
};

}  // namespace devkit::pipeline
