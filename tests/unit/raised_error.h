// The error that the code under test raised.
#pragma once

#include <string>

#include "program/errors.h"

namespace korvane::test {

// The message of the pending error, which is no longer pending afterwards; empty without one.
inline std::string take_error() {
    const std::string message = errors.pending ? errors.message : "";
    errors.pending = false;
    return message;
}

}  // namespace korvane::test
