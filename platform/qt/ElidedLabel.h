#pragma once
// A one-line label that shortens with an ellipsis what does not fit. Its `text` property stays whole, and its text is
// never taken for markup.

#include <QLabel>

namespace platform::qt {

class ElidedLabel final : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    void setElideMode(Qt::TextElideMode mode);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    /// A text that is shortened shows whole when the pointer rests on it, unless the label has a tool tip of its own.
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString singleLine() const;
    QRect textArea() const;

    Qt::TextElideMode mode_ = Qt::ElideRight;
};

} // namespace platform::qt
