#pragma once
// Frame lists and the names of their files.

#include <string>
#include <vector>

namespace host {

/// Most frames of a list.
inline constexpr int kMostFrames = 1'000'000;

/// Frames of a list: items "A", "A-B" or "A-BxS", separated by commas. A, B and the step S may be negative ("-10--1",
/// "10-1x-1"); S is 1 when left out. Frames stand in the order of the list, repeated ones once. Throws Error.
std::vector<int> ParseFrameList(const std::string& list);

/// True when FrameFileName puts the frame into the name.
bool HasFramePlaceholder(const std::string& pattern);
/// The pattern with the frame in place of every "%d" and "%0Nd" and of every run of "#", whose length is the number of
/// digits (a single "#" stands for four). The sign of a negative frame counts as a digit.
std::string FrameFileName(const std::string& pattern, int frame);

} // namespace host
