#pragma once
// The front panel with the strip of pages below it, and whatever is added below both. A height that the panel has no
// use for at its width goes into further rows of the strip, as far as there are pages for them.

#include <QVBoxLayout>

namespace interface {

class FrontPanel;
class PageOverview;

class PanelColumn final : public QVBoxLayout {
    Q_OBJECT

public:
    PanelColumn(FrontPanel* panel, PageOverview* strip, QWidget* parent);

    /// With a single row of tiles, whatever is shown just now.
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

private:
    FrontPanel* panel_;
    PageOverview* strip_;
};

} // namespace interface
