// The product names that the system information block uses for Windows versions.
#pragma once

#include <string>

namespace diag {

/// "Microsoft Windows" and the product by version; `nt` tells the NT platform from the older line.
std::string WindowsName(bool nt, int major, int minor);

} // namespace diag
