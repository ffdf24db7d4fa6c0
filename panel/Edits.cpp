#include "panel/Edits.h"

#include "mapping/ParameterOrder.h"

namespace panel {

void clearSlots(Mapping& edited, std::span<const std::int32_t> positions)
{
    for (const std::int32_t position : positions) {
        if (position >= 0 && position < edited.totalPages * mapping::kPotsPerPage)
            setContent(edited.entries.at(static_cast<std::size_t>(position)),
                       {mapping::kEmptyNumber, mapping::kEmptyName});
    }
}

} // namespace panel
