#pragma once
// One pot of the front panel: a push button that looks like a knob. It is pressed inside the circle only, and pulled
// further than the system's drag distance it is dragged instead of pressed.

#include <QPushButton>

namespace interface {

struct PotLook;

class Pot final : public QPushButton {
    Q_OBJECT

public:
    /// `number` is 1 to 8.
    explicit Pot(int number, QWidget* parent = nullptr);

    int number() const { return number_; }
    /// Whether a parameter stands on it: turned up and lit, or turned down.
    void setMapped(bool isMapped);
    bool isMapped() const { return isMapped_; }
    /// Whether what is being dragged would be dropped here.
    void setDropTarget(bool isTarget);

Q_SIGNALS:
    /// The mouse has pulled far enough for a drag; no click follows.
    void pulled();

protected:
    bool hitButton(const QPoint& position) const override;
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void setHovered(bool isHovered);
    /// Further from where the mouse was pressed than a press may slide.
    bool isFar(const QPoint& position) const;
    PotLook look() const;

    int number_;
    bool isMapped_ = false;
    bool isDropTarget_ = false;
    bool isHovered_ = false;
    bool isPulled_ = false;
    QPoint pressedAt_;
};

} // namespace interface
