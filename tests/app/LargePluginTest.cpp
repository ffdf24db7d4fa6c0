// Ten thousand parameters: nothing the user waits for. A hundred thousand: nothing that grows faster than its input.

#include "tests/support/WindowTest.h"

#include "mapping/EditingState.h"

#include <QElapsedTimer>
#include <QLineEdit>

namespace test {

class LargePluginTest : public WindowTest {
protected:
    static qint64 millisecondsOf(const std::function<void()>& action)
    {
        QElapsedTimer timer;
        timer.start();
        action();
        QApplication::processEvents();
        return timer.elapsed();
    }
};

// The limits are wide enough for a busy machine and a sanitizer, and far below what anything quadratic takes.
TEST_F(LargePluginTest, LoadingSearchingAndPressingStayInstant)
{
    writeDictionary(builtIn("Huge"), orderFile(numbered(10000)));
    launch();
    EXPECT_LT(millisecondsOf([this] { select("Huge"); }), 2000);
    EXPECT_EQ(mapping::totalPages, 1250);
    EXPECT_LT(millisecondsOf([this] { typeInto("parameterSearch", "Knob 99"); }), 2000);
    EXPECT_EQ(columnOf("tablePlistOfSelectedPlugin", 1).size(), 112U);
    find<QLineEdit>("parameterSearch")->clear();
    EXPECT_LT(millisecondsOf([this] {
                  for (int press = 0; press < 20; ++press)
                      pressPot(press % 8 + 1);
              }),
              2000);
    EXPECT_LT(millisecondsOf([this] { click("kvMovePage_Last"); }), 2000);
    EXPECT_LT(millisecondsOf([this] { alertsOf([this] { click("kvExportToPlist"); }); }), 4000);
    EXPECT_EQ(textsAt(builtIn("Huge"), kOrder).size(), 10000U);
}

// What is quadratic takes minutes here.
TEST_F(LargePluginTest, AHundredThousandParametersLoadAndMove)
{
    writeDictionary(builtIn("Huge"), orderFile(numbered(100000)));
    launch();
    EXPECT_LT(millisecondsOf([this] { select("Huge"); }), 10000);
    EXPECT_EQ(mapping::totalPages, 12500);
    EXPECT_LT(millisecondsOf([this] { typeInto("parameterSearch", "999"); }), 5000);
    EXPECT_LT(millisecondsOf([this] { pressPot(1); }), 5000);
    EXPECT_LT(millisecondsOf([this] { click("kvMovePage_Last"); }), 5000);
}

} // namespace test
