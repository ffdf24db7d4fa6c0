#include "panel/PotChoice.h"

#include "mapping/ParameterOrder.h"

#include <numeric>

namespace panel {

std::vector<std::int32_t> positionsOf(const PotChoice& choice, std::int32_t page)
{
    std::vector<std::int32_t> positions = choice.pots;
    if (choice.isPage) {
        positions.resize(mapping::kPotsPerPage);
        std::iota(positions.begin(), positions.end(), 0);
    }
    for (std::int32_t& position : positions)
        position += firstSlotOf(page);
    return positions;
}

} // namespace panel
