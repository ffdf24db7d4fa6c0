// A parameter-order file of a hundred thousand texts, read and written, beside a converter that does the same.

#include "bench/ChildProcess.h"
#include "bench/Figure.h"
#include "platform/Files.h"
#include "platform/PropertyList.h"
#include "tests/support/OrderFiles.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {

namespace plist = platform::plist;
using std::filesystem::path;

constexpr int kTexts = 100'000;

struct Files {
    Files(int texts, plist::Form form)
    {
        // Every third name holds what XML has to escape, as names of plug-ins do now and then.
        test::Texts order = test::numbered(texts, "Filter Cutoff");
        for (std::size_t i = 0; i < order.size(); i += 3)
            order[i] += " Env & LFO";
        test::writeDictionary(large, test::orderFile(order), form);
        test::writeDictionary(tiny, test::orderFile({"1 Gain"}), form);
    }

    double ours() const
    {
        return millisecondsOf([&] {
            const auto bytes = platform::files::read(large);
            const auto document = plist::parse(bytes.value());
            const std::string written = plist::write(document.value());
            std::ofstream(out, std::ios::binary).write(written.data(), static_cast<std::streamsize>(written.size()));
        });
    }

    double converter(const path& file, const char* form) const
    {
        return run({"plistutil", "-i", file, "-o", out, "-f", form});
    }

    /// What the converter takes to start and end.
    double converterStart(const char* form) const
    {
        double least = converter(tiny, form);
        for (int more = 0; more < 20; ++more)
            least = std::min(least, converter(tiny, form));
        return least;
    }

    test::TemporaryFolder folder;
    path large = folder / "large.plist";
    path tiny = folder / "tiny.plist";
    path out = folder / "out.plist";
};

void addForm(const std::string& name, const char* form, plist::Form ownForm, double limit)
{
    const auto prepare = [form, ownForm] {
        const auto files = std::make_shared<Files>(kTexts, ownForm);
        const double start = files->converterStart(form);
        return std::pair<Measure, Measure>(
            [files] { return files->ours(); },
            [files, form, start] { return files->converter(files->large, form) - start; });
    };
    add(Figure{"parse and write 100,000 texts, " + name, std::string("plistutil -f ") + form, limit, 15, prepare});
    add(Growth{"growth: parse and write, " + name, kTexts / 10, 5, [ownForm](int texts) {
                   const auto files = std::make_shared<Files>(texts, ownForm);
                   return [files] { return files->ours(); };
               }});
}

} // namespace

void addPropertyListFigures()
{
    addForm("XML", "xml", plist::Form::xml, 1.0);
    addForm("binary", "bin", plist::Form::binary, 0.5);
}

} // namespace bench
