#include "platform/qt/SymbolIcon.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QResource>

#include <algorithm>
#include <span>
#include <utility>

/// A static library's resources are left out of the program unless something refers to them. In no namespace, since
/// what it refers to is in none.
static void linkResources()
{
    Q_INIT_RESOURCE(icons);
}

namespace platform::qt {

namespace {

constexpr QLatin1String kSymbols(":/symbol/");

/// What the build has drawn of one drawing: square pictures, one after the other.
struct Pictures {
    QString file;
    QImage::Format format;
    std::span<const int> sizes; ///< in pixels, rising
};

constexpr int kSymbolSizes[] = {KV_SYMBOL_SIZES};
constexpr int kIconSizes[] = {KV_ICON_SIZES};

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

/// As large as fits, in the middle: as it was drawn where there is one of that size, or else the next larger one made
/// smaller.
QImage picture(const Pictures& pictures, const QSize& room)
{
    const int wanted = std::min(room.width(), room.height());
    const QResource file(pictures.file);
    const qint64 bytesPerPixel = pictures.format == QImage::Format_Alpha8 ? 1 : 4;
    const uchar* pixels = file.data();
    const int* side = pictures.sizes.data();
    for (const int* const largest = &pictures.sizes.back(); *side < wanted && side != largest; ++side)
        pixels += bytesPerPixel * *side * *side;
    if (wanted <= 0 || pixels + bytesPerPixel * *side * *side > file.data() + file.size())
        return {};
    const QImage drawn(pixels, *side, *side, bytesPerPixel * *side, pictures.format);
    QImage fitting = drawn.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (*side != wanted)
        fitting = fitting.scaled(wanted, wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QPoint corner((wanted - room.width()) / 2, (wanted - room.height()) / 2);
    return fitting.size() == room ? fitting : fitting.copy(QRect(corner, room));
}

/// Not read from picture files, for which Qt would load its readers of every other format, too.
class ApplicationEngine final : public QIconEngine {
public:
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override
    {
        const qreal scale = painter->device()->devicePixelRatioF();
        painter->drawImage(QRectF(rect), picture(pictures_, (QSizeF(rect.size()) * scale).toSize()));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State) override
    {
        return QPixmap::fromImage(picture(pictures_, size));
    }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override { return {{16, 16}, {32, 32}, {48, 48}}; }
    QIconEngine* clone() const override { return new ApplicationEngine(*this); }

private:
    Pictures pictures_{QStringLiteral(":/icon/application"), QImage::Format_ARGB32_Premultiplied, kIconSizes};
};

/// Keeps no picture: one that is kept would have the colour of the palette before.
class SymbolEngine final : public QIconEngine {
public:
    explicit SymbolEngine(QString name)
        : name_(std::move(name)), pictures_{kSymbols + name_, QImage::Format_Alpha8, kSymbolSizes}
    {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        const qreal scale = painter->device()->devicePixelRatioF();
        painter->drawImage(QRectF(rect), coloured((QSizeF(rect.size()) * scale).toSize(), mode));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override
    {
        return QPixmap::fromImage(coloured(size, mode));
    }

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
        // Until 6.7 the size came in the device's pixels.
        QPixmap result = pixmap((QSizeF(size) * scale).toSize(), mode, state);
#else
        QPixmap result = pixmap(size, mode, state);
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
        return new SymbolEngine(*this);
    }

private:
    QImage coloured(const QSize& pixels, QIcon::Mode mode) const
    {
        QImage image = picture(pictures_, pixels);
        if (image.isNull())
            return image;
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), colourFor(mode));
        return image;
    }

    QString name_;
    Pictures pictures_;
};

} // namespace

QStringList symbolNames()
{
    linkResources();
    return QDir(kSymbols).entryList(QDir::Files, QDir::Name);
}

QIcon symbolIcon(const QString& name)
{
    linkResources();
    return !name.contains(u'/') && QFileInfo(kSymbols + name).isFile() ? QIcon(new SymbolEngine(name)) : QIcon();
}

QIcon applicationIcon()
{
    linkResources();
    return QIcon(new ApplicationEngine);
}

} // namespace platform::qt
