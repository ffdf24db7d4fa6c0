#pragma once
// The user's preferences where the system keeps them: the user defaults on macOS, elsewhere a property list below
// XDG_CONFIG_HOME (or ~/.config) named by the bundle identifier, which only its owner can read at any time.

#include "platform/Effects.h"

namespace platform {

class UserPreferences final : public Preferences {
public:
    explicit UserPreferences(std::string bundleIdentifier);

    std::optional<std::string> text(std::string_view key) const override;
    /// Nothing is stored when the system refuses; that is not reported.
    void setTexts(const std::vector<Entry>& entries) override;

private:
    std::string bundleIdentifier_;
};

} // namespace platform
