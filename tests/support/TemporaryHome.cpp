#include "tests/support/TemporaryHome.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace support {

namespace fs = std::filesystem;

TemporaryHome::TemporaryHome()
{
    std::string pattern = (fs::temp_directory_path() / "kv-test-XXXXXX").native();
    if (!::mkdtemp(pattern.data()))
        std::abort();
    path_ = pattern;
    for (const auto& [name, folder] :
         {std::pair("HOME", path_), std::pair("KV_LOCAL_LIBRARY", path_ / "Library-of-all"),
          std::pair("XDG_CONFIG_HOME", path_ / ".config"), std::pair("XDG_DATA_HOME", path_ / ".local/share")}) {
        fs::create_directories(folder);
        ::setenv(name, folder.c_str(), 1);
    }
}

TemporaryHome::~TemporaryHome()
{
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

fs::path TemporaryHome::addPlugin(std::string_view maker, std::string_view name, std::string_view content) const
{
    const fs::path file = path_ / "Library/Audio/Presets" / maker / name / "CSParameterOrder.plist";
    fs::create_directories(file.parent_path());
    writeFile(file, content);
    return file;
}

std::string orderFile(std::string_view elements)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
                       "\t<key>ControlSurfaceParameterOrder</key>\n\t<array>\n";
    while (!elements.empty()) {
        const std::string_view element = elements.substr(0, elements.find(','));
        elements.remove_prefix(std::min(elements.size(), element.size() + 1));
        text.append("\t\t<string>").append(element).append("</string>\n");
    }
    return text + "\t</array>\n</dict>\n</plist>\n";
}

std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const fs::path& path, std::string_view content)
{
    std::ofstream(path, std::ios::binary) << content;
}

} // namespace support
