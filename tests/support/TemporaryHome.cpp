#include "tests/support/TemporaryHome.h"

#include "tests/support/TestBaseUrl.h"

#include <utility>

#include <stdlib.h>

namespace test {

namespace {

constexpr char kOrderFile[] = "CSParameterOrder.plist";
#ifdef __APPLE__
constexpr char kData[] = "home/Library/Application Support";
constexpr char kDrafts[] = "home/Library/Autosave Information/" KV_BUNDLE_IDENTIFIER;
#else
constexpr char kData[] = "data";
constexpr char kDrafts[] = "state/kvOrvantaLogic_Tool/drafts";
#endif

} // namespace

void liveBelow(const Path& root)
{
    // The system's own calls on macOS ask CFFIXED_USER_HOME.
    for (const auto& [name, folder] : {std::pair("HOME", "home"), std::pair("CFFIXED_USER_HOME", "home"),
                                       std::pair("KV_LOCAL_LIBRARY", "Library"), std::pair("XDG_CONFIG_HOME", "config"),
                                       std::pair("XDG_DATA_HOME", "data"), std::pair("XDG_STATE_HOME", "state")})
        ::setenv(name, (root / folder).c_str(), 1);
    setBaseUrl(kNobodysUrl);
}

Path dataBelow(const Path& root)
{
    return root / kData;
}

Path draftsBelow(const Path& root)
{
    return root / kDrafts;
}

Path TemporaryHome::builtIn(const std::string& plugin) const
{
    return path() / "Library/Application Support/Logic/Plug-In Settings" / plugin / kOrderFile;
}

Path TemporaryHome::thirdParty(const std::string& maker, const std::string& plugin) const
{
    return path() / "home/Library/Audio/Presets" / maker / plugin / kOrderFile;
}

Path TemporaryHome::addPlugin(const std::string& maker, const std::string& plugin, const Texts& order) const
{
    writeDictionary(thirdParty(maker, plugin), orderFile(order));
    return thirdParty(maker, plugin);
}

} // namespace test
