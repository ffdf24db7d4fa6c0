#pragma once
// Drags over the strip of pages. A parameter or a pot that rests on a tile shows its page, and dropped there takes its
// first empty pot; a tile is dropped between two others. Says beforehand what a drop would do, and marks where.

#include "app/interface/DragData.h"

#include <QObject>
#include <QPoint>
#include <QString>
#include <QTimer>

class QDropEvent;
class QListView;
class QPainter;

namespace interface {

class PageModel;

class PageDrags final : public QObject {
    Q_OBJECT

public:
    /// Both outlive it. The strip shows the model, pages as rows.
    PageDrags(QListView& strip, const PageModel& pages);

    void setEditState(EditState state) { state_ = std::move(state); }
    /// Something is dragged over the strip just now, which stays where it is meanwhile.
    bool isOver() const { return isOver_; }
    /// Marks where it would be dropped, on the strip as it is painted.
    void paint(QPainter& painter) const;
    /// Drags the page whose tile the mouse was pressed on, until it is dropped or given up.
    void dragPage();
    /// A drag that went over the strip, wherever from, has ended. When it was given up the page is shown again that was
    /// shown before any was rested on.
    void end(bool wasDropped);

Q_SIGNALS:
    void pageWanted(int page);
    /// The parameters that are being dragged were dropped on the tile of a page.
    void parametersDropped(int page);
    void potDropped(int page, int pot, int ontoPage);
    /// A tile was dropped between two: before that of a page, or behind the last.
    void pageDropped(int page, int before);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Target {
        int tile = 0;   ///< of the page that takes what is dragged; 0: none
        int before = 0; ///< the page before which the one dragged would stand; 0: none
        QString text;   ///< what a drop does, or why it does nothing

        bool isThere() const { return tile > 0 || before > 0; }
        bool operator==(const Target&) const = default;
    };

    bool dragOver(const QDropEvent& event);
    void drop(QDropEvent& event);
    void leave();
    void follow();
    int countedPageAt(const QPoint& position) const;
    Target targetOf(const DragData& drag, const QPoint& position) const;
    Target tileTarget(const DragData& drag, int page) const;
    Target gapTarget(int page, const QPoint& position) const;
    void rested();
    void scroll();

    QListView& strip_;
    const PageModel& pages_;
    EditState state_ = [] { return quint64{0}; };
    int pressedPage_ = 0;
    bool isOver_ = false;
    DragData drag_; ///< what is over the strip
    QPoint position_;
    Target target_;
    QTimer rest_{this};
    int restedOn_ = 0;       ///< the page that the drag rests on, or has rested on
    int shownBefore_ = 0;    ///< the page shown before any was rested on; 0: none was
    quint64 shownState_ = 0; ///< whose page that is
    QTimer scroll_{this};
};

} // namespace interface
