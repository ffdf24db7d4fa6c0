#include "tools/community_server/Pins.h"

#include <sodium.h>

#include <array>
#include <stdexcept>

namespace community_server {

namespace {

constexpr unsigned long long kPasses = 2;
constexpr std::size_t kMemory = std::size_t{19} << 20;

constexpr std::string_view kPbkdf2 = "pbkdf2:";
constexpr int kPbkdf2Rounds = 100'000;
using Hash = std::array<unsigned char, crypto_auth_hmacsha256_BYTES>;

const unsigned char* bytesOf(std::string_view text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

void prepare()
{
    static const bool isReady = sodium_init() >= 0;
    if (!isReady)
        throw std::runtime_error("no random numbers");
}

std::string hexOf(std::string_view bytes)
{
    std::string hex(2 * bytes.size() + 1, '\0');
    sodium_bin2hex(hex.data(), hex.size(), bytesOf(bytes), bytes.size());
    hex.pop_back();
    return hex;
}

std::string fromHex(std::string_view hex)
{
    std::string bytes(hex.size() / 2, '\0');
    std::size_t size = 0;
    sodium_hex2bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), hex.data(), hex.size(), nullptr, &size,
                   nullptr);
    bytes.resize(size);
    return bytes;
}

/// PBKDF2 with SHA-256, the first block, which is all that earlier libraries kept.
Hash pbkdf2(std::string_view pin, std::string_view salt)
{
    crypto_auth_hmacsha256_state keyed;
    crypto_auth_hmacsha256_init(&keyed, bytesOf(pin), pin.size());
    const auto next = [&](std::string_view message) {
        crypto_auth_hmacsha256_state state = keyed;
        crypto_auth_hmacsha256_update(&state, bytesOf(message), message.size());
        Hash hash;
        crypto_auth_hmacsha256_final(&state, hash.data());
        return hash;
    };
    Hash last = next(std::string(salt) + std::string("\0\0\0\1", 4));
    Hash sum = last;
    for (int round = 1; round < kPbkdf2Rounds; ++round) {
        last = next({reinterpret_cast<const char*>(last.data()), last.size()});
        for (std::size_t i = 0; i < sum.size(); ++i)
            sum[i] ^= last[i];
    }
    return sum;
}

bool isPbkdf2Pin(std::string_view pin, std::string_view kept)
{
    const std::size_t colon = kept.find(':');
    if (colon == kept.npos)
        return false;
    const std::string hash = fromHex(kept.substr(colon + 1));
    return hash.size() == Hash{}.size() &&
           sodium_memcmp(pbkdf2(pin, fromHex(kept.substr(0, colon))).data(), hash.data(), hash.size()) == 0;
}

} // namespace

std::string randomPin()
{
    prepare();
    return std::to_string(1'000'000 + randombytes_uniform(1'000'000)).substr(1);
}

std::string randomName()
{
    prepare();
    std::string bytes(16, '\0');
    randombytes_buf(bytes.data(), bytes.size());
    return hexOf(bytes);
}

std::string hashOfPin(std::string_view pin)
{
    prepare();
    std::array<char, crypto_pwhash_STRBYTES> kept{};
    if (crypto_pwhash_str_alg(kept.data(), pin.data(), pin.size(), kPasses, kMemory, crypto_pwhash_ALG_ARGON2ID13) != 0)
        throw std::runtime_error("no memory to hash a PIN");
    return kept.data();
}

bool isPin(std::string_view pin, const std::string& kept)
{
    prepare();
    if (kept.starts_with(kPbkdf2))
        return isPbkdf2Pin(pin, std::string_view(kept).substr(kPbkdf2.size()));
    static const std::string nobodys = hashOfPin(randomName());
    const std::string& known = kept.empty() ? nobodys : kept;
    return crypto_pwhash_str_verify(known.c_str(), pin.data(), pin.size()) == 0 && !kept.empty();
}

bool isOutdated(const std::string& kept)
{
    return kept.starts_with(kPbkdf2) || crypto_pwhash_str_needs_rehash(kept.c_str(), kPasses, kMemory) != 0;
}

std::string keptFromPbkdf2(std::string_view salt, std::string_view hash)
{
    return std::string(kPbkdf2) + hexOf(salt) + ":" + hexOf(hash);
}

} // namespace community_server
