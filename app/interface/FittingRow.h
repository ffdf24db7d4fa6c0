#pragma once
// A row of groups of buttons, and of read-outs between them, for any width. Where there is too little, the groups give
// up their words, the last one first; then read-outs are shortened; then the last buttons go into the menu of a button
// at the end.

#include <QWidget>

#include <vector>

class QHBoxLayout;
class QLabel;
class QMenu;

namespace interface {

struct Action;
enum class ButtonRow;
class RowButton;

class FittingRow final : public QWidget {
    Q_OBJECT

public:
    /// The name is what a screen reader says of the button at the end.
    FittingRow(int spacing, const char* buttonName, const QString& accessibleName);

    void add(QWidget* widget, int stretch = 0);
    void addStretch();
    /// A line between this and what follows, which goes with the group that follows.
    void addSeparator();
    /// The buttons of the table's row, after a caption if they have one, with little room between them so that they
    /// read as one group.
    void addGroup(ButtonRow buttons, const QString& caption = {});

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;

private:
    struct Group {
        QWidget* box;
        QWidget* separator; ///< before it; null: none
        QWidget* caption;   ///< null: none
        std::vector<RowButton*> buttons;
        std::vector<const Action*> actions; ///< a button's each
    };
    struct Form {
        std::size_t groupsWithWords;
        std::size_t buttonsShown;
    };

    Form everything() const;
    int widthOf(const Form& form, bool areTextsShortened) const;
    void fit();
    void openMenu();

    QHBoxLayout* row_;
    std::vector<QWidget*> others_;
    std::vector<Group> groups_;
    QWidget* separator_ = nullptr; ///< the last one, until a group follows
    RowButton* more_;
    QMenu* menu_;
};

} // namespace interface
