#pragma once
// Where everything on the front panel lies, for any size. The drawing and the widgets on it read the same places.

#include "mapping/ParameterOrder.h"

#include <QFont>
#include <QRect>

#include <array>

namespace interface {

struct PanelLayout {
    static constexpr int kPots = mapping::kPotsPerPage;

    double scale = 1; ///< of texts and small parts
    QRectF body;      ///< all of the hardware, cheeks included
    QRectF face;
    std::array<QPointF, 4> screws;
    QRectF name; ///< the maker's name and the legend beside it
    double nameScale = 1;
    QRectF display; ///< what shows title and pages
    QRect title, page, total;
    std::array<QRect, kPots> pots; ///< square
    QRectF strip;                  ///< the display under the pots
    std::array<QRect, kPots> fields;
};

PanelLayout layOutPanel(const QSize& size, const QFont& font);
/// The size at which pots, texts and distances are as they are meant to be.
QSize preferredPanelSize(const QFont& font);
/// The height that goes best with a width, for panels wider than preferred.
int panelHeightFor(int width, const QFont& font);
/// The smallest in which nothing is cut.
QSize smallestPanelSize(const QFont& font);

/// Engraved on the face, the legend in two lines.
inline constexpr char kMaker[] = "ORVANTA";
inline constexpr char kLegendAbove[] = "PARAMETER";
inline constexpr char kLegendBelow[] = "CONTROLLER";

} // namespace interface
