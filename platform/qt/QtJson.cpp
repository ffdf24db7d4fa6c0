#include "platform/qt/QtJson.h"

#include "platform/qt/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace platform::qt {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Whether 64 bits cannot hold a number that is whole.
bool isLong(std::string_view number)
{
    std::int64_t value = 0;
    return number.find_first_of(".Ee") == std::string_view::npos &&
           std::from_chars(number.data(), number.data() + number.size(), value).ec != std::errc();
}

/// The text with every such number in quotes, because Qt would round it; empty where there is none. `json` is valid.
std::string withLongNumbersQuoted(std::string_view json)
{
    std::string result;
    std::size_t taken = 0;
    for (std::size_t i = 0; i < json.size(); ++i) {
        if (json[i] == '"') {
            for (++i; i < json.size() && json[i] != '"'; ++i) {
                if (json[i] == '\\')
                    ++i;
            }
        } else if (isDigit(json[i]) || json[i] == '-') {
            const std::size_t end = std::min(json.find_first_not_of("+-.0123456789Ee", i), json.size());
            const std::string_view number = json.substr(i, end - i);
            if (isLong(number)) {
                result.append(json.substr(taken, i - taken)).append("\"").append(number).append("\"");
                taken = end;
            }
            i = end - 1;
        }
    }
    return taken == 0 ? result : result.append(json.substr(taken));
}

std::string numberText(const QJsonValue& number)
{
    // A whole number is kept as such and its digits are exact where a double would round.
    const QVariant value = number.toVariant();
    if (value.metaType() == QMetaType::fromType<qlonglong>())
        return std::to_string(value.toLongLong());
    return fromQt(QString::number(number.toDouble(), 'g', QLocale::FloatingPointShortest));
}

std::string textOf(const QJsonValue& value)
{
    if (value.isString())
        return fromQt(value.toString());
    if (value.isDouble())
        return numberText(value);
    // Only arrays and objects make documents; the brackets around the one value go again.
    const std::string inBrackets = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).toStdString();
    return inBrackets.substr(1, inBrackets.size() - 2);
}

Record recordOf(const QJsonObject& object)
{
    std::vector<Record::Field> fields;
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (!member.value().isNull())
            fields.emplace_back(fromQt(member.key()), textOf(member.value()));
    }
    return Record(std::move(fields));
}

} // namespace

std::vector<Record> QtJson::objectsOf(std::string_view json) const
{
    const auto parsed = [](std::string_view text) {
        return QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
    };
    const QJsonDocument document = parsed(json);
    if (!document.isArray())
        return {};
    const std::string quoted = withLongNumbersQuoted(json);
    const QJsonArray array = quoted.empty() ? document.array() : parsed(quoted).array();
    std::vector<Record> records;
    for (const QJsonValueConstRef element : array) {
        if (element.isObject())
            records.push_back(recordOf(element.toObject()));
    }
    return records;
}

} // namespace platform::qt
