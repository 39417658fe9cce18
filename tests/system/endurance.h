#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <functional>
#include <string>

#include "devkit/pipeline/job.h"

namespace systemtest {

// Whether the long form of the tests is asked for.
[[nodiscard]] bool IsLong();

// A job with pages like those of the given one, one after the other, so many; `onPage` is called with the
// number of each, from 0, when it is asked for.
[[nodiscard]] devkit::pipeline::JobInput Repeated(const devkit::pipeline::JobInput& job, std::size_t pages,
                                                  std::function<void(std::size_t)> onPage = {});

// Keeps what the filter brings with it of the system: what that leaves when it is unloaded is not the
// filter's.
void KeepSystemLoaded(HMODULE filter);

// Threads that the system keeps come and go.
inline constexpr std::size_t kHandlesOfTheSystem = 2;

// What the process has of memory, handles and objects of the system. The kit keeps some thousand of its
// objects that are gone; here they are all of one kind.
struct Holdings {
    std::size_t heapBlocks = 0;  // in use
    std::size_t heapBytes = 0;
    std::size_t handles = 0;
    std::size_t gdiObjects = 0;  // Wine tells of none

    [[nodiscard]] static Holdings Now();
};

// The memory in use is as much as before within 1 %, and there are as
// many handles, but for one or two of the system's, and objects. Both are printed with what lies between them
// ("9000 pages"). What the system's SAX reader keeps of each of the so many documents that it has read in
// between does not count: with Wine a block.
void ExpectSteady(const std::string& between, const Holdings& before, const Holdings& after,
                  std::size_t documentsRead);

}  // namespace systemtest
