#pragma once
// Takes the running program from step to step as a user would, with mouse and keyboard events on its widgets. Each step
// leaves a picture, some of them an excerpt for the guide too, and prints one line. The first step that does not find
// what it expects ends the program with 1.

#include <QDir>
#include <QImage>
#include <QObject>
#include <QPixmap>
#include <QRect>
#include <QString>
#include <QTimer>

#include <functional>
#include <stdexcept>
#include <vector>

class QFileDialog;
class QMenu;
class QMessageBox;
class QWidget;

namespace tour {

class Tour;

/// What of a step's picture goes into the user guide or the README.
struct Excerpt {
    QString name;
    /// It shows these, what lies between them and an open menu; none: the alert alone.
    std::vector<const char*> widgets = {};
    int height = 0; ///< from the top; 0: all
};

struct Step {
    QString name; ///< of the picture, and what the line begins with
    /// Does the step and answers what is to be seen now. Throws Failure.
    std::function<QString(Tour&)> act;
    std::vector<Excerpt> excerpts = {};
};

struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::vector<Step> allSteps();

class Tour final : public QObject {
    Q_OBJECT

public:
    explicit Tour(const QDir& output);

    void start(std::vector<Step> steps);

    // What steps are made of. Names are object names; an object that is missing or not to be used is a Failure.

    template <typename T>
    T* find(const char* name)
    {
        return qobject_cast<T*>(findWidget(name, T::staticMetaObject));
    }
    void click(const char* button);
    /// Clicks the first row whose column holds the text.
    void clickRow(const char* list, const QString& text, int column = 0, Qt::KeyboardModifiers keys = {});
    void clickPage(int number);
    void type(const char* field, const QString& text);
    void press(const char* widget, Qt::Key key, Qt::KeyboardModifiers modifiers);
    /// Opens a widget's context menu, which goes into the step's picture unless something of it is chosen.
    void openContextMenu(const char* widget);
    /// Clicks an item of the open menu.
    void choose(const char* item);
    /// Opens the menu of the bar that has the item, and clicks it.
    void chooseFromMenuBar(const char* item);
    QString text(const char* label);
    QString textOfAlert() const { return alertText_; }
    QString informativeTextOfAlert() const { return alertInformativeText_; }
    void expect(bool holds, const QString& what);
    /// Waits for what ends by itself.
    void waitUntil(const std::function<bool()>& holds, const QString& what);
    /// Shows this window instead of the main one in the step's picture.
    void lookAt(const char* window);
    /// The next alert that comes up goes into the step's picture and is answered with its first button.
    void answerAlert();
    /// Waits until that alert has come up.
    void waitForAlert();
    /// The next dialog that asks for a file's name goes into the step's picture and is given this one, beside the
    /// pictures. Answers its path.
    QString answerSaveDialog(const QString& name);
    QString openedUrl() const { return openedUrl_; }
    /// A text from one step to a later one.
    void remember(const QString& text) { remembered_ = text; }
    QString remembered() const { return remembered_; }

public Q_SLOTS:
    void rememberUrl(const QUrl& url);

private:
    QWidget* findWidget(const char* name, const QMetaObject& type);
    void next();
    QMenu* openMenu() const;
    /// The excerpt of a step's picture; null where it is the alert and none came up. With fewer shades, which makes it
    /// a smaller file and is hardly seen.
    QImage cutOut(const Excerpt& excerpt, const QPixmap& picture, const QRect& menu);
    void answerNow();
    void answer(QMessageBox& box);
    void answer(QFileDialog& dialog);

    QDir output_;
    std::vector<Step> steps_;
    std::size_t current_ = 0;
    QWidget* shownWindow_ = nullptr;
    QPixmap alertPicture_; ///< over the window
    QPixmap alertAlone_;
    QString alertText_;
    QString alertInformativeText_;
    QString savePath_;
    QString remembered_;
    QTimer alertWatch_;
    QString openedUrl_;
};

} // namespace tour
