#include "devkit/common/threads.h"

#include <algorithm>
#include <thread>
#include <vector>

namespace devkit::common {

void RunInThreads(unsigned wanted, std::size_t most, const std::function<void()>& body) {
    if (wanted == 0) wanted = std::max(1U, std::thread::hardware_concurrency());
    std::vector<std::thread> threads(std::min<std::size_t>(wanted, most));
    for (std::thread& thread : threads) thread = std::thread(body);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace devkit::common
