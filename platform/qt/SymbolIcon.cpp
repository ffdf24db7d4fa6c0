#include "platform/qt/SymbolIcon.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

#include <memory>
#include <utility>

/// A static library's resources are left out of the program unless something refers to them. In no namespace, since
/// what it refers to is in none.
static void linkResources()
{
    Q_INIT_RESOURCE(icons);
}

namespace platform::qt {

namespace {

constexpr QLatin1String kFolder(":/symbols/");
constexpr QLatin1String kSuffix(".svg");

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

/// Keeps no picture: one that is kept would have the colour of the palette before.
class SymbolEngine final : public QIconEngine {
public:
    SymbolEngine(QString name, std::shared_ptr<QSvgRenderer> drawing)
        : name_(std::move(name)), drawing_(std::move(drawing))
    {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        const qreal scale = painter->device()->devicePixelRatioF();
        painter->drawImage(QRectF(rect), picture((QSizeF(rect.size()) * scale).toSize(), mode));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override
    {
        return QPixmap::fromImage(picture(size, mode));
    }

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) override
    {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
        // Until 6.7 the size came in the device's pixels.
        QPixmap result = QPixmap::fromImage(picture((QSizeF(size) * scale).toSize(), mode));
#else
        QPixmap result = QPixmap::fromImage(picture(size, mode));
#endif
        result.setDevicePixelRatio(scale);
        return result;
    }

    QString iconName() override
    {
        return name_;
    }
    QString key() const override
    {
        return QStringLiteral("kvSymbol");
    }
    QIconEngine* clone() const override
    {
        return new SymbolEngine(name_, drawing_);
    }

private:
    /// Coloured after it is drawn, so that strokes that cross do not show through each other where the palette's
    /// colour is translucent, as it often is for what is disabled.
    QImage picture(const QSize& pixels, QIcon::Mode mode) const
    {
        QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
        if (image.isNull())
            return image;
        image.fill(Qt::transparent);
        QPainter painter(&image);
        drawing_->render(&painter);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), colourFor(mode));
        return image;
    }

    QString name_;
    std::shared_ptr<QSvgRenderer> drawing_;
};

} // namespace

QStringList symbolNames()
{
    linkResources();
    QStringList names = QDir(kFolder).entryList({u'*' + kSuffix}, QDir::Files, QDir::Name);
    for (QString& name : names)
        name.chop(kSuffix.size());
    return names;
}

QIcon symbolIcon(const QString& name)
{
    linkResources();
    auto drawing = std::make_shared<QSvgRenderer>();
    // Asked first, since the renderer would complain about a file that is not there.
    const QString file = kFolder + name + kSuffix;
    if (!QFile::exists(file) || !drawing->load(file))
        return {};
    drawing->setAspectRatioMode(Qt::KeepAspectRatio);
    return QIcon(new SymbolEngine(name, std::move(drawing)));
}

QIcon applicationIcon()
{
    linkResources();
    QIcon icon;
    // Read at every start. What shows it larger has the picture that was installed for the desktop.
    for (const int pixels : {16, 32, 48, 128})
        icon.addFile(QStringLiteral(":/icon/%1.png").arg(pixels));
    return icon;
}

} // namespace platform::qt
