#pragma once
// Compares how a widget looks with a picture kept in tests/data/pictures. Style, font, colours and size are fixed, so
// that only the program decides; edges may lie a pixel off, since font libraries draw letters in their own ways.

#include <gtest/gtest.h>

#include <QFont>
#include <QImage>
#include <QPalette>

#include <string>

class QWidget;

namespace test {

QPalette lightPalette();
QPalette darkPalette();

/// The program's own style, DejaVu Sans at 13 pixels, unless told otherwise, and these colours for the whole
/// application, as long as the object lives.
class FixedLook {
public:
    explicit FixedLook(const QPalette& palette, int fontPixels = 13);
    FixedLook(const FixedLook&) = delete;
    FixedLook& operator=(const FixedLook&) = delete;
    ~FixedLook();

private:
    QString style_;
    QFont font_;
    QPalette palette_;
};

/// The widget with all on it, a pixel for a unit unless told otherwise.
QImage pictureOf(QWidget& widget, double pixelRatio = 1);

struct PictureDifference {
    /// Share of pixels that the other picture has nowhere near, in the whole; 1 when the sizes differ.
    double share = 0;
    /// The same in the square of 32 pixels in which it is largest, so that size does not hide what is small.
    double densest = 0;
    /// Grey where both agree, red where not.
    QImage picture;
};
PictureDifference comparePictures(const QImage& actual, const QImage& expected);
/// More than letters drawn another way, less than a pot that is three pixels off.
inline constexpr double kToleratedDensity = 0.045;

QImage keptPicture(const std::string& name);
/// Whether it looks like the kept picture of that name. If not, both and their difference are written below the build
/// folder and named in the answer. With KV_UPDATE_PICTURES=1 in the environment the picture is kept from now on.
testing::AssertionResult looksLike(const QImage& actual, const std::string& name);

} // namespace test
