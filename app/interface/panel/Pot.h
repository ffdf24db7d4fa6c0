#pragma once
// One pot of the front panel: a push button that looks like a knob. It is pressed inside the circle only, and pulled
// further than the system's drag distance it is dragged instead of pressed. Several can be chosen.

#include <QPushButton>

namespace interface {

struct PotLook;

class Pot final : public QPushButton {
    Q_OBJECT

public:
    /// `number` is 1 to 8.
    explicit Pot(int number, QWidget* parent = nullptr);

    int number() const { return number_; }
    /// Whether a parameter stands on it.
    void setMapped(bool isMapped);
    bool isMapped() const { return isMapped_; }
    /// Tells what a press would do now.
    void setTask(const QString& task);
    /// What it holds on the other side of a comparison: marks it and tells; empty where that is the same.
    void setDifference(const QString& difference);
    bool differs() const { return !difference_.isEmpty(); }
    /// Whether it is the selected parameter that stands on it.
    void setHoldsSelected(bool holdsSelected);
    /// Whether what is being dragged would be dropped here.
    void setDropTarget(bool isTarget);
    /// Whether it is one of several that operations are meant for.
    void setChosen(bool isChosen);
    bool isChosen() const { return isChosen_; }

Q_SIGNALS:
    /// The mouse has pulled far enough for a drag; no click follows.
    void pulled();
    /// Clicked with Shift or Ctrl, which presses nothing.
    void clickedToChoose(Qt::KeyboardModifiers modifiers);
    /// Got the focus otherwise than by mouse.
    void reached();

protected:
    bool hitButton(const QPoint& position) const override;
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void setHovered(bool isHovered);
    /// Further from where the mouse was pressed than a press may slide.
    bool isFar(const QPoint& position) const;
    PotLook look() const;
    void describe();

    int number_;
    QString task_;
    QString difference_;
    bool isMapped_ = false;
    bool holdsSelected_ = false;
    bool isDropTarget_ = false;
    bool isChosen_ = false;
    bool isHovered_ = false;
    bool isPulled_ = false; ///< the mouse is held for something else than a press
    QPoint pressedAt_;
};

} // namespace interface
