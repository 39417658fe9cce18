#include "devkit/filterhost/progress.h"

#include <utility>

#include "devkit/filterhost/console.h"

namespace devkit::filterhost {
namespace {

constexpr std::chrono::milliseconds kFirstAfter{500};
constexpr std::chrono::milliseconds kInterval{100};

}  // namespace

Progress::Progress(std::string input, std::size_t total, bool wanted)
    : m_input(std::move(input)),
      m_total(total),
      m_shown(wanted && ErrorIsConsole()),
      m_next(Clock::now() + kFirstAfter) {}

Progress::~Progress() {
    if (m_length > 0) PrintError("\r" + std::string(m_length, ' ') + "\r");
}

void Progress::Asked(unsigned number) {
    if (!m_shown || Clock::now() < m_next) return;
    m_next = Clock::now() + kInterval;
    const std::string text = m_input + ": part " + std::to_string(number) + " of " + std::to_string(m_total);
    m_length = text.size();
    PrintError("\r" + text);
}

}  // namespace devkit::filterhost
