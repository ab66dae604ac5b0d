#include "core/nearest_name.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>

namespace host {

namespace {
int Lower(char c) {
    return std::tolower(static_cast<unsigned char>(c));
}
} // namespace

int EditDistance(const std::string& a, const std::string& b) {
    // One line of the table of distances between beginnings of a and b.
    std::vector<int> line(b.size() + 1);
    std::iota(line.begin(), line.end(), 0);
    for (size_t i = 0; i < a.size(); ++i) {
        int diagonal = line[0];
        line[0] = int(i) + 1;
        for (size_t j = 0; j < b.size(); ++j) {
            const int replaced = diagonal + (Lower(a[i]) != Lower(b[j]));
            diagonal = line[j + 1];
            line[j + 1] = std::min({replaced, line[j] + 1, diagonal + 1});
        }
    }
    return line.back();
}

std::string NearestNames(const std::string& name, const std::vector<std::string>& names, int most) {
    std::vector<std::pair<int, size_t>> order;
    for (size_t i = 0; i < names.size(); ++i) order.emplace_back(name.empty() ? 0 : EditDistance(name, names[i]), i);
    std::sort(order.begin(), order.end());
    std::string list;
    for (size_t i = 0; i < order.size() && int(i) < most; ++i) {
        if (i > 0) list += ", ";
        list.append("'").append(names[order[i].second]).append("'");
    }
    return list;
}

} // namespace host
