#include "platform/qt/TablePrinting.h"

#include "platform/qt/Text.h"

#include <QBrush>
#include <QBuffer>
#include <QDate>
#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QLocale>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QPen>
#include <QPrintDialog>
#include <QPrinter>
#include <QTextOption>

#include <algorithm>
#include <utility>

namespace platform::qt {

namespace {

// In points.
constexpr double kMargin = 36;
constexpr double kFirstColumn = 34;
constexpr double kPadding = 3;
constexpr double kFooter = 20;
constexpr double kGap = 8;
constexpr double kLine = 0.5;
/// Of what is drawn as a picture.
constexpr double kPictureDpi = 300;

/// One that is on every system and can be part of a PDF, which the desktop's own need not be.
QFont printFont(double points, QFont::Weight weight = QFont::Normal)
{
    QFont font(QStringLiteral("Helvetica"));
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(points);
    font.setWeight(weight);
    return font;
}

/// Thousands of rows take a while.
class BusyCursor {
public:
    BusyCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
    ~BusyCursor() { QGuiApplication::restoreOverrideCursor(); }
};

/// What is sold as paper where the user lives: Letter in these countries, A4 in all others.
QPageSize localPaper()
{
    static constexpr QLocale::Territory kLetter[] = {
        QLocale::UnitedStates, QLocale::Canada,    QLocale::Mexico,    QLocale::Philippines,       QLocale::PuertoRico,
        QLocale::Chile,        QLocale::Colombia,  QLocale::CostaRica, QLocale::DominicanRepublic, QLocale::ElSalvador,
        QLocale::Guatemala,    QLocale::Nicaragua, QLocale::Panama,    QLocale::Venezuela,         QLocale::Belize,
    };
    const bool isLetter = std::find(std::begin(kLetter), std::end(kLetter), QLocale().territory()) != std::end(kLetter);
    return QPageSize(isLetter ? QPageSize::Letter : QPageSize::A4);
}

/// Whether a PDF would lack some of its letters: an emoji is a picture in its font, without an outline.
bool hasEmoji(const QTextLayout& text)
{
    const QList<uint> letters = text.text().toUcs4();
    return std::any_of(letters.begin(), letters.end(),
                       [](uint letter) { return letter > 0xFF && QChar::category(letter) == QChar::Symbol_Other; });
}

void drawText(QPainter& painter, const QTextLayout& text, const QPointF& at)
{
    if (!hasEmoji(text)) {
        text.draw(&painter, at);
        return;
    }
    const double scale = std::min(1.0, kPictureDpi / painter.device()->logicalDpiY());
    const QRectF area = text.boundingRect();
    QImage picture((area.size() * scale).toSize() + QSize(1, 1), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter pictured(&picture);
    pictured.scale(scale, scale);
    text.draw(&pictured, -area.topLeft());
    pictured.end();
    painter.drawImage(QRectF(at + area.topLeft(), QSizeF(picture.size()) / scale), picture);
}

/// False when the device failed, or the user stopped it.
bool drawOn(QPagedPaintDevice& device, const PrintedTable& table)
{
    const BusyCursor busy;
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    const TableSheets sheets(table, device, QSizeF(device.width(), device.height()));
    for (int sheet = 0; sheet < sheets.count(); ++sheet) {
        if (sheet > 0 && !device.newPage())
            return false;
        sheets.draw(painter, sheet);
    }
    return painter.end();
}

} // namespace

TableSheets::TableSheets(const PrintedTable& table, QPaintDevice& device, const QSizeF& size)
    : device_(device),
      size_(size),
      point_(device.logicalDpiY() / 72.0),
      columns_(table.header.size()),
      title_(toQt(table.title))
{
    head_.push_back(textOf(table.title, printFont(16, QFont::Bold), size_.width(), Qt::AlignLeft));
    for (const std::string& line : table.lines)
        head_.push_back(textOf(line, printFont(9), size_.width(), Qt::AlignLeft));
    double y = 0;
    for (const Text& text : head_)
        y += text->boundingRect().height();
    header_ = rowOf(table.header, printFont(8.5, QFont::Bold));
    y += kGap * point_ + header_.height;
    const double bottom = size_.height() - kFooter * point_;
    int sheet = 0;
    const QFont font = printFont(8.5);
    rows_.reserve(table.rows.size());
    for (const auto& texts : table.rows) {
        Row row = rowOf(texts, font);
        if (y + row.height > bottom) {
            ++sheet;
            y = header_.height;
        }
        row.sheet = sheet;
        row.top = y;
        y += row.height;
        rows_.push_back(std::move(row));
    }
}

int TableSheets::count() const
{
    return rows_.empty() ? 1 : rows_.back().sheet + 1;
}

double TableSheets::leftOf(std::size_t column) const
{
    const double first = kFirstColumn * point_;
    if (column == 0)
        return 0;
    return first + (size_.width() - first) * static_cast<double>(column - 1) / static_cast<double>(columns_ - 1);
}

TableSheets::Text TableSheets::textOf(const std::string& text, const QFont& font, double width, Qt::Alignment alignment)
{
    auto layout = std::make_unique<QTextLayout>(toQt(text), font, &device_);
    QTextOption option(alignment);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout->setTextOption(option);
    layout->setCacheEnabled(true);
    // So much fits below the header.
    const double highest = size_.height() / 2;
    layout->beginLayout();
    double height = 0;
    while (height < highest) {
        QTextLine line = layout->createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(width);
        line.setPosition({0, height});
        height += line.height();
    }
    layout->endLayout();
    return layout;
}

TableSheets::Row TableSheets::rowOf(const std::vector<std::string>& texts, const QFont& font)
{
    const double padding = kPadding * point_;
    Row row;
    row.cells.reserve(texts.size());
    for (std::size_t column = 0; column < texts.size(); ++column) {
        const double width = leftOf(column + 1) - leftOf(column) - 2 * padding;
        row.cells.push_back(textOf(texts[column], font, width, Qt::AlignHCenter));
        row.height = std::max(row.height, row.cells.back()->boundingRect().height() + 2 * padding);
    }
    return row;
}

void TableSheets::draw(QPainter& painter, int sheet) const
{
    painter.setPen(Qt::black);
    if (sheet == 0) {
        double y = 0;
        for (const Text& text : head_) {
            drawText(painter, *text, {0, y});
            y += text->boundingRect().height();
        }
    }
    const auto isBefore = [](const Row& row, int other) { return row.sheet < other; };
    const auto first = std::lower_bound(rows_.begin(), rows_.end(), sheet, isBefore);
    const auto last = std::lower_bound(first, rows_.end(), sheet + 1, isBefore);
    if (first != last)
        draw(painter, header_, first->top - header_.height, QColor(0xE8, 0xE8, 0xE8));
    for (auto row = first; row != last; ++row)
        draw(painter, *row, row->top, Qt::NoBrush);
    drawFooter(painter, sheet);
}

void TableSheets::draw(QPainter& painter, const Row& row, double top, const QBrush& background) const
{
    painter.setPen(QPen(Qt::gray, kLine * point_));
    painter.setBrush(background);
    painter.drawRect(QRectF(0, top, size_.width(), row.height));
    for (std::size_t column = 1; column < row.cells.size(); ++column)
        painter.drawLine(QPointF(leftOf(column), top), QPointF(leftOf(column), top + row.height));
    painter.setPen(Qt::black);
    for (std::size_t column = 0; column < row.cells.size(); ++column) {
        const QTextLayout& text = *row.cells[column];
        drawText(painter, text,
                 {leftOf(column) + kPadding * point_, top + (row.height - text.boundingRect().height()) / 2});
    }
}

void TableSheets::drawFooter(QPainter& painter, int sheet) const
{
    const QFont font = printFont(8);
    painter.setFont(font);
    const double height = kFooter * point_;
    const double third = size_.width() / 3;
    const QRectF left(0, size_.height() - height, third, height);
    const QString title = QFontMetricsF(font, &device_).elidedText(title_, Qt::ElideRight, third);
    const QLocale locale;
    painter.drawText(left, Qt::AlignLeft | Qt::AlignBottom | Qt::TextSingleLine, title);
    painter.drawText(left.translated(third, 0), Qt::AlignHCenter | Qt::AlignBottom,
                     locale.toString(QDate::currentDate(), QLocale::LongFormat));
    painter.drawText(left.translated(2 * third, 0), Qt::AlignRight | Qt::AlignBottom,
                     QObject::tr("Sheet %1 of %2").arg(locale.toString(sheet + 1), locale.toString(count())));
}

std::string tablePdf(const PrintedTable& table)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter pdf(&buffer);
        pdf.setTitle(toQt(table.title));
        pdf.setCreator(QGuiApplication::applicationDisplayName());
        pdf.setPageLayout({localPaper(), QPageLayout::Landscape, QMarginsF(kMargin, kMargin, kMargin, kMargin)});
        drawOn(pdf, table);
    }
    return bytes.toStdString();
}

bool printTable(const PrintedTable& table, QWidget* window)
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(toQt(table.title));
    printer.setCreator(QGuiApplication::applicationDisplayName());
    printer.setPageOrientation(QPageLayout::Landscape);
    printer.setPageMargins({kMargin, kMargin, kMargin, kMargin}, QPageLayout::Point);
    QPrintDialog dialog(&printer, window);
    dialog.setObjectName(QStringLiteral("printDialog"));
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
    return dialog.exec() != QDialog::Accepted || drawOn(printer, table);
}

} // namespace platform::qt
