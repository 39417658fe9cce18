#pragma once

#include "platform/windows.h"

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace devkit::pipeline {

// One call that is to fail. `method` is "Interface::Method" or the method alone; empty matches every call.
// `argument` narrows it to calls with that argument (a property's name, a part's name); empty matches any.
// Of the calls that match, the nth (counted from 1) fails with `code`, and all later ones as well when
// `onwards`. A method without a result is counted but cannot fail.
struct Fault {
    std::string method;
    std::string argument;
    unsigned nth = 1;
    HRESULT code = E_FAIL;
    bool onwards = false;
};

// How often each method was called, as "Interface::Method".
using CallCounts = std::map<std::string, unsigned, std::less<>>;

// Counts the calls that a filter makes to the kit's objects, fails those that a test wants failed, and keeps
// the calls as text when asked to. Any thread may call.
class FilterCalls {
  public:
    explicit FilterCalls(std::vector<Fault> faults = {}, bool keepText = false);

    // Notes one call; a failure is what the call must return without doing anything.
    [[nodiscard]] HRESULT Enter(std::string_view method, std::string_view argument = {});
    // One query of an object for an interface, both told by their names. It does not count among the calls: a
    // fault strikes it only when it names "IUnknown::QueryInterface", and only then it is kept as text.
    [[nodiscard]] HRESULT EnterQuery(std::string_view object, std::string_view interfaceName);
    // Whether any fault names it.
    [[nodiscard]] bool HasPlannedQuery() const noexcept;
    // Notes one call of a method without a result.
    void Note(std::string_view method, std::string_view argument = {});

    // How often the method (as "Interface::Method") was called; all calls together for an empty name.
    [[nodiscard]] unsigned Count(std::string_view method) const;
    [[nodiscard]] CallCounts Counts() const;
    // The faults that have not struck, as the switch that plans them says it: "GetXpsPart@9=0x80004005
    // E_FAIL".
    [[nodiscard]] std::vector<std::string> UnstruckFaults() const;
    // The calls in order, "Interface::Method" or "Interface::Method ARGUMENT", when the text is kept.
    [[nodiscard]] std::vector<std::string> Text() const;

  private:
    struct Planned {
        Fault fault;
        unsigned seen = 0;

        // Counts a call of the method; the fault's code when it strikes.
        HRESULT Meet(std::string_view argument);
    };

    void Record(std::string_view method, std::string_view argument);
    HRESULT Strike(std::string_view method, std::string_view argument);

    mutable std::mutex m_lock;
    std::vector<Planned> m_faults;
    bool m_keepText;
    bool m_hasPlannedQuery = false;
    CallCounts m_counts;
    unsigned m_total = 0;
    std::vector<std::string> m_text;
};

}  // namespace devkit::pipeline
