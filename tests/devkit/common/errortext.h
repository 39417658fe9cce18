#pragma once

#include <string>
#include <utility>

#include "devkit/common/error.h"

namespace devkit::common {

// What the action's Error says; empty when there is none.
template <typename Action>
[[nodiscard]] std::string ErrorOf(Action&& action) {
    try {
        std::forward<Action>(action)();
    } catch (const Error& error) {
        return error.what();
    }
    return {};
}

}  // namespace devkit::common
