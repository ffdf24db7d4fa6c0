#pragma once
// PINs as they are kept: hashed with argon2id, so that a stolen database tells them only at great cost. A hash takes
// some 40 ms and 19 MiB; no two should be made at once. PINs of earlier libraries (PBKDF2) are known too.

#include <string>
#include <string_view>

namespace community_server {

/// Six digits at random.
std::string randomPin();
/// 32 hexadecimal digits at random.
std::string randomName();

/// The form in which a PIN is kept.
std::string hashOfPin(std::string_view pin);
/// Whether `kept` is the PIN's, in constant time. An empty one is nobody's and takes as long.
bool isPin(std::string_view pin, const std::string& kept);
/// Whether the PIN should be hashed anew, once it is known.
bool isOutdated(const std::string& kept);

/// An earlier library's salt and hash as one text that isPin() takes.
std::string keptFromPbkdf2(std::string_view salt, std::string_view hash);

} // namespace community_server
