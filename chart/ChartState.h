#pragma once
// The chart of the mapping being edited, kept ready at all times.

#include <string>

namespace chart {

/// The complete HTML document as of the last refresh of the panel.
inline std::string bHTML;

} // namespace chart
