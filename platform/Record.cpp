#include "platform/Record.h"

#include <algorithm>

namespace platform {

const std::vector<Record::Field>& Record::fields() const
{
    static const std::vector<Field> kNone;
    return fields_ ? *fields_ : kNone;
}

const Record::Value* Record::find(std::string_view key) const
{
    const auto field = std::find_if(fields().begin(), fields().end(), [&](const Field& f) { return f.first == key; });
    return field == fields().end() ? nullptr : &field->second;
}

const std::string& Record::text(std::string_view key) const
{
    static const std::string kNone;
    const Value* value = find(key);
    const auto* text = value ? std::get_if<std::string>(value) : nullptr;
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
    if (!fields_ || fields_.use_count() > 1) // others keep what they share
        fields_ = std::make_shared<std::vector<Field>>(fields());
    const auto field = std::find_if(fields_->begin(), fields_->end(), [&](const Field& f) { return f.first == key; });
    if (field == fields_->end())
        fields_->emplace_back(key, std::move(value));
    else
        field->second = std::move(value);
}

} // namespace platform
