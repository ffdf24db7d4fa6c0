#include "platform/qt/LongText.h"

#include <QMimeData>
#include <QTextCursor>
#include <QTextOption>

#include <algorithm>

namespace platform::qt {

namespace {

constexpr qsizetype kLongest = 4000;
/// A block ends with the first line that ends behind so many characters,
constexpr qsizetype kBlock = 1000;
/// a line at the first blank behind so many, or between two letters when there is none for so many more.
constexpr qsizetype kLine = 1000;
constexpr qsizetype kSearched = 200;
/// A line of Latin letters is laid out so quickly that up to so many stay together.
constexpr qsizetype kWhole = 128 * 1024;
/// A word of more would take seconds if places to break it were looked for.
constexpr qsizetype kEndless = 3000;
constexpr qsizetype kSlow = 1000;
/// Nothing is split that belongs together, as a letter and its accents, unless it never ends.
constexpr qsizetype kMost = 2000;

bool breaksLine(QChar c)
{
    // The last two are what a document marks its tables with, and takes for breaks in a text.
    return c == u'\n' || c == u'\r' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator || c == u'\ufdd0' ||
           c == u'\ufdd1';
}

/// Whether the line that begins here stays whole.
bool staysWhole(QStringView text)
{
    const auto end = std::find_if(text.begin(), text.end(), breaksLine);
    return end - text.begin() <= kWhole &&
           std::all_of(text.begin(), end, [](QChar c) { return c >= u' ' && c <= u'\u00ff'; });
}

bool hasEndlessWord(QStringView text)
{
    qsizetype length = 0;
    return std::any_of(text.begin(), text.end(), [&](QChar c) {
        length = c.isSpace() ? 0 : length + 1;
        return length > kEndless;
    });
}

bool belongsToTheOneBefore(QChar c)
{
    return c.isLowSurrogate() || c.isMark() || c == u'\u200d';
}

} // namespace

bool isLong(const QString& text)
{
    return text.size() - std::count_if(text.begin(), text.end(), [](QChar c) { return c.isLowSurrogate(); }) > kLongest;
}

bool hasSlowWord(const QString& text)
{
    qsizetype length = 0;
    return std::any_of(text.begin(), text.end(), [&](QChar c) {
        if (c.isSpace())
            length = 0;
        else if (c > u'\u00ff')
            ++length;
        return length > kSlow;
    });
}

namespace {

enum class LongLines { stay, gainBreaks };

QString inBlocks(const QString& text, LongLines longLines)
{
    QString result;
    result.reserve(text.size() + text.size() / kLine + 1);
    qsizetype blockStart = 0;
    qsizetype lineStart = 0;
    bool isWhole = staysWhole(text);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            continue; // the two are one break
        if (breaksLine(c)) {
            const bool isFull = result.size() - blockStart >= kBlock;
            result += isFull ? QChar::ParagraphSeparator : QChar::LineSeparator;
            lineStart = result.size();
            blockStart = isFull ? lineStart : blockStart;
            isWhole = staysWhole(QStringView(text).sliced(i + 1));
            continue;
        }
        const qsizetype length = result.size() - lineStart;
        const bool isPlace = longLines == LongLines::gainBreaks && !isWhole && length >= kLine &&
                             (text[i - 1].isSpace() || length >= kLine + kSearched);
        if (isPlace && !c.isLowSurrogate() && (length >= kMost || !belongsToTheOneBefore(c))) {
            result += QChar::ParagraphSeparator;
            blockStart = lineStart = result.size();
        }
        result += c;
    }
    return result;
}

} // namespace

QString inBlocks(const QString& text)
{
    return inBlocks(text, LongLines::gainBreaks);
}

QString partInBlocks(const QString& text, qsizetype from, qsizetype to)
{
    const QString blocks = inBlocks(text);
    QString part;
    qsizetype place = 0;
    for (qsizetype i = 0; i < text.size() && place < to; ++i) {
        const QChar c = text[i];
        const bool isHalfABreak = c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n';
        if (blocks[place] == QChar::ParagraphSeparator && !breaksLine(c))
            ++place; // a break that was gained
        if (place >= from && place < to)
            part += c;
        if (!isHalfABreak)
            ++place;
    }
    return part;
}

void LongTextField::showText(const QString& text)
{
    const bool isInBlocks = isReadOnly() && isLong(text);
    const QString shown = isInBlocks ? inBlocks(text) : text;
    textInBlocks_ = isInBlocks ? text : QString();
    clear(); // or what it holds is laid out once more, in the other way
    setWordWrapMode(hasEndlessWord(shown) ? QTextOption::WrapAnywhere : QTextOption::WrapAtWordBoundaryOrAnywhere);
    setPlainText(shown);
}

QMimeData* LongTextField::createMimeDataFromSelection() const
{
    if (textInBlocks_.isEmpty())
        return QPlainTextEdit::createMimeDataFromSelection();
    const QTextCursor selected = textCursor();
    auto* copied = new QMimeData;
    copied->setText(partInBlocks(textInBlocks_, selected.selectionStart(), selected.selectionEnd()));
    return copied;
}

void LongTextField::insertFromMimeData(const QMimeData* source)
{
    const QString text = source->text();
    if (isReadOnly() || !isLong(text)) {
        QPlainTextEdit::insertFromMimeData(source);
        return;
    }
    if (hasEndlessWord(text))
        setWordWrapMode(QTextOption::WrapAnywhere);
    insertPlainText(inBlocks(text, LongLines::stay));
    ensureCursorVisible();
}

} // namespace platform::qt
