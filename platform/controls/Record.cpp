#include "platform/controls/Record.h"

#include <algorithm>
#include <cstddef>

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
    Keys keys;
    std::vector<Value> values;
    for (auto& [key, value] : fields) {
        keys.push_back(std::move(key));
        values.push_back(std::move(value));
    }
    content_ = std::make_shared<Content>(Content{std::make_shared<const Keys>(std::move(keys)), std::move(values)});
}

Record::Record(const Record& alike, std::vector<Value> values)
    : content_(std::make_shared<Content>(Content{alike.content().keys, std::move(values)}))
{}

std::optional<std::string_view> Record::findText(std::string_view key) const
{
    const Value* value = find(key);
    const auto* text = value ? std::get_if<std::string>(value) : nullptr;
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
}

std::int32_t Record::number(std::string_view key) const
{
    const Value* value = find(key);
    const auto* number = value ? std::get_if<std::int32_t>(value) : nullptr;
    return number ? *number : 0;
}

void Record::set(std::string_view key, Value value)
{
    if (content_.use_count() != 1)
        content_ = std::make_shared<Content>(content());
    const std::size_t place = placeOf(key, keys());
    if (place < content_->values.size()) {
        content_->values[place] = std::move(value);
        return;
    }
    Keys keys = this->keys();
    keys.emplace_back(key);
    content_->keys = std::make_shared<const Keys>(std::move(keys));
    content_->values.push_back(std::move(value));
}

const Record::Content& Record::content() const
{
    static const Content kNone;
    return content_ ? *content_ : kNone;
}

const Record::Value* Record::find(std::string_view key) const
{
    const std::size_t place = placeOf(key, keys());
    return place < keys().size() ? &content().values[place] : nullptr;
}

} // namespace platform
