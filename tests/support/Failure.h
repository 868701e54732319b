#pragma once

#include <string>

#include "util/assertion_failure.h"

/// The condition that @p action fails, or "none".
template <class Action>
std::string failure(Action action) {
    try {
        action();
        return "none";
    } catch (const util::assertion_failure& e) {
        return std::string(e.what()).substr(std::string("assertion failure: ").size());
    }
}
