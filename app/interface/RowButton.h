#pragma once
// A push button with a symbol that can do without its words. They stay its `text`, and so its name for a screen reader.

#include <QPushButton>

namespace interface {

class RowButton final : public QPushButton {
    Q_OBJECT

public:
    explicit RowButton(QWidget* parent = nullptr);

    /// Without a symbol the words stay.
    void setShowsWords(bool showsWords);
    QSize sizeFor(bool showsWords) const;

    QSize sizeHint() const override { return sizeFor(showsWords_); }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool showsWords_ = true;
};

} // namespace interface
