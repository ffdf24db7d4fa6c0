#pragma once
// The on-screen copy of the controller's front panel: title, page read-outs, eight pots with their labels. Drawn for
// any size and density; a parameter or another pot can be dropped on a pot.

#include "app/interface/DragData.h"
#include "app/interface/panel/PanelLayout.h"

#include <QFrame>
#include <QPixmap>

#include <array>
#include <bitset>
#include <utility>
#include <vector>

namespace platform::qt {
class ElidedLabel;
}

namespace interface {

class Pot;

class FrontPanel final : public QFrame {
    Q_OBJECT

public:
    explicit FrontPanel(QWidget* parent = nullptr);

    /// The page that the labels are of, from 1; 0 pages without a mapping. Pots follow the labels by themselves.
    void setShownPage(int page, int pages);
    void setEditState(EditState state) { state_ = std::move(state); }
    /// Rings the pots on which the selected parameter stands: a bit for each, pot 1 the lowest.
    void ringPots(unsigned pots);

    /// Pots, 1 to 8 and ascending, that were chosen to be meant together: by Shift and Ctrl with a click, by Shift with
    /// Left and Right, all by the key for that. A press, Escape, and going elsewhere give it up.
    std::vector<int> chosenPots() const;
    /// Nobody is on the panel.
    void leaveChoice();
    /// Somebody means a pot without pressing it: those chosen where it is one of them, else it alone.
    void mean(const Pot& pot);

    /// What a press of each pot would do now.
    void setTasks(const std::array<QString, PanelLayout::kPots>& tasks);
    /// What each pot of that page holds on the other side of a comparison; empty where that is the same.
    void setDifferences(const std::array<QString, PanelLayout::kPots>& differences);
    /// Gives a pot, 1 to 8, the keyboard focus.
    void focusPot(int pot);

    /// The height that goes best with a width.
    int heightFor(int width) const { return panelHeightFor(width, font()); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The parameters that are being dragged were dropped on a pot, 1 to 8.
    void parametersDropped(int pot);
    /// A pot of a page was dropped on another one of the page shown, both 1 to 8.
    void potDropped(int page, int from, int onto);
    /// A pot was dragged, and was dropped somewhere or the drag was given up.
    void dragEnded(bool wasDropped);
    void choiceChanged();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    /// Left and Right move from pot to pot, and with Shift choose them.
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    static constexpr int kNoPot = 0;
    using Choice = std::bitset<PanelLayout::kPots>;

    void makeReadOuts();
    void makePots();
    void followLabels();
    void followPalette();
    void placeChildren();
    void drawAnew();
    void dragPot(Pot* pot);
    void setChoice(const Choice& choice);
    void beginChoiceAt(int pot);
    void giveUpChoice();
    void extendChoice(int pot, Qt::KeyboardModifiers modifiers);
    void goTo(Pot& pot, Qt::FocusReason reason, Qt::KeyboardModifiers modifiers);
    /// A parameter or a pot, or nothing.
    DragData draggedIn(const QDropEvent& event) const;
    int targetOf(const QDropEvent& event) const;
    void setTarget(int pot);

    std::array<Pot*, PanelLayout::kPots> pots_ = {};
    std::array<platform::qt::ElidedLabel*, PanelLayout::kPots> labels_ = {};
    platform::qt::ElidedLabel* title_ = nullptr;
    platform::qt::ElidedLabel* pageReadOut_ = nullptr;
    platform::qt::ElidedLabel* totalReadOut_ = nullptr;
    PanelLayout layout_;
    QPixmap picture_; ///< of the hardware without the pots, as it was last painted; null when it looks different now
    int page_ = 0;
    int pages_ = 0;
    EditState state_ = [] { return quint64{0}; };
    int target_ = kNoPot;
    Choice choice_;            ///< none: the pot with the focus is meant
    int choiceBegin_ = kNoPot; ///< the pot where somebody was last, from which Shift goes on
};

} // namespace interface
