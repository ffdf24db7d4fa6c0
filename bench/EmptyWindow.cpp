// What any Qt program pays before it does anything: a main window with nothing in it, of the real one's size.

#include <QApplication>
#include <QMainWindow>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1240, 770);
    window.show();
    return QApplication::exec();
}
