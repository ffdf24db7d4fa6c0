#include "app/interface/panel/PanelColours.h"

#include <QPalette>

namespace interface {

namespace {

PanelColours graphite()
{
    PanelColours c;
    c.faceTop = 0x43484f;
    c.faceMiddle = 0x34383e;
    c.faceBottom = 0x26292e;
    c.faceBrush = QColor(255, 255, 255, 6);
    c.edgeLight = 0x6d747d;
    c.edgeDark = 0x0d0e10;
    c.cheekLight = 0x7a4d30;
    c.cheekDark = 0x3b2213;
    c.cheekGrain = QColor(20, 8, 2, 70);
    c.legend = 0xe4e8ec;
    c.legendOff = 0xb9bfc6;
    c.engraving = QColor(0, 0, 0, 150);
    c.screwLight = 0xa4abb3;
    c.screwDark = 0x3c4148;
    c.screenTop = 0x05090c;
    c.screenBottom = 0x0d151a;
    c.screenEdge = 0x08090a;
    c.screenRule = 0x24343d;
    c.screenText = 0xd9f4ff;
    c.screenTextOff = 0x8fa9b5;
    c.skirtLight = 0x3b3f45;
    c.skirtDark = 0x0c0d0f;
    c.skirtRidge = QColor(255, 255, 255, 46);
    c.capLight = 0x8d949d;
    c.capMiddle = 0x6b727b;
    c.capDark = 0x484d54;
    c.capRim = 0xa9b0b8;
    c.pointer = 0xffffff;
    c.pointerOff = 0x9aa1a9;
    c.groove = 0x121417;
    c.lit = 0xffa62b;
    c.shadow = QColor(0, 0, 0, 170);
    c.focus = 0x7cc4ff;
    c.target = 0xffd08a;
    c.differs = 0xd9b8ff;
    c.differsSign = 0x1d1130;
    c.where = 0x5fe3d0;
    c.whereOnPot = 0x5fe3d0;
    c.tile = 0x2b2f34;
    c.tileHover = 0x454b53;
    c.tileShown = 0x3d434b;
    c.tileFrame = 0x4a5058;
    c.tileText = 0xe4e8ec;
    c.tileEdge = 0x9aa1a9;
    c.cell = c.lit;
    c.cellEdge = c.lit;
    return c;
}

PanelColours aluminium()
{
    PanelColours c = graphite();
    c.faceTop = 0xf4f5f7;
    c.faceMiddle = 0xdfe2e6;
    c.faceBottom = 0xc6cad0;
    c.faceBrush = QColor(60, 66, 74, 6);
    c.edgeLight = 0xffffff;
    c.edgeDark = 0x8a9098;
    c.cheekLight = 0xa8714a;
    c.cheekDark = 0x6b4126;
    c.cheekGrain = QColor(50, 22, 6, 60);
    c.legend = 0x25292e;
    c.legendOff = 0x4a5057;
    c.engraving = QColor(255, 255, 255, 220);
    c.screwLight = 0xf7f8f9;
    c.screwDark = 0x8f959d;
    c.screenEdge = 0x3b4046;
    c.skirtLight = 0x4b5057;
    c.skirtDark = 0x17191c;
    c.capLight = 0x8d949d;
    c.capMiddle = 0x666d75;
    c.capDark = 0x454a51;
    c.groove = 0x41464d;
    c.shadow = QColor(30, 34, 40, 120);
    c.focus = 0x0a52bd;
    c.target = 0x8a4600;
    c.differs = 0x5c2c8c;
    c.differsSign = 0xffffff;
    c.where = 0x00695e;
    c.tile = 0xf4f5f7;
    c.tileHover = 0xffffff;
    c.tileShown = 0xdde1e6;
    c.tileFrame = 0xa9afb7;
    c.tileText = 0x25292e;
    c.tileEdge = 0x676d76;
    c.cell = 0xc46a00;
    c.cellEdge = 0x8a4600;
    return c;
}

} // namespace

const PanelColours& panelColours(const QPalette& palette)
{
    static const PanelColours dark = graphite();
    static const PanelColours light = aluminium();
    return palette.color(QPalette::Active, QPalette::Window).lightness() < 128 ? dark : light;
}

QColor faded(QColor colour, int alpha)
{
    colour.setAlpha(alpha);
    return colour;
}

} // namespace interface
