#include "devkit/pipeline/breachlog.h"

#include <utility>

namespace devkit::pipeline {

void BreachLog::Add(std::string text) {
    const std::lock_guard guard(m_lock);
    m_lines.push_back(std::move(text));
}

std::vector<std::string> BreachLog::Lines() const {
    const std::lock_guard guard(m_lock);
    return m_lines;
}

}  // namespace devkit::pipeline
