#include "tests/support/Pictures.h"

#include "platform/qt/ReadableStyle.h"

#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QStyle>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace test {

namespace {

/// Of each colour, out of 255.
constexpr int kToleratedStep = 36;
constexpr int kSquare = 32;

bool isNear(QRgb a, QRgb b)
{
    return std::abs(qRed(a) - qRed(b)) <= kToleratedStep && std::abs(qGreen(a) - qGreen(b)) <= kToleratedStep &&
           std::abs(qBlue(a) - qBlue(b)) <= kToleratedStep;
}

/// Whether the colour is found at the place or right beside it.
bool isAround(const QImage& picture, QPoint place, QRgb colour)
{
    for (int y = std::max(0, place.y() - 1); y <= std::min(picture.height() - 1, place.y() + 1); ++y) {
        for (int x = std::max(0, place.x() - 1); x <= std::min(picture.width() - 1, place.x() + 1); ++x) {
            if (isNear(picture.pixel(x, y), colour))
                return true;
        }
    }
    return false;
}

QString folderOf(const char* root)
{
    return QString::fromUtf8(root);
}

QString fileIn(const QString& folder, const std::string& name)
{
    return folder + QLatin1Char('/') + QString::fromStdString(name) + QStringLiteral(".png");
}

QString keptFolder()
{
    return folderOf(KV_TESTS_DIR "/data/pictures");
}

/// Writes a picture and returns its path as text.
std::string put(const QImage& picture, const QString& folder, const std::string& name)
{
    QDir().mkpath(folder);
    const QString file = fileIn(folder, name);
    return picture.save(file) ? file.toStdString() : "(not written) " + file.toStdString();
}

QPalette paletteOf(QRgb window, QRgb base, QRgb text, QRgb highlight)
{
    QPalette palette{QColor(window)};
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Base, base);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, text);
    palette.setColor(QPalette::Highlight, highlight);
    return palette;
}

} // namespace

QPalette lightPalette()
{
    return paletteOf(0xefefef, 0xffffff, 0x202124, 0x2a6fc9);
}

QPalette darkPalette()
{
    return paletteOf(0x2b2d30, 0x1e1f22, 0xe8eaed, 0x3d7fd6);
}

FixedLook::FixedLook(const QPalette& palette, int fontPixels)
    : style_(QApplication::style()->objectName()), font_(QApplication::font()), palette_(QApplication::palette())
{
    QApplication::setStyle(new platform::qt::ReadableStyle);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(fontPixels);
    font.setHintingPreference(QFont::PreferNoHinting);
    QApplication::setFont(font);
    QApplication::setPalette(palette);
}

FixedLook::~FixedLook()
{
    QApplication::setStyle(style_);
    QApplication::setFont(font_);
    QApplication::setPalette(palette_);
}

QImage pictureOf(QWidget& widget, double pixelRatio)
{
    QImage picture(widget.size() * pixelRatio, QImage::Format_RGB32);
    picture.setDevicePixelRatio(pixelRatio);
    picture.fill(widget.palette().color(QPalette::Window));
    QPainter painter(&picture);
    painter.setLayoutDirection(widget.layoutDirection()); // as on a screen
    widget.render(&painter);
    return picture;
}

PictureDifference comparePictures(const QImage& actual, const QImage& expected)
{
    if (actual.size() != expected.size() || actual.isNull())
        return {1, 1, {}};
    const QImage a = actual.convertToFormat(QImage::Format_RGB32);
    const QImage b = expected.convertToFormat(QImage::Format_RGB32);
    QImage picture(a.size(), QImage::Format_RGB32);
    std::map<std::pair<int, int>, int> squares;
    int different = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const bool agrees = isAround(b, {x, y}, a.pixel(x, y)) && isAround(a, {x, y}, b.pixel(x, y));
            if (!agrees) {
                ++different;
                ++squares[{x / kSquare, y / kSquare}];
            }
            const int grey = 128 + qGray(a.pixel(x, y)) / 2;
            picture.setPixel(x, y, agrees ? qRgb(grey, grey, grey) : qRgb(220, 0, 0));
        }
    }
    int densest = 0;
    for (const auto& [square, count] : squares)
        densest = std::max(densest, count);
    return {static_cast<double>(different) / (a.width() * a.height()),
            static_cast<double>(densest) / (kSquare * kSquare), picture};
}

QImage keptPicture(const std::string& name)
{
    return QImage(fileIn(keptFolder(), name)).convertToFormat(QImage::Format_RGB32);
}

testing::AssertionResult looksLike(const QImage& actual, const std::string& name)
{
    if (qEnvironmentVariable("KV_UPDATE_PICTURES") == QLatin1String("1")) {
        put(actual, keptFolder(), name);
        return testing::AssertionSuccess();
    }
    const QImage expected = keptPicture(name);
    const PictureDifference difference = comparePictures(actual, expected);
    if (difference.densest <= kToleratedDensity)
        return testing::AssertionSuccess();
    const QString folder = folderOf(KV_PICTURES_DIR);
    auto failure = testing::AssertionFailure();
    failure << name << " differs in " << difference.share * 100
            << " % of its pixels\n  actual:     " << put(actual, folder, name + "-actual");
    if (!difference.picture.isNull())
        failure << "\n  difference: " << put(difference.picture, folder, name + "-difference");
    return failure << "\n  expected:   " << fileIn(keptFolder(), name).toStdString();
}

} // namespace test
