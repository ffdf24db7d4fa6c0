#include "app/interface/Keyboard.h"

#include "app/interface/Interface.h"

#include <QAbstractButton>
#include <QShortcut>

namespace interface {

void connectPotKeys(const Interface& loaded)
{
    for (int pot = 1; pot <= 8; ++pot) {
        auto* button = loaded.find<QAbstractButton>(qPrintable(QStringLiteral("kvRotaryBtn%1").arg(pot)));
        for (const char* place : {"tablePlistOfSelectedPlugin", "frontPanel"}) {
            auto* key = new QShortcut(QKeySequence(Qt::Key_0 + pot), loaded.find<QWidget>(place));
            key->setAutoRepeat(false); // a key held down does not lay parameter after parameter
            key->setContext(Qt::WidgetWithChildrenShortcut);
            QObject::connect(key, &QShortcut::activated, button, &QAbstractButton::click);
        }
    }
}

} // namespace interface
