// Tables on paper, drawn on a device that notes down what is drawn where.

#include "platform/qt/TablePrinting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLocale>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>

#include <algorithm>
#include <string>
#include <vector>

namespace platform::qt {

namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr int kDpi = 300;

struct NotedEngine final : QPaintEngine {
    NotedEngine() : QPaintEngine(AllFeatures) {}

    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState&) override {}
    Type type() const override { return User; }
    void drawPath(const QPainterPath&) override {}
    void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
    void drawImage(const QRectF& where, const QImage&, const QRectF&, Qt::ImageConversionFlags) override
    {
        pictures.push_back(where);
        ink |= where;
    }
    void drawTextItem(const QPointF& at, const QTextItem& item) override
    {
        texts.push_back(item.text().trimmed().toStdString());
        ink |= QRectF(at.x(), at.y() - item.ascent(), item.width(), item.ascent() + item.descent());
    }

    std::vector<std::string> texts;
    std::vector<QRectF> pictures;
    QRectF ink;
};

class NotedDevice final : public QPaintDevice {
public:
    QPaintEngine* paintEngine() const override { return &engine_; }
    NotedEngine& engine() const { return engine_; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
        case PdmHeight: return 10'000;
        case PdmDevicePixelRatio: return 1;
        case PdmDevicePixelRatioScaled: return static_cast<int>(devicePixelRatioFScale());
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY: return kDpi;
        default: return 0;
        }
    }

private:
    mutable NotedEngine engine_;
};

constexpr double pixels(double points)
{
    return points * kDpi / 72;
}

/// What is left within margins of half an inch.
const QSizeF kA4(pixels(842 - 72), pixels(595 - 72));
const QSizeF kLetter(pixels(792 - 72), pixels(612 - 72));

struct Sheet {
    std::vector<std::string> texts;
    std::vector<QRectF> pictures;
    QRectF ink;
};

std::vector<Sheet> sheetsOf(const PrintedTable& table, const QSizeF& size)
{
    NotedDevice device;
    const TableSheets sheets(table, device, size);
    std::vector<Sheet> noted;
    for (int sheet = 0; sheet < sheets.count(); ++sheet) {
        NotedDevice paper;
        QPainter painter(&paper);
        sheets.draw(painter, sheet);
        painter.end();
        noted.push_back({paper.engine().texts, paper.engine().pictures, paper.engine().ink});
    }
    return noted;
}

PrintedTable tableOf(std::size_t rows, const std::string& name = "name")
{
    PrintedTable table{"EQ", {"Mode", "/a/path"}, {"Page"}, {}};
    for (int column = 1; column <= 8; ++column)
        table.header.push_back("Pot" + std::to_string(column));
    for (std::size_t row = 0; row < rows; ++row) {
        table.rows.emplace_back(table.header.size(), name);
        table.rows.back().front() = "row" + std::to_string(row);
    }
    return table;
}

std::size_t count(const std::string& text, const std::string& part)
{
    std::size_t found = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

TEST(TablePrinting, EverySheetHasTheHeaderAndEveryRowIsOnOneInOrder)
{
    for (const QSizeF& size : {kA4, kLetter}) {
        const PrintedTable table = tableOf(100);
        const auto sheets = sheetsOf(table, size);
        EXPECT_GE(sheets.size(), 3u);
        EXPECT_LE(sheets.size(), 5u);
        std::vector<std::string> rows;
        for (const Sheet& sheet : sheets) {
            for (const std::string& title : table.header)
                EXPECT_EQ(std::count(sheet.texts.begin(), sheet.texts.end(), title), 1) << title;
            for (const std::string& text : sheet.texts) {
                if (text.starts_with("row"))
                    rows.push_back(text);
            }
            EXPECT_GT(std::count(sheet.texts.begin(), sheet.texts.end(), "name"), 0);
        }
        ASSERT_EQ(rows.size(), 100u);
        for (std::size_t row = 0; row < rows.size(); ++row)
            EXPECT_EQ(rows[row], "row" + std::to_string(row));
    }
}

TEST(TablePrinting, ItsNameStandsOnTopAndBelowEverySheetWithTheSheetsNumber)
{
    const auto sheets = sheetsOf(tableOf(40), kA4);
    ASSERT_EQ(sheets.size(), 2u);
    EXPECT_THAT(sheets[0].texts, Contains("/a/path"));
    EXPECT_THAT(sheets[0].texts, Contains("Mode"));
    EXPECT_EQ(std::count(sheets[0].texts.begin(), sheets[0].texts.end(), "EQ"), 2);
    EXPECT_EQ(std::count(sheets[1].texts.begin(), sheets[1].texts.end(), "EQ"), 1);
    EXPECT_EQ(sheets[0].texts.back(), "Sheet 1 of 2");
    EXPECT_EQ(sheets[1].texts.back(), "Sheet 2 of 2");
}

TEST(TablePrinting, NothingIsCutOffWhateverTheNames)
{
    const std::string wide(200, 'W');
    for (const std::string& name :
         {wide, std::string(200, 'W') + " " + wide, std::string("音量音量音量音量音量音量"),
          std::string("תדרחיתוךתדרחיתוךתדרחיתוךתדרחיתוך"), std::string("e\u0301e\u0302e\u0303")}) {
        PrintedTable table = tableOf(6, name);
        table.title = table.lines[1] = name;
        for (const QSizeF& size : {kA4, kLetter}) {
            for (const Sheet& sheet : sheetsOf(table, size))
                EXPECT_TRUE(QRectF(QPointF(-1, -1), size + QSizeF(2, 2)).contains(sheet.ink))
                    << name << sheet.ink.right();
        }
    }
}

TEST(TablePrinting, AWordWiderThanItsColumnIsBrokenAndWhole)
{
    std::string letters;
    const auto sheets = sheetsOf(tableOf(1, std::string(50, 'W')), kA4);
    for (const std::string& text : sheets.at(0).texts) {
        if (text.starts_with("WW"))
            letters += text;
    }
    EXPECT_EQ(letters, std::string(8 * 50, 'W'));
}

TEST(TablePrinting, ATextHigherThanASheetEndsWithIt)
{
    std::string lines;
    for (int line = 0; line < 500; ++line)
        lines += "line\u2028";
    PrintedTable table = tableOf(3, lines);
    table.lines[1] = lines;
    const auto sheets = sheetsOf(table, kA4);
    EXPECT_LE(sheets.size(), 4u);
    for (const Sheet& sheet : sheets)
        EXPECT_LE(sheet.ink.bottom(), kA4.height() + 1);
}

TEST(TablePrinting, NamesAreTextAndNoMarkup)
{
    EXPECT_THAT(sheetsOf(tableOf(1, "<b>&amp;"), kA4).at(0).texts, Contains("<b>&amp;"));
}

TEST(TablePrinting, AnEmojiIsAPictureSincePdfHasNoLettersInColour)
{
    EXPECT_EQ(sheetsOf(tableOf(1, "🎛️ Knob"), kA4).at(0).pictures.size(), 8u);
    EXPECT_EQ(sheetsOf(tableOf(1, "音 Écho 25°"), kA4).at(0).pictures.size(), 0u);
}

TEST(TablePrinting, ATableWithoutRowsIsOneSheet)
{
    EXPECT_EQ(sheetsOf(tableOf(0), kA4).size(), 1u);
}

TEST(TablePrinting, APdfIsOnThePaperOfTheCountry)
{
    for (const auto& [locale, box] : {std::pair{"de_DE", "[0 0 842"}, std::pair{"en_US", "[0 0 792"},
                                      std::pair{"en_GB", "[0 0 842"}, std::pair{"fr_CA", "[0 0 792"}}) {
        const QLocale before;
        QLocale::setDefault(QLocale(QLatin1String(locale)));
        const std::string pdf = tablePdf(tableOf(100));
        QLocale::setDefault(before);
        EXPECT_TRUE(pdf.starts_with("%PDF-1.")) << locale;
        EXPECT_NE(pdf.find("%%EOF"), std::string::npos) << locale;
        const std::size_t sheets = count(pdf, "/Type /Page\n");
        EXPECT_GE(sheets, 3u) << locale;
        EXPECT_EQ(count(pdf, box), sheets) << locale;
    }
}

} // namespace

} // namespace platform::qt
