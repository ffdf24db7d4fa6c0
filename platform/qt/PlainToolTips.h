#pragma once
// Shows every tool tip as plain text. Qt takes a tool tip that looks like markup for markup, but ours hold names and
// paths from files. Installed as an event filter of the application.

#include <QObject>

namespace platform::qt {

/// Shows a tool tip as plain text, its blanks and line ends as they are.
void showPlainToolTip(const QPoint& globalPosition, const QString& text, QWidget* widget);

class PlainToolTips final : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace platform::qt
