// What any Qt program pays before it does anything: the main window that a new project starts with, a menu bar and a
// status bar round nothing, of the real one's size.

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QStatusBar>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QMainWindow window;
    window.setMenuBar(new QMenuBar(&window));
    window.setCentralWidget(new QWidget(&window));
    window.setStatusBar(new QStatusBar(&window));
    window.resize(1240, 770);
    window.show();
    return QApplication::exec();
}
