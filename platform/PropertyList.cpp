#include "platform/PropertyList.h"

#include "platform/PropertyListCodec.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace platform::plist {

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kDaysFrom1970To2001 = 11323;

template <typename Number>
std::string shortestText(Number number)
{
    std::array<char, 40> buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return std::string(buffer.data(), result.ptr);
}

std::string bracketed(std::size_t count, std::string_view what)
{
    return "<" + std::to_string(count) + " " + std::string(what) + ">";
}

// Days since 1970-01-01, proleptic Gregorian. <chrono> stops at year 32767. `month` may lie outside 1 to 12.
std::int64_t daysFromCivil(std::int64_t year, std::int64_t month, std::int64_t day)
{
    const std::int64_t monthsFromMarch = year * 12 + month - 3;
    std::int64_t marchYear = monthsFromMarch / 12;
    std::int64_t marchMonth = monthsFromMarch % 12;
    if (marchMonth < 0) {
        marchMonth += 12;
        --marchYear;
    }
    const std::int64_t era = (marchYear >= 0 ? marchYear : marchYear - 399) / 400;
    const std::int64_t yearOfEra = marchYear - era * 400;
    const std::int64_t dayOfYear = (153 * marchMonth + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

// Takes the fields of a date off the front of its text.
class DateFields {
public:
    explicit DateFields(std::string_view text) : rest_(text) {}

    bool atEnd() const { return rest_.empty(); }

    bool skip(char mark)
    {
        if (!rest_.starts_with(mark)) {
            return false;
        }
        rest_.remove_prefix(1);
        return true;
    }

    // Up to nine digits, so that no sum of fields can overflow.
    std::optional<std::int64_t> number()
    {
        const std::size_t length = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        std::int64_t value = 0;
        if (length == 0 || length > 9) {
            return std::nullopt;
        }
        std::from_chars(rest_.data(), rest_.data() + length, value);
        rest_.remove_prefix(length);
        return value;
    }

    std::optional<double> decimal()
    {
        const std::size_t length = std::min(rest_.find_first_not_of("0123456789."), rest_.size());
        double value = 0;
        const auto result = std::from_chars(rest_.data(), rest_.data() + length, value);
        if (length == 0 || result.ec != std::errc() || result.ptr != rest_.data() + length || value >= 1e9) {
            return std::nullopt;
        }
        rest_.remove_prefix(length);
        return value;
    }

private:
    std::string_view rest_;
};

std::optional<double> secondsOf(std::string_view text)
{
    DateFields fields(trimmed(text));
    const bool negative = fields.skip('-');
    if (!negative) {
        fields.skip('+');
    }
    const auto year = fields.number();
    std::optional<std::int64_t> month = 1, day = 1, hour = 0, minute = 0;
    std::optional<double> second = 0.0;
    if (fields.skip('-')) {
        month = fields.number();
        if (fields.skip('-')) {
            day = fields.number();
            if (fields.skip('T') || fields.skip(' ')) {
                hour = fields.number();
                if (fields.skip(':')) {
                    minute = fields.number();
                    if (fields.skip(':')) {
                        second = fields.decimal();
                    }
                }
            }
        }
    }
    fields.skip('Z');
    if (!year || !month || !day || !hour || !minute || !second || !fields.atEnd()) {
        return std::nullopt;
    }
    const std::int64_t days = daysFromCivil(negative ? -*year : *year, *month, *day) - kDaysFrom1970To2001;
    return static_cast<double>(days * kSecondsPerDay + *hour * 3600 + *minute * 60) + *second;
}

} // namespace

// Numbers

std::optional<std::int64_t> Integer::toInt64() const
{
    const auto number = static_cast<std::int64_t>(bits_);
    return (number < 0) == negative_ ? std::optional(number) : std::nullopt;
}

std::string Integer::toString() const
{
    return negative_ ? std::to_string(static_cast<std::int64_t>(bits_)) : std::to_string(bits_);
}

Real::Real(double number) : bits_(std::bit_cast<std::uint64_t>(number)), single_(false) {}

Real::Real(float number) : bits_(std::bit_cast<std::uint32_t>(number)), single_(true) {}

double Real::toDouble() const
{
    return single_ ? static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits_)))
                   : std::bit_cast<double>(bits_);
}

std::string Real::toString() const
{
    return single_ ? shortestText(std::bit_cast<float>(static_cast<std::uint32_t>(bits_))) : shortestText(toDouble());
}

// Dates

Date::Date(double seconds) : seconds_(seconds) {}

std::optional<Date> Date::fromText(std::string_view text)
{
    const auto seconds = secondsOf(text);
    if (!seconds) {
        return std::nullopt;
    }
    Date date(*seconds);
    date.text_ = std::make_shared<const std::string>(text);
    return date;
}

std::optional<std::string> Date::toText() const
{
    constexpr double kFirstSecond = -63113904000.0; // of year 1
    constexpr double kEndSecond = 252423993600.0;   // of year 9999
    if (text_) {
        return *text_;
    }
    const bool inRange = seconds_ >= kFirstSecond && seconds_ < kEndSecond;
    if (!inRange || std::floor(seconds_) != seconds_ || (seconds_ == 0 && std::signbit(seconds_))) {
        return std::nullopt;
    }
    namespace chrono = std::chrono;
    const auto sinceEpoch = static_cast<std::int64_t>(seconds_) + kDaysFrom1970To2001 * kSecondsPerDay;
    const chrono::sys_seconds time{chrono::seconds(sinceEpoch)};
    const auto midnight = chrono::floor<chrono::days>(time);
    const chrono::year_month_day day(midnight);
    const chrono::hh_mm_ss clock(time - midnight);
    std::array<char, 32> buffer;
    std::snprintf(buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return std::string(buffer.data());
}

bool Date::operator==(const Date& other) const
{
    if (text_ && other.text_) {
        return *text_ == *other.text_;
    }
    return !text_ && !other.text_ && Real(seconds_) == Real(other.seconds_);
}

// Dictionary

Dictionary::Dictionary() = default;

Dictionary::Dictionary(std::initializer_list<Entry> entries) : entries_(entries) {}

const Value* Dictionary::find(std::string_view key) const
{
    const auto found = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& e) { return e.first == key; });
    return found == entries_.rend() ? nullptr : &found->second;
}

Value* Dictionary::find(std::string_view key)
{
    return const_cast<Value*>(std::as_const(*this).find(key));
}

void Dictionary::set(std::string key, Value value)
{
    const auto isKey = [&](const Entry& entry) { return entry.first == key; };
    const auto first = std::find_if(entries_.begin(), entries_.end(), isKey);
    if (first == entries_.end()) {
        append(std::move(key), std::move(value));
        return;
    }
    first->second = std::move(value);
    entries_.erase(std::remove_if(first + 1, entries_.end(), isKey), entries_.end());
}

void Dictionary::remove(std::string_view key)
{
    std::erase_if(entries_, [&](const Entry& entry) { return entry.first == key; });
}

void Dictionary::append(std::string key, Value value)
{
    entries_.emplace_back(std::move(key), std::move(value));
}

void Dictionary::reserve(std::size_t entries)
{
    entries_.reserve(entries);
}
std::size_t Dictionary::size() const
{
    return entries_.size();
}
bool Dictionary::empty() const
{
    return entries_.empty();
}
Dictionary::const_iterator Dictionary::begin() const
{
    return entries_.begin();
}
Dictionary::const_iterator Dictionary::end() const
{
    return entries_.end();
}
Dictionary::iterator Dictionary::begin()
{
    return entries_.begin();
}
Dictionary::iterator Dictionary::end()
{
    return entries_.end();
}

bool Dictionary::operator==(const Dictionary& other) const
{
    return entries_ == other.entries_;
}

// Value

std::string Value::describe() const
{
    struct Describe {
        std::string operator()(Null) const { return "<null>"; }
        std::string operator()(bool truth) const { return truth ? "1" : "0"; }
        std::string operator()(Integer number) const { return number.toString(); }
        std::string operator()(Real number) const { return number.toString(); }
        std::string operator()(const std::string& text) const { return text; }
        std::string operator()(const Data& data) const { return bracketed(data.bytes.size(), "bytes"); }
        std::string operator()(const Date& date) const { return "<" + date.toText().value_or("date") + ">"; }
        std::string operator()(Uid uid) const { return "<UID " + std::to_string(uid.number) + ">"; }
        std::string operator()(const Array& array) const { return bracketed(array.size(), "values"); }
        std::string operator()(const Dictionary& entries) const { return bracketed(entries.size(), "entries"); }
    };
    return std::visit(Describe(), storage_);
}

bool Value::operator==(const Value& other) const
{
    return storage_ == other.storage_;
}

// What the readers and writers share

CodePoint codePointAt(std::string_view text, std::size_t at)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
    const auto first = byte(0);
    if (first < 0x80) {
        return {first, 1, true};
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    constexpr CodePoint kMalformed = {0xFFFD, 1, false};
    if (first < 0xC2 || first > 0xF4 || length > text.size() - at) {
        return kMalformed;
    }
    char32_t value = first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return kMalformed;
        }
        value = value << 6 | (byte(i) & 0x3Fu);
    }
    return value < kSmallest[length] || value > 0x10FFFF ? kMalformed : CodePoint{value, length, true};
}

std::size_t asciiLength(std::string_view text)
{
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    std::size_t at = 0;
    for (std::uint64_t eight = 0; at + 8 <= text.size(); at += 8) {
        std::memcpy(&eight, text.data() + at, 8);
        if (eight & kHighBits) {
            break;
        }
    }
    while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80) {
        ++at;
    }
    return at;
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Entry points

std::optional<Document> parse(std::string_view bytes)
{
    if (bytes.size() > kMaxFileBytes) {
        return std::nullopt;
    }
    const Form form = bytes.starts_with("bplist") ? Form::binary : Form::xml;
    std::optional<Value> root = form == Form::binary ? readBinary(bytes) : readXml(bytes);
    if (!root) {
        return std::nullopt;
    }
    return Document{std::move(*root), form};
}

std::string write(const Document& document)
{
    if (document.form == Form::xml) {
        if (auto bytes = writeXml(document.root)) {
            return std::move(*bytes);
        }
    }
    return writeBinary(document.root);
}

} // namespace platform::plist
