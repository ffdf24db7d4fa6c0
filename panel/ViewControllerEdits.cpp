#include "app/ViewControllerOperation.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/Edits.h"

#include <array>
#include <numeric>
#include <utility>

void ViewController::editMapping(const std::string& name, const std::function<void(panel::Mapping&)>& edit)
{
    if (!isMappingLoaded())
        return;
    const Operation operation(*this, name);
    panel::Mapping edited{std::move(mapping::plistBuild), mapping::totalPages, mapping::curPage};
    edit(edited);
    mapping::plistBuild = std::move(edited.entries);
    mapping::totalPages = edited.totalPages;
    populateKnobLabels(edited.shownPage);
}

void ViewController::clearPage(Sender)
{
    editMapping("Clear Page", [](panel::Mapping& edited) {
        std::array<std::int32_t, mapping::kPotsPerPage> positions;
        std::iota(positions.begin(), positions.end(), panel::firstSlotOf(edited.shownPage));
        panel::clearSlots(edited, positions);
    });
}
