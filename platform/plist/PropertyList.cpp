#include "platform/plist/PropertyList.h"

#include "platform/plist/PropertyListCodec.h"
#include "platform/plist/TextEncoding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>

#include <locale.h>
#include <stdlib.h>
#if __has_include(<xlocale.h>) // strtod_l() on macOS
#include <xlocale.h>
#endif

namespace platform::plist {

namespace {

using namespace std::chrono;

constexpr std::size_t kMaxNumberLength = 1000; // some strtod_l() take very long for very many digits
constexpr sys_days k2001 = 2001y / January / 1;

// A decimal number without sign. strtod() would read it by the user's locale, and some standard libraries have no
// from_chars() for it or no more than forty characters in a stream.
std::optional<double> decimalFrom(const std::string& text)
{
    static const locale_t kClassic = newlocale(LC_ALL_MASK, "C", nullptr);
    const bool isDecimal = text.find_first_not_of("0123456789.eE+-") == text.npos && text.find_first_of("+-") != 0;
    if (!isDecimal) {
        return std::nullopt;
    }
    char* end = nullptr;
    const double number = strtod_l(text.c_str(), &end, kClassic); // infinite or zero where it does not fit
    const bool complete = !text.empty() && end == text.c_str() + text.size();
    return complete ? std::optional(number) : std::nullopt;
}

} // namespace

// Numbers

std::string Integer::toString() const
{
    return negative ? std::to_string(static_cast<std::int64_t>(bits)) : std::to_string(bits);
}

Real::Real(double number) : bits(std::bit_cast<std::uint64_t>(number)), single(false) {}

Real::Real(float number) : bits(std::bit_cast<std::uint32_t>(number)), single(true) {}

double Real::toDouble() const
{
    return single ? std::bit_cast<float>(static_cast<std::uint32_t>(bits)) : std::bit_cast<double>(bits);
}

std::optional<Real> realFrom(std::string_view text)
{
    text = trimmed(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    if (text.size() > kMaxNumberLength) {
        return std::nullopt;
    }
    std::string magnitude(text);
    for (char& c : magnitude) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    std::optional<double> number;
    if (magnitude == "nan") {
        number = std::numeric_limits<double>::quiet_NaN();
    } else if (magnitude == "inf" || magnitude == "infinity") {
        number = std::numeric_limits<double>::infinity();
    } else {
        number = decimalFrom(magnitude);
    }
    return number ? std::optional(Real(negative ? -*number : *number)) : std::nullopt;
}

std::string textOf(double number)
{
    const bool negative = std::signbit(number);
    if (std::isnan(number)) {
        return negative ? "-nan" : "nan";
    }
    if (std::isinf(number)) {
        return negative ? "-infinity" : "+infinity";
    }
    std::string text;
    for (int digits = 15; digits <= 17 && realFrom(text) != Real(number); ++digits) {
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        stream << std::setprecision(digits) << number;
        text = stream.str();
    }
    return text;
}

// Dates

std::optional<double> secondsOfDate(std::string_view text)
{
    text = trimmed(text);
    const bool beforeYear0 = text.starts_with('-');
    text.remove_prefix(beforeYear0 ? 1 : 0);
    if (text.ends_with('Z')) {
        text.remove_suffix(1);
    }
    constexpr std::string_view kMarks = "--T::";
    std::array<unsigned, 6> fields = {0, 1, 1, 0, 0, 0}; // from the year to the second
    std::size_t count = 0;
    while (true) {
        const auto result = std::from_chars(text.data(), text.data() + text.size(), fields[count]);
        if (result.ec != std::errc()) {
            return std::nullopt;
        }
        text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
        if (++count == fields.size() || !text.starts_with(kMarks[count - 1])) {
            break;
        }
        text.remove_prefix(1);
    }
    const bool hasFraction =
        count == fields.size() && text.starts_with('.') && text.find_first_not_of("0123456789", 1) == text.npos;
    const bool complete = text.empty() || (hasFraction && text.size() <= kMaxNumberLength);
    const auto [year, month, day, hour, minute, second] = fields;
    if (!complete || count < 3 || year > 32767 || month < 1 || month > 12 || day < 1 || day > 31) {
        return std::nullopt;
    }
    const auto date = std::chrono::year(beforeYear0 ? -static_cast<int>(year) : static_cast<int>(year));
    const seconds whole = sys_days(date / std::chrono::month(month) / std::chrono::day(day)) - k2001 + hours(hour) +
                          minutes(minute) + seconds(second);
    return static_cast<double>(whole.count()) + (hasFraction ? decimalFrom("0" + std::string(text)).value_or(0) : 0);
}

std::optional<std::string> dateOfSeconds(Real number)
{
    const double count = number.toDouble();
    if (!(std::abs(count) < 1e12)) { // far beyond what four digits of a year hold
        return std::nullopt;
    }
    const sys_seconds moment = k2001 + seconds(static_cast<std::int64_t>(count));
    const year_month_day date(floor<days>(moment));
    const hh_mm_ss time(moment - floor<days>(moment));
    if (date.year() < 1y || date.year() > 9999y) {
        return std::nullopt;
    }
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return Real(secondsOfDate(text.data()).value()) == number ? std::optional(text.data()) : std::nullopt;
}

// Dictionary

Dictionary::Dictionary(std::initializer_list<Entry> list) : entries(list) {}

// Here and not in the header, where a Value is not known yet; some compilers need it.
std::size_t Dictionary::size() const
{
    return entries.size();
}

const Value* Dictionary::find(std::string_view key) const
{
    const auto found = std::find_if(entries.rbegin(), entries.rend(), [&](const Entry& e) { return e.first == key; });
    return found == entries.rend() ? nullptr : &found->second;
}

void Dictionary::set(std::string key, Value value)
{
    const auto isKey = [&](const Entry& entry) { return entry.first == key; };
    const auto first = std::find_if(entries.begin(), entries.end(), isKey);
    if (first == entries.end()) {
        entries.emplace_back(std::move(key), std::move(value));
        return;
    }
    first->second = std::move(value);
    entries.erase(std::remove_if(first + 1, entries.end(), isKey), entries.end());
}

bool Dictionary::operator==(const Dictionary& other) const = default;

// Value

std::string Value::describe() const
{
    if (const bool* truth = std::get_if<bool>(&held)) {
        return *truth ? "1" : "0";
    }
    if (const Integer* number = std::get_if<Integer>(&held)) {
        return number->toString();
    }
    if (const Real* number = std::get_if<Real>(&held)) {
        return textOf(number->toDouble());
    }
    const std::string* text = asString();
    return text ? *text : "<value>";
}

bool Value::operator==(const Value& other) const
{
    return held == other.held;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Entry points

std::optional<Document> parse(std::string_view bytes, const Unfolded& most)
{
    if (bytes.size() > kMaxFileBytes) {
        return std::nullopt;
    }
    if (auto root = bytes.starts_with(kBinaryStart) ? readBinary(bytes, most) : std::nullopt) {
        return Document{std::move(*root), Form::binary};
    }
    const DecodedText decoded(bytes);
    auto root = readXml(decoded.text());
    if (!root && decoded.isWhole()) {
        root = readOldStyle(decoded.text());
    }
    return root ? std::optional(Document{std::move(*root), Form::xml}) : std::nullopt;
}

std::string write(const Document& document)
{
    auto bytes = document.form == Form::xml ? writeXml(document.root) : std::nullopt;
    return bytes ? std::move(*bytes) : writeBinary(document.root);
}

} // namespace platform::plist
