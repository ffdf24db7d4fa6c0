#pragma once
// A home folder of a test's own, with the environment pointing into it; gone with the object.

#include <filesystem>
#include <string>
#include <string_view>

namespace support {

class TemporaryHome {
public:
    TemporaryHome();
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;
    ~TemporaryHome();

    const std::filesystem::path& path() const { return path_; }
    /// Writes the parameter-order file of a plug-in among the user's presets and returns its path.
    std::filesystem::path addPlugin(std::string_view maker, std::string_view name, std::string_view content) const;

private:
    std::filesystem::path path_;
};

/// A parameter-order file whose order holds these elements, separated by commas.
std::string orderFile(std::string_view elements);

std::string readFile(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, std::string_view content);

} // namespace support
