#include "platform/Record.h"

#include <algorithm>

namespace platform {

namespace {

/// Where a key stands; as many as there are keys where it is none of them.
std::size_t placeOf(std::string_view key, const std::vector<std::string>& keys)
{
    return static_cast<std::size_t>(std::find(keys.begin(), keys.end(), key) - keys.begin());
}

} // namespace

Record::Record(std::vector<Field> fields)
{
    std::vector<std::string> keys;
    std::vector<Value> values;
    keys.reserve(fields.size());
    values.reserve(fields.size());
    for (Field& field : fields) {
        keys.push_back(std::move(field.first));
        values.push_back(std::move(field.second));
    }
    *this = Record(std::make_shared<const std::vector<std::string>>(std::move(keys)), std::move(values));
}

Record::Record(Keys keys, std::vector<Value> values)
    : content_(std::make_shared<Content>(Content{std::move(keys), std::move(values)}))
{}

const std::vector<std::string>& Record::keys() const
{
    static const std::vector<std::string> kNone;
    return content_ ? *content_->keys : kNone;
}

std::vector<Record::Field> Record::fields() const
{
    std::vector<Field> fields;
    for (std::size_t i = 0; content_ && i < content_->values.size(); ++i)
        fields.emplace_back((*content_->keys)[i], content_->values[i]);
    return fields;
}

bool Record::operator==(const Record& other) const
{
    if (content_ == other.content_)
        return true;
    if (!content_ || !other.content_)
        return keys().empty() && other.keys().empty();
    return content_->values == other.content_->values &&
           (content_->keys == other.content_->keys || *content_->keys == *other.content_->keys);
}

const Record::Value* Record::find(std::string_view key) const
{
    if (!content_)
        return nullptr;
    const std::size_t place = placeOf(key, *content_->keys);
    return place < content_->values.size() ? &content_->values[place] : nullptr;
}

const std::string* Record::findText(std::string_view key) const
{
    const Value* value = find(key);
    return value ? std::get_if<std::string>(value) : nullptr;
}

const std::string& Record::text(std::string_view key) const
{
    static const std::string kNone;
    const std::string* text = findText(key);
    return text ? *text : kNone;
}

std::int32_t Record::number(std::string_view key) const
{
    const Value* value = find(key);
    const auto* number = value ? std::get_if<std::int32_t>(value) : nullptr;
    return number ? *number : 0;
}

void Record::set(std::string_view key, Value value)
{
    if (!content_)
        *this = Record(std::vector<Field>());
    else if (content_.use_count() > 1) // others keep what they share
        content_ = std::make_shared<Content>(*content_);
    const std::size_t place = placeOf(key, *content_->keys);
    if (place < content_->values.size()) {
        content_->values[place] = std::move(value);
        return;
    }
    auto keys = *content_->keys;
    keys.emplace_back(key);
    content_->keys = std::make_shared<const std::vector<std::string>>(std::move(keys));
    content_->values.push_back(std::move(value));
}

} // namespace platform
