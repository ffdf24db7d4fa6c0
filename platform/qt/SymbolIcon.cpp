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

QString fileOf(const QString& name)
{
    return kFolder + name + kSuffix;
}

/// Read once, when it is first painted: most symbols stand in menus that nobody has opened yet.
class Drawing {
public:
    explicit Drawing(QString file) : file_(std::move(file)) {}

    /// As large as fits, in the middle.
    QImage picture(const QSize& pixels) const
    {
        QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
        if (image.isNull())
            return image;
        image.fill(Qt::transparent);
        if (!renderer_) {
            renderer_ = std::make_shared<QSvgRenderer>(file_);
            renderer_->setAspectRatioMode(Qt::KeepAspectRatio);
        }
        QPainter painter(&image);
        renderer_->render(&painter);
        return image;
    }

private:
    QString file_;
    mutable std::shared_ptr<QSvgRenderer> renderer_;
};

/// Drawn and not read from picture files, for which Qt would load its readers of every other format, too.
class ApplicationEngine final : public QIconEngine {
public:
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override
    {
        const qreal scale = painter->device()->devicePixelRatioF();
        painter->drawImage(QRectF(rect), drawing_.picture((QSizeF(rect.size()) * scale).toSize()));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode, QIcon::State) override
    {
        return QPixmap::fromImage(drawing_.picture(size));
    }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override { return {{16, 16}, {32, 32}, {48, 48}}; }
    QIconEngine* clone() const override { return new ApplicationEngine(*this); }

private:
    Drawing drawing_{QStringLiteral(":/icon/kvOrvantaLogic_Tool-small.svg")};
};

/// Keeps no picture: one that is kept would have the colour of the palette before.
class SymbolEngine final : public QIconEngine {
public:
    explicit SymbolEngine(QString name) : name_(std::move(name)), drawing_(fileOf(name_)) {}

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
        return new SymbolEngine(*this);
    }

private:
    /// Coloured after it is drawn, so that strokes that cross do not show through each other where the palette's
    /// colour is translucent, as it often is for what is disabled.
    QImage picture(const QSize& pixels, QIcon::Mode mode) const
    {
        QImage image = drawing_.picture(pixels);
        if (image.isNull())
            return image;
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), colourFor(mode));
        return image;
    }

    QString name_;
    Drawing drawing_;
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
    return QFile::exists(fileOf(name)) ? QIcon(new SymbolEngine(name)) : QIcon();
}

QIcon applicationIcon()
{
    linkResources();
    return QIcon(new ApplicationEngine);
}

} // namespace platform::qt
