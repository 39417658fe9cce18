#include "devkit/validate/testtrace.h"

#include <utility>

#include "devkit/filterhost/exitstatus.h"

namespace devkit::validate {

TestTrace::TestTrace(std::filesystem::path path) : m_file(std::move(path)) {}

template <typename Write>
void TestTrace::Guarded(Write&& write) try {
    write();
} catch (const filterhost::UsageError&) {
    // On a thread of the filter nothing may be thrown.
    const std::lock_guard guard(m_lock);
    if (!m_failure) m_failure = std::current_exception();
}

std::size_t TestTrace::Begin(const std::string& test) {
    std::size_t row = 0;
    {
        const std::lock_guard guard(m_lock);
        row = ++m_rows;
    }
    Guarded([&] { m_file.Name(row, test); });
    return row;
}

void TestTrace::Take(std::size_t row, const filterhost::Event& event) {
    Guarded([&] { m_file.Take(row, event); });
}

void TestTrace::End(std::size_t row) {
    Guarded([&] { m_file.End(row); });
}

void TestTrace::Check() {
    const std::lock_guard guard(m_lock);
    if (m_failure) std::rethrow_exception(m_failure);
}

}  // namespace devkit::validate
