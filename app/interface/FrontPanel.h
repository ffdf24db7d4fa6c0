#pragma once
// The on-screen copy of the controller's front panel: title, page read-outs, eight pots with their labels.

#include <QFrame>

namespace interface {

class FrontPanel final : public QFrame {
    Q_OBJECT

public:
    explicit FrontPanel(QWidget* parent = nullptr);
};

} // namespace interface
