#pragma once
// Help with misspelt names.

#include <string>
#include <vector>

namespace host {

/// Number of single letters to insert, delete or replace to get from `a` to `b`, upper and lower case being the same.
int EditDistance(const std::string& a, const std::string& b);

/// The names nearest to `name` by edit distance (of equal ones the earlier first), at most `most`, as "'a', 'b', 'c'".
std::string NearestNames(const std::string& name, const std::vector<std::string>& names, int most = 3);

} // namespace host
