#include "fuzz/Targets.h"

#include "fuzz/Require.h"
#include "platform/plist/PropertyListCodec.h"
#include "platform/plist/TextEncoding.h"

#include <utility>

namespace fuzz {

namespace plist = platform::plist;

namespace {

/// The value with what the forms write differently made the same: a moment is its seconds, a real is 64 bits wide.
plist::Value comparable(const plist::Value& value)
{
    if (const auto* array = std::get_if<plist::Array>(&value.held)) {
        plist::Array result;
        for (const plist::Value& element : *array)
            result.push_back(comparable(element));
        return result;
    }
    if (const auto* dictionary = std::get_if<plist::Dictionary>(&value.held)) {
        plist::Dictionary result;
        for (const auto& [key, element] : dictionary->entries)
            result.entries.emplace_back(key, comparable(element));
        return result;
    }
    if (const auto* real = std::get_if<plist::Real>(&value.held))
        return plist::Real(real->toDouble());
    if (const auto* moment = std::get_if<plist::DateText>(&value.held)) {
        const auto seconds = plist::secondsOfDate(moment->text);
        require(seconds.has_value(), "a moment that was read has seconds");
        return plist::DateSeconds{plist::Real(*seconds)};
    }
    if (const auto* moment = std::get_if<plist::DateSeconds>(&value.held))
        return plist::DateSeconds{plist::Real(moment->seconds.toDouble())};
    return value;
}

/// What was read is the same when it was written and is read again.
void requireRoundTrips(const plist::Document& document)
{
    const plist::Value expected = comparable(document.root);

    const std::string binary = plist::writeBinary(document.root);
    if (binary.size() <= plist::kMaxFileBytes) {
        const auto read = plist::readBinary(binary);
        require(read.has_value(), "what is written binary is read");
        require(comparable(*read) == expected, "what is written binary reads as the same");
    }
    const auto xml = plist::writeXml(document.root);
    if (xml && xml->size() <= plist::kMaxFileBytes) {
        const auto read = plist::readXml(*xml);
        require(read.has_value(), "what is written as XML is read");
        require(comparable(*read) == expected, "what is written as XML reads as the same");
    }
    const std::string again = plist::write(document);
    if (again.size() <= plist::kMaxFileBytes) {
        const auto read = plist::parse(again);
        require(read.has_value(), "a file that is written again is read");
        const bool sameForm = read->form == document.form; // binary is what XML cannot hold: a date is seconds there
        require(sameForm ? read->root == document.root : comparable(read->root) == expected,
                "a file that is written again is the same to the bit");
    }
}

} // namespace

void propertyList(std::string_view bytes)
{
    if (const auto document = plist::parse(bytes))
        requireRoundTrips(*document);
}

void oldStyleList(std::string_view bytes)
{
    const plist::DecodedText decoded(bytes);
    if (auto root = plist::readOldStyle(decoded.text()))
        requireRoundTrips({std::move(*root), plist::Form::xml});
}

} // namespace fuzz
