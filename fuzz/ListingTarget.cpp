#include "fuzz/Targets.h"

#include "community/Listing.h"
#include "community/Requests.h"
#include "fuzz/Require.h"
#include "platform/Utf8.h"
#include "platform/qt/QtJson.h"

#include <algorithm>
#include <string>

namespace fuzz {

namespace {

bool isAddress(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c > 0x20 && c < 0x7f; });
}

void checkEntry(const platform::Record& entry)
{
    for (const std::string& key : entry.keys()) {
        require(platform::isUtf8(key), "a key is UTF-8");
        require(platform::isUtf8(entry.text(key)), "a text is UTF-8");
        require(entry.findText(key).has_value(), "every value is a text");
        require(platform::isUtf8(community::readableTitle(key)), "a title is UTF-8");
    }
    const auto location = community::textOf(&entry, community::kFileLocation);
    require(isAddress(community::sharedFileAddress("http://127.0.0.1/", location)), "an address can be sent");
}

} // namespace

void listing(std::string_view bytes)
{
    const std::string reply = community::replyText(std::string(bytes));
    const auto entries = platform::qt::QtJson().objectsOf(reply);
    for (const platform::Record& entry : entries)
        checkEntry(entry);
    const auto columns = community::columnsOf(entries);
    require(!columns.empty() && columns.size() <= 24, "there are 1 to 24 columns");
    for (const community::Column& column : columns) {
        require(!column.title.empty() || column.key.empty(), "a column has a title");
        const auto same = [&](const community::Column& other) { return other.key == column.key; };
        require(std::count_if(columns.begin(), columns.end(), same) == 1, "no column comes twice");
    }
}

} // namespace fuzz
