#pragma once
// A text on one of the panel's displays, in one line or two, shortened with an ellipsis at the end where it does not
// fit. The `text` property stays whole, and no text is taken for markup.

#include <QLabel>

namespace interface {

class DisplayLabel final : public QLabel {
    Q_OBJECT

public:
    explicit DisplayLabel(const char* name, int mostLines, QWidget* parent = nullptr);

    /// What is drawn, line by line; each fits the width.
    QStringList shownLines() const;
    bool isShortened() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    /// A shortened text shows whole when the pointer rests on it, unless the label has a tool tip of its own.
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString singleLine() const;

    int mostLines_;
};

} // namespace interface
