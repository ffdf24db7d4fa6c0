#include "platform/qt/Bindings.h"

#include "platform/qt/LongText.h"
#include "platform/qt/Text.h"

#include <QAbstractButton>
#include <QAction>
#include <QButtonGroup>
#include <QEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QScreen>
#include <QSignalBlocker>

#include <functional>
#include <utility>
#include <vector>

namespace platform::qt {

namespace {

/// Holds connections and controls for as long as the widget it is a child of.
class Binding : public QObject {
public:
    Binding(QObject* widget, std::shared_ptr<void> control) : QObject(widget), control_(std::move(control)) {}

    void keep(Connection connection) { connections_.push_back(std::move(connection)); }

private:
    std::shared_ptr<void> control_;
    std::vector<Connection> connections_; // before the control, so that they go first
};

/// Shows a property now and on every change.
template <typename T>
void follow(Binding* binding, Property<T>& property, std::function<void(const T&)> show)
{
    show(property.get());
    binding->keep(property.onChange(std::move(show)));
}

/// The text as it was typed; `toPlainText` would make plain blanks of those that do not break.
std::string typedText(const QPlainTextEdit* edit)
{
    QString text = edit->document()->toRawText();
    for (QChar& c : text) {
        if (c == QChar::ParagraphSeparator || c == QChar::LineSeparator)
            c = QLatin1Char('\n');
    }
    return fromQt(text);
}

class WindowBinding final : public Binding {
public:
    WindowBinding(QWidget* widget, const std::shared_ptr<Window>& window)
        : Binding(widget, window), window_(window.get())
    {
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (!event->spontaneous() && event->type() == QEvent::Show)
            window_->visible.set(true);
        if (!event->spontaneous() && event->type() == QEvent::Hide)
            window_->visible.set(false);
        return false;
    }

private:
    Window* window_;
};

void centreOnScreen(QWidget* widget)
{
    const QRect area = widget->screen()->availableGeometry();
    QRect frame = widget->frameGeometry();
    frame.moveCenter(area.center());
    widget->move(frame.topLeft());
}

} // namespace

void bind(const std::shared_ptr<TextField>& field, QLabel* label)
{
    auto* binding = new Binding(label, field);
    follow<std::string>(binding, field->stringValue, [label](const std::string& text) { label->setText(toQt(text)); });
    follow<std::string>(binding, field->toolTip, [label](const std::string& text) { label->setToolTip(toQt(text)); });
}

void bind(const std::shared_ptr<TextField>& field, QLineEdit* edit)
{
    auto* binding = new Binding(edit, field);
    follow<std::string>(binding, field->stringValue, [edit](const std::string& text) {
        if (fromQt(edit->text()) != text)
            edit->setText(toQt(text));
    });
    QObject::connect(edit, &QLineEdit::textChanged, binding,
                     [control = field.get()](const QString& text) { control->stringValue.set(fromQt(text)); });
}

void bind(const std::shared_ptr<TextField>& field, LongTextField* edit)
{
    auto* binding = new Binding(edit, field);
    follow<std::string>(binding, field->stringValue, [edit](const std::string& text) {
        const QSignalBlocker quiet(edit); // the edit may read other line ends; what was set is what counts
        if (typedText(edit) != text)
            edit->showText(toQt(text));
    });
    QObject::connect(edit, &QPlainTextEdit::textChanged, binding,
                     [control = field.get(), edit] { control->stringValue.set(typedText(edit)); });
}

void bind(const std::shared_ptr<Button>& button, QAction* action)
{
    auto* binding = new Binding(action, button);
    follow<bool>(binding, button->enabled, [action](const bool& enabled) { action->setEnabled(enabled); });
    QObject::connect(action, &QAction::enabledChanged, binding,
                     [control = button.get()](bool enabled) { control->enabled.set(enabled); });
    QObject::connect(action, &QAction::triggered, binding, [control = button.get()] { control->pressed.emit(); });
}

namespace {

/// Tab goes to the chosen cell only; the arrow keys choose another.
void letTabReachTheChosenCell(const QButtonGroup* group)
{
    for (QAbstractButton* cell : group->buttons())
        cell->setFocusPolicy(cell->isChecked() ? Qt::StrongFocus : Qt::ClickFocus);
}

} // namespace

void bind(const std::shared_ptr<RadioMatrix>& matrix, QButtonGroup* group)
{
    auto* binding = new Binding(group, matrix);
    follow<std::int32_t>(binding, matrix->selectedTag, [group](const std::int32_t& tag) {
        const QSignalBlocker quiet(group);
        if (QAbstractButton* cell = group->button(tag))
            cell->setChecked(true);
        letTabReachTheChosenCell(group);
    });
    QObject::connect(group, &QButtonGroup::idToggled, binding, [control = matrix.get(), group](int tag, bool chosen) {
        if (!chosen)
            return;
        letTabReachTheChosenCell(group);
        control->selectedTag.set(tag);
        control->cellChosen.emit();
    });
}

void bind(const std::shared_ptr<Window>& window, QWidget* widget)
{
    auto* binding = new WindowBinding(widget, window);
    follow<bool>(binding, window->visible, [widget](const bool& visible) {
        if (visible)
            widget->show();
        else
            widget->close();
    });
    binding->keep(window->broughtToFront.connect([widget] {
        widget->setWindowState(widget->windowState() & ~Qt::WindowMinimized);
        widget->show();
        widget->raise();
        widget->activateWindow();
    }));
    binding->keep(window->centred.connect([widget] { centreOnScreen(widget); }));
}

void bind(Property<DownloadProgress>& progress, QProgressBar* bar)
{
    auto* binding = new Binding(bar, nullptr);
    follow<DownloadProgress>(binding, progress, [bar](const DownloadProgress& now) {
        bar->setVisible(now.running > 0);
        // Without an end the bar only says that something goes on. It counts in whole KiB, which an int holds.
        bar->setMaximum(static_cast<int>(now.expected >> 10));
        bar->setValue(static_cast<int>(now.received >> 10));
    });
}

void bindFilter(const std::shared_ptr<ArrayController>& controller, QLineEdit* edit)
{
    auto* binding = new Binding(edit, controller);
    follow<std::string>(binding, controller->filterText, [edit](const std::string& text) {
        if (fromQt(edit->text()) != text)
            edit->setText(toQt(text));
    });
    QObject::connect(edit, &QLineEdit::textChanged, binding,
                     [control = controller.get()](const QString& text) { control->filterText.set(fromQt(text)); });
}

} // namespace platform::qt
