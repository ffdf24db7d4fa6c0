#pragma once
// Texts of any length and kind in a field, shown at once. Qt lays out a block as a whole, which takes
// minutes for a word of a megabyte, and keeps a record of each, which takes seconds for a million lines. So a long text
// is shown in blocks of about a thousand characters: lines share a block, and a line that has no end is broken.

#include <QPlainTextEdit>
#include <QString>

class QMimeData;

namespace platform::qt {

/// Has more than 4,000 characters.
bool isLong(const QString& text);

/// Has a word in which a label would look for places to break it for seconds: of more than 1,000 letters outside Latin.
bool hasSlowWord(const QString& text);

/// The text with its lines in few blocks: what breaks a line is a line separator within a block, and a paragraph
/// separator between two. A block is no longer than some 3,000 characters, or 130,000 where it ends with a long line
/// of Latin letters; other lines that are longer gain breaks.
QString inBlocks(const QString& text);

/// What of the text stands between two places in `inBlocks(text)`, without the breaks that it gained.
QString partInBlocks(const QString& text, qsizetype from, qsizetype to);

/// A field for a text of any length. Into one to write in a long text can be pasted: it is wrapped in the way that
/// takes least before it comes in, and its lines share blocks; what the field holds is what was pasted.
class LongTextField final : public QPlainTextEdit {
    Q_OBJECT

public:
    /// Shows a text; one that is long, and that nobody can edit here, in blocks. What is copied is the text's own.
    void showText(const QString& text);

protected:
    QMimeData* createMimeDataFromSelection() const override;
    void insertFromMimeData(const QMimeData* source) override;

private:
    QString textInBlocks_; ///< empty while no text is shown so
};

} // namespace platform::qt
