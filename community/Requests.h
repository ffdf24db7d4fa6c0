#pragma once
// What is sent to the community server and how its replies read. A value that is absent is sent as "(null)", which is
// not the same as an empty one.

#include <optional>
#include <string>
#include <string_view>

namespace community {

using Value = std::optional<std::string>;

/// A text as it may stand in an address: every byte of a character outside ASCII, and every ASCII character that no
/// address may hold, becomes %XX. What is legal anywhere in an address stays, "&", "=" and "?" included, so such a
/// character in a name reaches the server as structure of the query; that is meant.
std::string escaped(std::string_view text);

/// The text, or what stands for one that is absent.
std::string textOrNull(const Value& value);

// Addresses of the requests, below `base`.

std::string loginCheckAddress(const std::string& base, const Value& userName, const Value& pin);
std::string newUserAddress(const std::string& base, const Value& userName, const Value& emailAddress);
std::string uploadAddress(const std::string& base, const Value& user, const Value& plugin, const Value& comments);
std::string listingAddress(const std::string& base, const Value& plugin);
/// The identifier is not escaped: the server gets back what it sent.
std::string downloadRegistrationAddress(const std::string& base, const Value& patchId);
/// Escaped as a whole, so that the separators of the location stay.
std::string sharedFileAddress(const std::string& base, const Value& fileLocation);

// The upload's form: one part named "userfile", always under the name "CSParameterOrder.plist".

std::string uploadContentType();
/// 252 bytes more than the file. Begins with a line break ahead of the first delimiter; the server relies on it.
std::string uploadBody(std::string_view file);

/// A reply as text. None, and what is not UTF-8, reads as an empty one.
std::string replyText(std::optional<std::string> reply);

/// Whether a login check's reply says that name and PIN belong together: exactly "\nOK\n".
bool isLoginAccepted(std::string_view reply);

} // namespace community
