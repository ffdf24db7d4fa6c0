#pragma once
// What controller and delegate do to the world beyond files: alerts and errors, opening a file for the user, printing,
// well-known folders, the log, preferences, JSON and HTTP, translated texts, the clipboard, undo managers and what
// all of that runs on. `main` composes the real ones and hands them over in one Platform.

#include "platform/UndoManager.h"
#include "platform/controls/Record.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

class Http;
struct Error;

/// A modal alert. Both texts are shown as plain text.
struct Alert {
    enum class Style { warning = 0, informational = 1, critical = 2 };

    std::string messageText;
    std::string informativeText;
    std::vector<std::string> buttons;
    Style style = Style::warning;
};

class Alerts {
public:
    static constexpr int kFirstButton = 1000;

    virtual ~Alerts() = default;
    /// Shows the alert and returns when a button was pressed: kFirstButton for the first, one more for each further
    /// one. Dismissing it otherwise counts as its last button.
    virtual int runModal(const Alert& alert) = 0;
};

class ErrorPresentation {
public:
    virtual ~ErrorPresentation() = default;
    /// Tells the user of an error and offers what may help. Answers whether the error was recovered.
    virtual bool presentError(const Error& error) = 0;
};

class Workspace {
public:
    virtual ~Workspace() = default;
    /// Opens a file in the user's default application for it, whether or not the file exists.
    virtual void openFile(const std::filesystem::path& path) = 0;
    /// Shows where a file lies, in the system's file manager.
    virtual void revealFile(const std::filesystem::path& path) = 0;
};

/// A table for paper. Texts are shown as they are, never as markup.
struct PrintedTable {
    std::string title;
    std::vector<std::string> lines; ///< below the title
    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows; ///< as wide as the header
};

class Printing {
public:
    virtual ~Printing() = default;
    /// Asks the user how, and prints. False when it failed, but not when the user gave it up.
    virtual bool print(const PrintedTable& table) = 0;
    /// The bytes of a PDF file.
    virtual std::string pdf(const PrintedTable& table) = 0;
    /// Asks the user where to save a file, and whether to replace the one there; none when that was given up.
    virtual std::optional<std::filesystem::path> whereToSave(const std::string& proposedName) = 0;
};

class Folders {
public:
    virtual ~Folders() = default;
    /// The user's home folder.
    virtual std::filesystem::path home() const = 0;
    /// The machine-wide Application Support folder.
    virtual std::filesystem::path localApplicationSupport() const = 0;
    /// The user's own Application Support folder.
    virtual std::filesystem::path userApplicationSupport() const = 0;
    /// Where unsaved edits are kept.
    virtual std::filesystem::path drafts() const = 0;
    /// Where the program's resources lie.
    virtual std::filesystem::path resources() const = 0;
};

class Localization {
public:
    virtual ~Localization() = default;
    /// The text in the user's language; the English text itself where there is no translation.
    virtual std::string localizedString(const std::string& english) const = 0;
    /// A text without what people pass over when they compare names: case and accents.
    virtual std::string folded(std::string_view text) const = 0;
};

/// The system's clipboard, with content in a form of the program's own beside the text that other programs get.
class Clipboard {
public:
    virtual ~Clipboard() = default;
    virtual void set(const std::string& own, const std::string& text) = 0;
    virtual bool holdsOwn() const = 0;
    /// Anybody may have put it there; empty when there is none.
    virtual std::string own() const = 0;
};

/// The system log: one line a call, in order.
class Log {
public:
    virtual ~Log() = default;
    virtual void write(std::string_view line) = 0;
    /// Hands everything written so far to the system.
    virtual void flush() = 0;
};

/// Texts kept for the user from run to run, readable by nobody else.
class Preferences {
public:
    using Entry = std::pair<std::string, std::string>;

    virtual ~Preferences() = default;
    /// None when nothing was ever stored under the key, which is not the same as an empty text.
    virtual std::optional<std::string> text(std::string_view key) const = 0;
    /// Stores all of the texts at once; those under other keys stay.
    virtual void setTexts(const std::vector<Entry>& entries) = 0;
};

class Json {
public:
    virtual ~Json() = default;
    /// The objects of an array, in order, as records of texts: a text as it stands, a number in its digits, anything
    /// else as compact JSON; a null is as good as absent. Keys come in alphabetical order. Elements that are no objects
    /// are passed over; what is no array holds none.
    virtual std::vector<Record> objectsOf(std::string_view json) const = 0;
};

/// What the program runs on and with, found out when it is asked for.
class Surroundings {
public:
    virtual ~Surroundings() = default;
    /// Name and version of the system, and the kind of processor.
    virtual std::string system() const = 0;
    /// Name and version of each library.
    virtual std::vector<std::string> libraries() const = 0;
};

/// The one bundle of effects that controller and delegate are given; all outlive them.
struct Platform {
    Alerts& alerts;
    Workspace& workspace;
    Printing& printing;
    Folders& folders;
    Log& log;
    Http& http;
    Preferences& preferences;
    Json& json;
    ErrorPresentation& errors;
    Localization& localization;
    UndoManagers& undoManagers;
    Clipboard& clipboard;
    Surroundings& surroundings;
};

} // namespace platform
