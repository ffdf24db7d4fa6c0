#pragma once
// A bar that tells of unsaved edits which were left of the plug-in loaded, with the buttons that bring them back or
// discard them. Hidden until there is something to tell.

#include <QFrame>
#include <QString>

namespace platform::qt {
class ElidedLabel;
}

namespace interface {

class DraftBar final : public QFrame {
    Q_OBJECT
    Q_PROPERTY(QString text READ text)

public:
    DraftBar();

    void tell(const QString& text);
    QString text() const;

private:
    platform::qt::ElidedLabel* label_;
};

} // namespace interface
