#pragma once
// The mark on a pot or a page that differs from what the mapping is compared with: a disc with a sign, so that it can
// be told without its colour.

#include "app/interface/panel/PanelColours.h"

#include <QPointF>

class QPainter;

namespace interface {

void drawDifferenceBadge(QPainter& painter, const QPointF& centre, double radius, const PanelColours& colours);

} // namespace interface
