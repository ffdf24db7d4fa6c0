#pragma once
// Layout of the main window: the plug-in list at the left, the parameter list with its search beside it, and in the
// lower view the front panel with everything that works on the mapping. Makes widgets only; wiring is done elsewhere.

#include <QMainWindow>

namespace interface {

class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    MainWindow();

private:
    void makeMenus();
};

} // namespace interface
