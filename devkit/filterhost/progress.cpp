#include "devkit/filterhost/progress.h"

#include <utility>

#include "devkit/filterhost/console.h"

namespace devkit::filterhost {
namespace {

constexpr std::chrono::milliseconds kFirstAfter{500};
constexpr std::chrono::milliseconds kInterval{100};

}  // namespace

Progress::Progress(bool wanted) : m_shown(wanted && ErrorIsConsole()), m_next(Clock::now() + kFirstAfter) {}

void Progress::Show(const std::string& text) {
    if (!m_shown || Clock::now() < m_next) return;
    m_next = Clock::now() + kInterval;
    const std::size_t rest = m_length > text.size() ? m_length - text.size() : 0;
    m_length = text.size();
    PrintError("\r" + text + std::string(rest, ' '));
}

void Progress::Clear() {
    if (m_length > 0) PrintError("\r" + std::string(std::exchange(m_length, 0), ' ') + "\r");
}

}  // namespace devkit::filterhost
