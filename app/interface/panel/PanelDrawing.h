#pragma once
// Draws the front panel's hardware, without the pots: metal, cheeks, screws, what is engraved and the two displays.

#include "app/interface/panel/PanelColours.h"
#include "app/interface/panel/PanelLayout.h"

class QPainter;

namespace interface {

void drawPanel(QPainter& painter, const PanelLayout& layout, const PanelColours& colours, const QFont& font);
/// Marks the field of a pot that something would be dropped on.
void drawDropField(QPainter& painter, const PanelLayout& layout, int pot, const PanelColours& colours);

} // namespace interface
