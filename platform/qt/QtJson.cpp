#include "platform/qt/QtJson.h"

#include "platform/qt/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

namespace platform::qt {

namespace {

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
    Record record;
    for (auto member = object.begin(); member != object.end(); ++member)
        record.set(fromQt(member.key()), textOf(member.value()));
    return record;
}

} // namespace

std::vector<Record> QtJson::objectsOf(std::string_view json) const
{
    const auto document = QJsonDocument::fromJson(QByteArray(json.data(), static_cast<qsizetype>(json.size())));
    std::vector<Record> records;
    for (const QJsonValueConstRef element : document.array()) {
        if (element.isObject())
            records.push_back(recordOf(element.toObject()));
    }
    return records;
}

} // namespace platform::qt
