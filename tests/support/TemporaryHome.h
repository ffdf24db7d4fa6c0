#pragma once
// A home folder of a test's own, with the environment pointing into it and no community server; gone with the object.

#include "tests/support/OrderFiles.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

inline constexpr char kPreferences[] = "org.example.kv-test";

/// Lets the program's home, the machine-wide library and all that the system keeps for a user lie below a folder.
void liveBelow(const Path& root);

/// Where the system keeps a user's application data, and the program its drafts, when they live there.
Path dataBelow(const Path& root);
Path draftsBelow(const Path& root);

class TemporaryHome : public TemporaryFolder {
public:
    TemporaryHome() { liveBelow(path()); }

    /// Where a built-in plug-in's file lies, and one of a maker.
    Path builtIn(const std::string& plugin) const;
    Path thirdParty(const std::string& maker, const std::string& plugin) const;
    /// Writes a maker's plug-in with this order; answers its path.
    Path addPlugin(const std::string& maker, const std::string& plugin, const Texts& order) const;
};

} // namespace test
