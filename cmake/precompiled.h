// What nearly every source of the product and the kit reads, compiled once (PAGEVALIDATE_PRECOMPILE). A
// source still includes what it uses: ./test.sh --clang and --tidy compile without this file.
#include "platform/windows.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
