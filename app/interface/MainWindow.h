#pragma once
// Layout of the main window: the plug-in list at the left, the parameter list with its search beside it, and in the
// lower view the front panel, the strip of all pages and what works on them. Makes widgets only; wiring is done
// elsewhere.

#include <QMainWindow>

namespace interface {

class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    MainWindow();

protected:
    /// What is typed and nobody else wants goes into the search.
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// On a Mac all windows have the one menu bar.
    void onWindowInFront(const char* item, void (*work)(QWidget& front));
};

} // namespace interface
