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

void Record::Content::put(std::size_t place, Value value)
{
    if (place < first.size())
        first[place] = std::move(value);
    else if (place - first.size() < rest.size())
        rest[place - first.size()] = std::move(value);
    else
        rest.push_back(std::move(value));
}

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
    *this = Record(std::make_shared<const std::vector<std::string>>(std::move(keys)), values);
}

Record::Record(Keys keys, std::span<Value> values) : content_(std::make_shared<Content>())
{
    content_->keys = std::move(keys);
    const std::size_t inPlace = std::min(values.size(), content_->first.size());
    std::move(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(inPlace), content_->first.begin());
    content_->rest.reserve(values.size() - inPlace);
    for (std::size_t place = inPlace; place < values.size(); ++place)
        content_->put(place, std::move(values[place]));
}

const std::vector<std::string>& Record::keys() const
{
    static const std::vector<std::string> kNone;
    return content_ ? *content_->keys : kNone;
}

std::vector<Record::Field> Record::fields() const
{
    std::vector<Field> fields;
    for (std::size_t place = 0; place < keys().size(); ++place)
        fields.emplace_back(keys()[place], content_->at(place));
    return fields;
}

bool Record::operator==(const Record& other) const
{
    if (content_ == other.content_)
        return true;
    if (!content_ || !other.content_)
        return keys().empty() && other.keys().empty();
    return content_->first == other.content_->first && content_->rest == other.content_->rest &&
           (content_->keys == other.content_->keys || keys() == other.keys());
}

const Record::Value* Record::find(std::string_view key) const
{
    if (!content_)
        return nullptr;
    const std::size_t place = placeOf(key, *content_->keys);
    return place < content_->keys->size() ? &content_->at(place) : nullptr;
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
    content_->put(place, std::move(value));
    if (place < content_->keys->size())
        return;
    auto keys = *content_->keys;
    keys.emplace_back(key);
    content_->keys = std::make_shared<const std::vector<std::string>>(std::move(keys));
}

} // namespace platform
