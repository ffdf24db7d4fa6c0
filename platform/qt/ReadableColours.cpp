#include "platform/qt/ReadableColours.h"

#include <algorithm>
#include <cmath>

namespace platform::qt {

namespace {

/// A bit more than what is asked, for what rounding takes.
constexpr double kAimedAt = kReadableContrast + 0.1;

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour)
{
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

/// The colour moved away from a text just so far that the text can be read on it.
QColor readableBehind(const QColor& background, const QColor& text)
{
    const QColor end = luminance(text) > 0.18 ? Qt::black : Qt::white;
    QColor colour = background;
    for (double share = 0; contrast(colour, text) < kAimedAt && share < 1; share += 0.02)
        colour = mixed(background, end, share);
    return colour;
}

/// The text's colour shining through as much as it may.
QColor readableHint(const QColor& hint, const QColor& text, const QColor& background)
{
    if (contrast(mixed(background, hint, hint.alphaF()), background) >= kReadableContrast)
        return hint;
    QColor colour = text;
    for (int alpha = std::min(hint.alpha(), 254); alpha < 255; ++alpha) {
        colour.setAlpha(alpha);
        if (contrast(mixed(background, text, colour.alphaF()), background) >= kAimedAt)
            return colour;
    }
    return text;
}

} // namespace

QColor mixed(const QColor& one, const QColor& other, double share)
{
    const auto mix = [share](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * share)); };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()), mix(one.blue(), other.blue())};
}

double contrast(const QColor& one, const QColor& other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QPalette withReadableTexts(QPalette palette)
{
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        const auto colour = [&](QPalette::ColorRole role) { return palette.color(group, role); };
        const auto improve = [&](QPalette::ColorRole role, const QColor& better) {
            if (better != colour(role))
                palette.setColor(group, role, better);
        };
        improve(QPalette::Highlight, readableBehind(colour(QPalette::Highlight), colour(QPalette::HighlightedText)));
        improve(QPalette::PlaceholderText,
                readableHint(colour(QPalette::PlaceholderText), colour(QPalette::Text), colour(QPalette::Base)));
    }
    return palette;
}

} // namespace platform::qt
