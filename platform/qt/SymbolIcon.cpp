#include "platform/qt/SymbolIcon.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

#include <algorithm>
#include <iterator>
#include <utility>

namespace platform::qt {

namespace {

QString fileOf(const QString& name)
{
    return QStringLiteral(":/symbols/%1.svg").arg(name);
}

QColor colourFor(QIcon::Mode mode)
{
    const QPalette palette = QGuiApplication::palette();
    switch (mode) {
    case QIcon::Disabled: return palette.color(QPalette::Disabled, QPalette::ButtonText);
    case QIcon::Selected: return palette.color(QPalette::Active, QPalette::HighlightedText);
    case QIcon::Normal:
    case QIcon::Active: break;
    }
    return palette.color(QPalette::Active, QPalette::ButtonText);
}

/// Whether the symbol points to where reading goes, or comes from.
bool isDirected(const QString& name)
{
    constexpr const char* kDirected[] = {"page-first", "page-previous", "page-next",     "page-last", "move-first",
                                         "move-last",  "move-next",     "move-previous", "undo",      "redo"};
    return std::any_of(std::begin(kDirected), std::end(kDirected),
                       [&name](const char* directed) { return name == QLatin1String(directed); });
}

/// Keeps no picture: one that is kept would have the colour of the palette before.
class SymbolEngine final : public QIconEngine {
public:
    explicit SymbolEngine(QString name) : name_(std::move(name)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal scale = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, pixmap((QSizeF(rect.size()) * scale).toSize(), mode, state));
    }

    /// Coloured after it is drawn, so that strokes that cross do not show through each other where the palette's
    /// colour is translucent, as it often is for what is disabled.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override
    {
        QPixmap picture(size);
        if (picture.isNull())
            return picture;
        picture.fill(Qt::transparent);
        QSvgRenderer drawing(fileOf(name_));
        drawing.setAspectRatioMode(Qt::KeepAspectRatio);
        QPainter painter(&picture);
        if (QGuiApplication::isRightToLeft() && isDirected(name_)) {
            painter.translate(size.width(), 0);
            painter.scale(-1, 1);
        }
        drawing.render(&painter);
        painter.resetTransform();
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(picture.rect(), colourFor(mode));
        return picture;
    }

    QString iconName() override { return name_; }
    QIconEngine* clone() const override { return new SymbolEngine(*this); }

private:
    QString name_;
};

} // namespace

QIcon symbolIcon(const QString& name)
{
    return QFile::exists(fileOf(name)) ? QIcon(new SymbolEngine(name)) : QIcon();
}

} // namespace platform::qt
