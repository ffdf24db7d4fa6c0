#pragma once
// Texts of a million characters that are hard to lay out, each in its own way.

#include <QString>

#include <vector>

namespace test {

inline constexpr qsizetype kMega = 1'000'000;

inline QString repeated(const QString& text, qsizetype size = kMega)
{
    return text.repeated(size / text.size());
}

struct LongText {
    const char* kind;
    QString text;
};

inline std::vector<LongText> longTexts()
{
    return {{"one word", repeated(QStringLiteral("x"))},
            {"blanks", repeated(QStringLiteral(" "))},
            {"one line of words", repeated(QStringLiteral("the quick, brown. fox-jumps/over "))},
            {"line breaks", repeated(QStringLiteral("\n"))},
            {"short lines", repeated(QStringLiteral("line\n"))},
            {"carriage returns", repeated(QStringLiteral("\r"))},
            {"both", repeated(QStringLiteral("\r\n"))},
            {"separators", repeated(QStringLiteral("\u2028\u2029\ufdd0\ufdd1"))},
            {"control characters", repeated(QStringLiteral("\x01\x02\x1b\x7f\f\v"))},
            {"null characters", QString(kMega, QChar(0))},
            {"markup", repeated(QStringLiteral("<b>x</b>&amp;<br>"))},
            {"right to left", repeated(QStringLiteral("שלוםمرحبا"))},
            {"both ways", repeated(QStringLiteral("a\u05d0\u202e"))},
            {"accents", repeated(QStringLiteral("e\u0301\u0302"))},
            {"nothing but accents", repeated(QStringLiteral("\u0301"))},
            {"emoji", repeated(QStringLiteral("😀👩\u200d👩\u200d👧"))}};
}

} // namespace test
