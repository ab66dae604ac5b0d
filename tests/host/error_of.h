#pragma once
// The messages of errors.

#include <string>

#include "core/error.h"

namespace test {

/// The message of the error that `f` throws; empty when it throws none.
template <class F>
std::string ErrorOf(F&& f) {
    try {
        f();
    } catch (const host::Error& e) {
        return e.what();
    }
    return {};
}

} // namespace test
