// Loads the tour into the program: Qt makes the object while the application is being constructed, and the tour begins
// when the event loop first runs.

#include "tools/tour/Tour.h"

#include <QDir>
#include <QGenericPlugin>
#include <QTimer>

class TourPlugin final : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "kvtour.json")

public:
    QObject* create(const QString& name, const QString&) override
    {
        if (name != QLatin1String("kvtour"))
            return nullptr;
        auto* tour = new tour::Tour(QDir(qEnvironmentVariable("KV_TOUR_OUTPUT", QStringLiteral("."))));
        QTimer::singleShot(0, tour, [tour] { tour->start(tour::allSteps()); });
        return tour;
    }
};

#include "TourPlugin.moc"
