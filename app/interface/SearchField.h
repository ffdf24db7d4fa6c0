#pragma once
// The search over the parameter list. While it has the focus the list is still moved through with the arrow keys, so
// that a parameter is found, chosen and put on a pot without leaving the keyboard.

#include <QLineEdit>

class QAbstractItemView;

namespace interface {

class SearchField final : public QLineEdit {
    Q_OBJECT

public:
    explicit SearchField(QWidget* parent = nullptr);

    /// The list that is searched.
    void setList(QAbstractItemView* list) { list_ = list; }
    /// The last thing done was an edit of the mapping, so undo means that edit and no longer what was typed here.
    void giveUpUndo() { wasTypedInto_ = false; }

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QAbstractItemView* list_ = nullptr;
    bool wasTypedInto_ = false;
};

} // namespace interface
