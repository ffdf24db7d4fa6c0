#pragma once
// What the program says and asks for, noted down instead of shown.

#include "platform/Effects.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

namespace test {

/// What an alert shows, whether it is on screen or not.
struct ShownAlert {
    std::string text;
    std::string informativeText;
    std::vector<std::string> buttons = {"OK"};

    bool operator==(const ShownAlert&) const = default;
};

inline void PrintTo(const ShownAlert& alert, std::ostream* stream)
{
    *stream << '"' << alert.text << "\" / \"" << alert.informativeText << '"';
    for (const std::string& button : alert.buttons)
        *stream << " [" << button << ']';
}

struct NotedAlerts final : platform::Alerts {
    int runModal(const platform::Alert& alert) override
    {
        shown.push_back({alert.messageText, alert.informativeText, alert.buttons});
        return kFirstButton;
    }

    std::vector<ShownAlert> shown;
};

struct NotedFiles final : platform::Workspace {
    void openFile(const Path& path) override { opened.push_back(path); }
    void revealFile(const Path& path) override { revealed.push_back(path); }

    std::vector<Path> opened;
    std::vector<Path> revealed;
};

struct NotedLog final : platform::Log {
    void write(std::string_view line) override { lines.emplace_back(line); }
    void flush() override {}
    std::vector<std::string> linesWith(std::string_view beginning) const
    {
        std::vector<std::string> found;
        std::copy_if(lines.begin(), lines.end(), std::back_inserter(found),
                     [&](const std::string& line) { return line.starts_with(beginning); });
        return found;
    }

    std::vector<std::string> lines;
};

} // namespace test
