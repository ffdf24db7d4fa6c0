#pragma once
// The real effects on a desktop: modal message boxes, the desktop's file opener, the user's folders, translations,
// the clipboard.

#include "platform/Effects.h"

namespace platform::qt {

class CompletionGate;

/// An alert keeps the gate closed while it is open.
class MessageBoxAlerts final : public Alerts {
public:
    explicit MessageBoxAlerts(CompletionGate& gate) : gate_(gate) {}

    int runModal(const Alert& alert) override;

private:
    CompletionGate& gate_;
};

class DesktopWorkspace final : public Workspace {
public:
    void openFile(const std::filesystem::path& path) override;
    /// Selected in its folder on a Mac, elsewhere the folder alone.
    void revealFile(const std::filesystem::path& path) override;
};

/// Home is `HOME`. The machine-wide library is /Library, or the folder that KV_LOCAL_LIBRARY names. The user's
/// Application Support is in the home's Library on macOS, elsewhere XDG_DATA_HOME. Resources lie beside the program.
class UserFolders final : public Folders {
public:
    std::filesystem::path home() const override;
    std::filesystem::path localApplicationSupport() const override;
    std::filesystem::path userApplicationSupport() const override;
    std::filesystem::path drafts() const override;
    std::filesystem::path resources() const override;
};

/// Looks texts up in the application's installed translators, in the context "Localizable".
class TranslatedTexts final : public Localization {
public:
    std::string localizedString(const std::string& english) const override;
    std::string folded(std::string_view text) const override;
};

/// As the system and the libraries tell them while the program runs.
class SystemSurroundings final : public Surroundings {
public:
    std::string system() const override;
    std::vector<std::string> libraries() const override;
};

class SystemClipboard final : public Clipboard {
public:
    /// MIME type of the program's own form.
    static constexpr char kOwnType[] = "application/x-kv-slots";

    void set(const std::string& own, const std::string& text) override;
    bool holdsOwn() const override;
    std::string own() const override;
};

} // namespace platform::qt
