// A parameter-order file of a hundred thousand texts, read and written, beside Debian's converter of property lists and
// its library. In one form it is the library, in this process: the converter only copies a file that is in the form
// asked for already. From file to file both convert to the other form.

#include "bench/ChildProcess.h"
#include "bench/Figure.h"
#include "platform/files/Files.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/OrderFiles.h"
#include "tests/support/TemporaryFolder.h"

#include <plist/plist.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {

namespace plist = platform::plist;
using plist::Form;
using std::filesystem::path;

constexpr int kTexts = 100'000;

struct Files {
    Files(int texts, Form form)
    {
        // Every third name holds what XML has to escape, as names of plug-ins do now and then.
        test::Texts order = test::numbered(texts, "Filter Cutoff");
        for (std::size_t i = 0; i < order.size(); i += 3)
            order[i] += " Env & LFO";
        test::writeDictionary(large, test::orderFile(order), form);
        test::writeDictionary(tiny, test::orderFile({"1 Gain"}), form);
        bytes = test::read(large);
    }

    /// From file to file, as the converter works.
    double convert(Form form) const
    {
        return millisecondsOf([&] {
            auto document = plist::parse(platform::files::read(large).value()).value();
            document.form = form;
            const std::string written = plist::write(document);
            std::ofstream(out, std::ios::binary).write(written.data(), static_cast<std::streamsize>(written.size()));
        });
    }

    double converter(const path& file, Form form) const
    {
        return run({"plistutil", "-i", file, "-o", out, "-f", form == Form::xml ? "xml" : "bin"});
    }

    /// What the converter takes to start and end.
    double converterStart(Form form) const
    {
        double least = converter(tiny, form);
        for (int more = 0; more < 20; ++more)
            least = std::min(least, converter(tiny, form));
        return least;
    }

    double parseAndWrite() const
    {
        return millisecondsOf([&] {
            if (plist::write(plist::parse(bytes).value()).size() != bytes.size())
                throw std::runtime_error("other bytes");
        });
    }

    double libraryParseAndWrite(Form form) const
    {
        return millisecondsOf([&] {
            const auto size = static_cast<std::uint32_t>(bytes.size());
            plist_t root = nullptr;
            char* written = nullptr;
            std::uint32_t writtenSize = 0;
            (form == Form::xml ? plist_from_xml : plist_from_bin)(bytes.data(), size, &root);
            (form == Form::xml ? plist_to_xml : plist_to_bin)(root, &written, &writtenSize);
            plist_free(root);
            plist_to_xml_free(written);
        });
    }

    test::TemporaryFolder folder;
    path large = folder / "large.plist";
    path tiny = folder / "tiny.plist";
    path out = folder / "out.plist";
    std::string bytes;
};

void addForm(Form form, double sameFormLimit, double convertedLimit)
{
    const std::string name = form == Form::xml ? "XML" : "binary";
    const Form other = form == Form::xml ? Form::binary : Form::xml;
    add(Figure{"same form again, 100,000 texts, " + name, "plistutil's library", sameFormLimit, 9, [form] {
                   const auto files = std::make_shared<Files>(kTexts, form);
                   return std::pair<Measure, Measure>([files] { return files->parseAndWrite(); },
                                                      [files, form] { return files->libraryParseAndWrite(form); });
               }});
    add(Figure{"parse and write 100,000 texts, from " + name, "plistutil", convertedLimit, 9, [form, other] {
                   const auto files = std::make_shared<Files>(kTexts, form);
                   const double start = files->converterStart(other);
                   return std::pair<Measure, Measure>(
                       [files, other] { return files->convert(other); },
                       [files, other, start] { return files->converter(files->large, other) - start; });
               }});
    add(Growth{"growth: parse and write, " + name, kTexts / 10, 5, [form](int texts) {
                   const auto files = std::make_shared<Files>(texts, form);
                   return [files] { return files->parseAndWrite(); };
               }});
}

} // namespace

void addPropertyListFigures()
{
    addForm(Form::xml, 0.6, 1.0);
    addForm(Form::binary, 0.5, 0.5);
}

} // namespace bench
