#pragma once
// Draws one pot of the front panel: cap with knurl and pointer on its skirt, the ring round it and the number. One with
// a parameter has a bright cap and its ring is lit; the pointer stands still.

#include "app/interface/panel/PanelColours.h"

#include <QFont>
#include <QRect>

class QPainter;

namespace interface {

struct PotLook {
    int number = 1;
    bool isMapped = false;
    bool isEnabled = true;
    bool isHovered = false;
    bool isPressed = false;
    bool hasFocus = false;
    bool isDropTarget = false;
    bool isChosen = false;
    bool differs = false;       ///< from what the mapping is compared with
    bool holdsSelected = false; ///< the parameter that is selected in the list
};

/// Fills the square; the cap lies in its middle.
void drawPot(QPainter& painter, const QRectF& square, const PotLook& look, const PanelColours& colours,
             const QFont& font);

} // namespace interface
