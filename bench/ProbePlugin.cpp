// Loaded into an unchanged program by QT_QPA_GENERIC_PLUGINS: once the main window has been exposed and painted, and
// the row named by KV_BENCH_SELECT, if any, has been chosen and painted too, writes to the file that KV_BENCH_REPORT
// names the time since KV_BENCH_STARTED until the painting and the memory that the process alone has written to, and
// ends the program.

#include <QAbstractItemView>
#include <QApplication>
#include <QGenericPlugin>
#include <QMainWindow>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <time.h>

namespace {

/// What has passed since the bench began to start the program, the loading of its libraries included.
double millisecondsSinceStart()
{
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    const double now = static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    return now - qEnvironmentVariable("KV_BENCH_STARTED").toDouble();
}

long ownKiB()
{
    std::ifstream mappings("/proc/self/smaps_rollup");
    for (std::string line; std::getline(mappings, line);) {
        if (line.starts_with("Private_Dirty:"))
            return std::atol(line.c_str() + 14);
    }
    return 0;
}

class Probe final : public QObject {
public:
    Probe() { qApp->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        // The paint event of the backing store's widget is handled when the filters are through with it.
        if (event->type() == QEvent::Paint && qobject_cast<QMainWindow*>(watched) && !window_) {
            window_ = qobject_cast<QMainWindow*>(watched);
            QTimer::singleShot(0, this, [this] { painted(); });
        }
        return false;
    }

private:
    void painted()
    {
        shownAfterMs_ = millisecondsSinceStart();
        if (qEnvironmentVariableIsSet("KV_BENCH_SELECT"))
            choose(qEnvironmentVariable("KV_BENCH_SELECT"));
        if (std::FILE* report = std::fopen(qPrintable(qEnvironmentVariable("KV_BENCH_REPORT")), "w")) {
            std::fprintf(report, "%f %ld\n", shownAfterMs_, ownKiB());
            std::fclose(report);
        }
        std::_Exit(0);
    }

    void choose(const QString& plugin)
    {
        auto* list = window_->findChild<QAbstractItemView*>(QStringLiteral("pluginTableView"));
        const auto rows = list->model()->match(list->model()->index(0, 0), Qt::DisplayRole, plugin, 1);
        if (rows.isEmpty())
            std::_Exit(1);
        list->scrollTo(rows.front());
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, list->visualRect(rows.front()).center());
        QTest::qWait(400); // what an edit puts off until later is part of it
    }

    QMainWindow* window_ = nullptr;
    double shownAfterMs_ = 0;
};

} // namespace

class ProbePlugin final : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "kvprobe.json")

public:
    QObject* create(const QString& name, const QString&) override
    {
        return name == QLatin1String("kvprobe") ? new Probe : nullptr;
    }
};

#include "ProbePlugin.moc"
