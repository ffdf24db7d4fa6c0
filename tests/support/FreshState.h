#pragma once
// The process-wide state as it is when the program starts.

#include "chart/ChartState.h"
#include "community/CommunityState.h"
#include "mapping/EditingState.h"

namespace test {

inline void startAnew()
{
    mapping::plistBuild.clear();
    mapping::totalPages = 1;
    mapping::curPage = 1;
    mapping::plugin_Mode = 0;
    chart::bHTML.clear();
    community::loggedInAs = community::kNobody;
}

} // namespace test
