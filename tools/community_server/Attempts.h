#pragma once
// How often PINs may be tried. After some that were wrong, a further try has to wait, each time for twice as long: for
// a name from an address, for an address whatever the name, and, far more leniently, for a name wherever it is tried.
// Where somebody logged in before, tries elsewhere do not count. Takes bounded memory; is forgotten when the server
// ends.

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace community_server {

class Attempts {
public:
    /// Whether a PIN may be tried now (milliseconds since any moment), and if so counts the try as a wrong one, so that
    /// several at once do not slip through.
    bool begin(const std::string& name, const std::string& address, bool isKnownThere, std::int64_t now);
    /// Takes back what begin() counted for the try, since its PIN was right.
    void succeeded(const std::string& name, const std::string& address, bool isKnownThere);

    std::size_t size() const { return entries_.size(); }
    static constexpr std::size_t kMost = 20'000;

private:
    struct Entry {
        int wrong = 0;
        std::int64_t waitsUntil = 0;
        std::int64_t forgottenAt = 0;
    };
    struct Limit {
        int free;               ///< wrong tries without any wait
        std::int64_t longestMs; ///< longest wait
    };
    bool mayTry(const std::string& key, std::int64_t now) const;
    void count(const std::string& key, const Limit& limit, std::int64_t now);
    void takeBack(const std::string& key);
    void forgetSome(std::int64_t now);

    std::unordered_map<std::string, Entry> entries_;
};

} // namespace community_server
