#pragma once
// A small field below the page strip that takes the number of a page or the first letters of a name on it. Hidden until
// it is opened, and again when Return has found a page, on Escape, and when the focus goes elsewhere.

#include <QFrame>
#include <QPointer>

#include <functional>

class QLabel;
class QLineEdit;

namespace interface {

class GoToPage final : public QFrame {
    Q_OBJECT

public:
    /// Lies on `parent`, near `strip`, which is somewhere on it.
    GoToPage(QWidget* strip, QWidget* parent);

    /// Goes to the page that a text means; false when it means none.
    void setGoTo(std::function<bool(const QString& text)> goTo) { goTo_ = std::move(goTo); }
    void open();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void leave();
    void tell(const QString& message);
    void enter();
    void place();

    QWidget* strip_;
    QLineEdit* field_;
    QLabel* message_;
    std::function<bool(const QString&)> goTo_;
    QPointer<QWidget> before_; ///< had the focus
};

} // namespace interface
