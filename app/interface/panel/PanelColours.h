#pragma once
// The colours of the drawn front panel: a graphite one for dark desktops and an aluminium one for light ones. Every
// text stands out against its ground by 4.5 : 1 at least, every mark that says something by 3 : 1.

#include <QColor>

class QPalette;

namespace interface {

struct PanelColours {
    QColor faceTop, faceMiddle, faceBottom; ///< the metal
    QColor faceBrush;                       ///< the marks that brushing has left in it
    QColor edgeLight, edgeDark;             ///< where the face ends, lit from above
    QColor cheekLight, cheekDark, cheekGrain;
    QColor legend, legendOff; ///< printed on the face; of what is disabled
    QColor engraving;         ///< the lower, lit edge of what is engraved
    QColor screwLight, screwDark;

    QColor screenTop, screenBottom, screenEdge, screenRule;
    QColor screenText, screenTextOff; ///< on the display; of what is disabled

    QColor skirtLight, skirtDark, skirtRidge;
    QColor capLight, capMiddle, capDark, capRim;
    QColor pointer, pointerOff;
    QColor groove, lit; ///< the ring round a pot: out, and on for a pot that has a parameter
    QColor shadow;

    QColor differs, differsSign; ///< badge of what differs from the other side of a comparison
    QColor focus;                ///< ring of what has the keyboard's focus, on the face
    QColor target;               ///< ring of what something would be dropped on
    QColor where, whereOnPot;    ///< ring of what holds the selected parameter: a page's tile, a pot

    // Pages of the overview.
    QColor tile, tileHover, tileShown, tileFrame, tileText;
    QColor tileEdge;       ///< round the cell of an empty pot
    QColor cell, cellEdge; ///< of a pot that has a parameter
};

/// Which of the two a desktop with this palette gets.
const PanelColours& panelColours(const QPalette& palette);

/// A colour made translucent; 255 is opaque.
QColor faded(QColor colour, int alpha);

} // namespace interface
