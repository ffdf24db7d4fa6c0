#include "platform/qt/QtJson.h"

#include "platform/qt/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace platform::qt {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The text with every whole number that 64 bits cannot hold in quotes, because Qt would round it. `json` is valid.
QByteArray withLongNumbersQuoted(std::string_view json)
{
    QByteArray result;
    bool isInText = false;
    std::size_t i = 0;
    while (i < json.size()) {
        std::size_t end = i + 1;
        bool isQuoted = false;
        if (isInText && json[i] == '\\') {
            ++end;
        } else if (json[i] == '"') {
            isInText = !isInText;
        } else if (!isInText && (isDigit(json[i]) || json[i] == '-')) {
            end = std::min(json.find_first_not_of("+-.0123456789Ee", i), json.size());
            const std::string_view number = json.substr(i, end - i);
            std::int64_t value = 0;
            isQuoted = number.find_first_of(".Ee") == std::string_view::npos &&
                       std::from_chars(number.data(), number.data() + number.size(), value).ec != std::errc();
        }
        const QByteArrayView piece(json.data() + i, static_cast<qsizetype>(end - i));
        result.append(isQuoted ? "\"" : "").append(piece).append(isQuoted ? "\"" : "");
        i = end;
    }
    return result;
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
    if (!QJsonDocument::fromJson(QByteArray::fromRawData(json.data(), static_cast<qsizetype>(json.size()))).isArray())
        return {};
    const QJsonArray array = QJsonDocument::fromJson(withLongNumbersQuoted(json)).array();
    std::vector<Record> records;
    for (const QJsonValueConstRef element : array) {
        if (element.isObject())
            records.push_back(recordOf(element.toObject()));
    }
    return records;
}

} // namespace platform::qt
