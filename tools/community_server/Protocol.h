#pragma once
// What stands in the clients' requests, taken apart. Pure functions on any bytes. The clients leave what may stand in
// an address as it is, "&" and "+" among it, so a value ends where the next one's name begins, and a plus is a plus.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace community_server {

/// A request's target, in front of its first "?" and behind it.
struct Target {
    std::string_view path;
    std::string_view query;
};
/// Takes the form with scheme and host too, which proxies may use.
Target targetIn(std::string_view text);

/// The bytes that an escaped text stands for; what is no escape stays.
std::string percentDecoded(std::string_view text);

/// "NAME=VALUE", the value to the end of the query; empty when the query begins otherwise.
std::string onlyValue(std::string_view query, std::string_view name);

struct AccountQuery {
    std::string userName;
    std::string other;
};
/// "userName=...&OTHER=...": the last "&OTHER=" ends the name, since a PIN or an e-mail address holds none.
AccountQuery accountQuery(std::string_view query, std::string_view other);

struct UploadQuery {
    std::string user;
    std::string plugin;
    std::string comments;
};
/// "user=...&plugin=...&comments=...": each ends at the first place that could end it, so that the comments, in which
/// anything may have been typed, are always whole.
UploadQuery uploadQuery(std::string_view query);

/// A whole decimal number from 1 on.
std::optional<std::int64_t> patchIdIn(std::string_view text);

/// The bytes of the form's file: a part named "userfile" of a body of the content type "multipart/form-data".
std::optional<std::string_view> fileInForm(std::string_view contentType, std::string_view body);

/// A text that can be stored and sent out again: so many bytes of UTF-8 without a zero.
bool isText(std::string_view text, std::size_t shortest, std::size_t longest);

} // namespace community_server
