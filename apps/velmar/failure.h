#pragma once
// How a run ends.

#include <stdexcept>
#include <string>

namespace velmar {

/// Exit statuses.
enum Status { kDone = 0, kUsage = 1, kBadInput = 2, kFailedWork = 3, kInterrupted = 130 };

/// Ends the run with a status and one line.
class Failure : public std::runtime_error {
public:
    Failure(Status status, const std::string& line) : std::runtime_error(line), status(status) {}
    const Status status;
};

} // namespace velmar
