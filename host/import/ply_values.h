#pragma once
// The values of .ply files, one row at a time.

#include <string>
#include <string_view>
#include <vector>

#include "import/ply_header.h"

namespace host {

/// One row of an element.
struct PlyRow {
    std::vector<double> values;             ///< by property; 0 for lists
    std::vector<std::vector<double>> lists; ///< by property; empty for single values
};

/// Reads the rows of the elements in their order.
class PlyValues {
public:
    PlyValues(const std::string& file, std::string_view content, const PlyHeader& header);
    /// Throws Error when the rows that the element claims cannot fit into the rest of the file.
    void BeginElement(const PlyElement& element);
    /// The next row. Throws Error when the file ends inside it or holds no number where one is expected.
    void Next(PlyRow& row);
    /// Throws Error about the current row.
    [[noreturn]] void FailRow(const std::string& text) const;

private:
    size_t SmallestRow(const PlyElement& element) const;
    double Value(PlyType type);
    double TextValue();
    std::string RowName() const;
    [[noreturn]] void FailEnd() const;

    const std::string& file_;
    std::string_view rest_;
    const PlyHeader& header_;
    const PlyElement* element_ = nullptr;
    size_t row_ = 0;
    int line_; ///< of an ascii file
};

} // namespace host
