#pragma once
// A search over a list. From the parameters' the list is still moved through with the arrow keys, so that a parameter
// is found, chosen and put on a pot without leaving the keyboard. From the plug-ins', where moving loads, they lead
// into the list.

#include <QLineEdit>

namespace platform::qt {
class RecordListView;
}

namespace interface {

class SearchField final : public QLineEdit {
    Q_OBJECT

public:
    explicit SearchField(QWidget* parent = nullptr);

    /// Searches a list, and says of what it is in its hint and to screen readers.
    void setList(platform::qt::RecordListView* list, const QString& words);
    /// Arrow keys lead into the list instead of moving in it from here.
    void leadIntoList() { leadsIntoList_ = true; }
    /// The last thing done was an edit of the mapping, so undo means that edit and no longer what was typed here.
    void giveUpUndo() { wasTypedInto_ = false; }

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    platform::qt::RecordListView* list_ = nullptr;
    bool leadsIntoList_ = false;
    bool wasTypedInto_ = false;
};

} // namespace interface
