#pragma once
// A label that shortens with an ellipsis what does not fit into its line, or its lines. Its `text` property stays
// whole, and its text is never taken for markup.

#include <QLabel>
#include <QStringList>

namespace platform::qt {

class ElidedLabel final : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(int mostLines = 1, QWidget* parent = nullptr);

    /// Where a text is shortened that has one line for itself; in two it is at the end.
    void setElideMode(Qt::TextElideMode mode);

    /// What is drawn, line by line; each fits the width.
    QStringList shownLines() const;
    bool isShortened() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    /// A text that is shortened shows whole when the pointer rests on it, unless the label has a tool tip of its own.
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString singleLine() const;

    int mostLines_;
    Qt::TextElideMode mode_ = Qt::ElideRight;
};

} // namespace platform::qt
