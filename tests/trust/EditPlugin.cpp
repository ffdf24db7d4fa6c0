// Loaded into the unchanged program by QT_QPA_GENERIC_PLUGINS: chooses the first plug-in and presses pot 1, which
// clears it, as soon as the window is there; then says "edited" on standard error, and "pressed" whenever it has
// pressed another pot, one every 20 ms, if KV_PRESS_ON is set.

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QGenericPlugin>
#include <QMainWindow>
#include <QTest>
#include <QTimer>

#include <cstdio>

namespace {

class Editor final : public QObject {
public:
    Editor()
    {
        connect(&timer_, &QTimer::timeout, this, [this] { goOn(); });
        timer_.start(20);
    }

private:
    void goOn()
    {
        if (!window_) {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (auto* window = qobject_cast<QMainWindow*>(widget); window && window->isVisible())
                    window_ = window;
            }
            if (window_)
                choose();
            return;
        }
        press(pressed_++ % 8 + 1);
        std::fputs(pressed_ == 1 ? "edited\n" : "pressed\n", stderr);
        if (!qEnvironmentVariableIsSet("KV_PRESS_ON"))
            timer_.stop();
    }

    void choose()
    {
        auto* list = window_->findChild<QAbstractItemView*>(QStringLiteral("pluginTableView"));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                          list->visualRect(list->model()->index(0, 0)).center());
    }

    void press(int pot)
    {
        QTest::mouseClick(window_->findChild<QAbstractButton*>(QStringLiteral("kvRotaryBtn%1").arg(pot)),
                          Qt::LeftButton);
    }

    QTimer timer_;
    QMainWindow* window_ = nullptr;
    int pressed_ = 0;
};

} // namespace

class EditPlugin final : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "kvedit.json")

public:
    QObject* create(const QString& name, const QString&) override
    {
        return name == QLatin1String("kvedit") ? new Editor : nullptr;
    }
};

#include "EditPlugin.moc"
