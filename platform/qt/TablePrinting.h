#pragma once
// A table on paper: a row is never parted, the header is on every sheet, and below it what it is, the day and the
// sheet's number.

#include "platform/Effects.h"

#include <QSizeF>
#include <QString>
#include <QTextLayout>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class QBrush;
class QFont;
class QPaintDevice;
class QPainter;
class QWidget;

namespace platform::qt {

/// The table laid out on sheets. A text is broken where no blank is, too, if it is wider than its column; one that is
/// higher than a sheet ends with it.
class TableSheets {
public:
    /// For sheets of a size on a device, in its pixels.
    TableSheets(const PrintedTable& table, QPaintDevice& device, const QSizeF& size);

    int count() const;
    void draw(QPainter& painter, int sheet) const;

private:
    using Text = std::unique_ptr<QTextLayout>;
    struct Row {
        std::vector<Text> cells;
        double height = 0;
        int sheet = 0;
        double top = 0;
    };

    Text textOf(const std::string& text, const QFont& font, double width, Qt::Alignment alignment);
    Row rowOf(const std::vector<std::string>& texts, const QFont& font);
    void draw(QPainter& painter, const Row& row, double top, const QBrush& background) const;
    void drawFooter(QPainter& painter, int sheet) const;
    double leftOf(std::size_t column) const;

    QPaintDevice& device_;
    const QSizeF size_;
    const double point_;
    const std::size_t columns_;
    const QString title_;
    std::vector<Text> head_;
    Row header_;
    std::vector<Row> rows_;
};

/// The bytes of a PDF with the table on the paper that the user's country takes.
std::string tablePdf(const PrintedTable& table);

/// Asks how, and prints; false when that failed, but not when the user gave it up.
bool printTable(const PrintedTable& table, QWidget* window);

} // namespace platform::qt
