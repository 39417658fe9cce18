#include "devkit/filterhost/orders.h"

#include <optional>
#include <thread>
#include <utility>

#include "devkit/common/leave.h"
#include "devkit/filterhost/exitstatus.h"

namespace devkit::filterhost {

Orders::Orders(ParentProcess& parent, Urgent urgent) : m_parent(parent), m_urgent(std::move(urgent)) {
    std::thread([this] { Listen(); }).detach();
}

std::string Orders::Next() {
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [this] { return !m_commands.empty(); });
    std::string command = std::move(m_commands.front());
    m_commands.pop_front();
    return command;
}

void Orders::Listen() {
    ExitStatus status = WrongUsage;
    while (std::optional<std::string> command = m_parent.Read()) {
        status = FilterFailed;
        if (m_urgent && m_urgent(*command)) continue;
        const std::lock_guard guard(m_lock);
        m_commands.push_back(*std::move(command));
        m_changed.notify_one();
    }
    common::LeaveProcess(static_cast<unsigned>(status));
}

}  // namespace devkit::filterhost
