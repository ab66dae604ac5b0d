#pragma once
// Errors that end in one line for the user.

#include <stdexcept>
#include <string>

namespace host {

/// Bad input or failed work. what() is the line without the program's name: "FILE:LINE: what, and what was expected".
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace host
