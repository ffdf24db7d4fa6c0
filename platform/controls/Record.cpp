#include "platform/controls/Record.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <new>

namespace platform {

namespace {

constexpr std::uint32_t kNumber = std::numeric_limits<std::uint32_t>::max();

/// Where a value is: a number is here, a text is so many bytes from a place on.
struct Slot {
    std::uint32_t size; ///< kNumber for a number
    std::int32_t at;
};

/// Where a key stands; as many as there are keys where it is none of them.
std::size_t placeOf(std::string_view key, const std::vector<std::string>& keys)
{
    std::size_t place = 0;
    while (place < keys.size() && keys[place] != key)
        ++place;
    return place;
}

std::size_t textBytesOf(std::span<const Record::ValueView> values)
{
    std::size_t bytes = 0;
    for (const Record::ValueView& value : values) {
        if (const auto* text = std::get_if<std::string_view>(&value))
            bytes += text->size();
    }
    return bytes;
}

} // namespace

/// What copies share. Slots and texts follow it in the same block of memory: a plug-in's parameters are a list of tens
/// of thousands of these.
struct Record::Content {
    static Content* make(Keys keys, std::span<const ValueView> values)
    {
        const std::size_t textBytes = textBytesOf(values);
        void* block = ::operator new(sizeof(Content) + values.size() * sizeof(Slot) + textBytes);
        return new (block) Content(std::move(keys), values, textBytes);
    }

    Content(Keys shared, std::span<const ValueView> values, std::size_t textBytes)
        : bytes(static_cast<std::uint32_t>(values.size() * sizeof(Slot) + textBytes)), keys(std::move(shared))
    {
        char* end = texts();
        for (std::size_t place = 0; place < values.size(); ++place) {
            Slot slot = {kNumber, 0};
            if (const auto* text = std::get_if<std::string_view>(&values[place])) {
                slot = {static_cast<std::uint32_t>(text->size()), static_cast<std::int32_t>(end - texts())};
                end = std::copy(text->begin(), text->end(), end);
            } else {
                slot.at = std::get<std::int32_t>(values[place]);
            }
            new (slots() + place) Slot(slot);
        }
    }

    Slot* slots() { return reinterpret_cast<Slot*>(this + 1); }
    char* texts() { return reinterpret_cast<char*>(slots() + keys->size()); }

    ValueView at(std::size_t place)
    {
        const Slot slot = slots()[place];
        if (slot.size == kNumber)
            return slot.at;
        return std::string_view(texts() + slot.at, slot.size);
    }

    /// None where there is no text, or no place.
    std::optional<std::string_view> textAt(std::size_t place)
    {
        if (place == keys->size() || slots()[place].size == kNumber)
            return std::nullopt;
        return std::string_view(texts() + slots()[place].at, slots()[place].size);
    }

    bool isEqual(Content& other)
    {
        return bytes == other.bytes && (keys == other.keys || *keys == *other.keys) &&
               std::memcmp(slots(), other.slots(), bytes) == 0;
    }

    std::atomic<std::uint32_t> owners = 1;
    std::uint32_t bytes; ///< of slots and texts
    Keys keys;
};

Record::Keys Record::keysOf(std::vector<std::string> keys)
{
    return std::make_shared<const std::vector<std::string>>(std::move(keys));
}

Record::Record(const std::vector<Field>& fields)
{
    std::vector<std::string> keys;
    std::vector<ValueView> values;
    for (const auto& [key, value] : fields) {
        keys.push_back(key);
        values.push_back(std::visit([](const auto& held) { return ValueView(held); }, value));
    }
    *this = Record(keysOf(std::move(keys)), values);
}

Record::Record(Keys keys, std::span<const ValueView> values)
    : content_(values.empty() ? nullptr : Content::make(std::move(keys), values))
{}

Record::Record(const Record& other) : content_(other.content_)
{
    if (content_)
        content_->owners.fetch_add(1, std::memory_order_relaxed);
}

Record::~Record()
{
    if (!content_ || content_->owners.fetch_sub(1, std::memory_order_acq_rel) > 1)
        return;
    content_->~Content();
    ::operator delete(content_);
}

const std::vector<std::string>& Record::keys() const
{
    static const std::vector<std::string> kNone;
    return content_ ? *content_->keys : kNone;
}

std::vector<Record::ValueView> Record::values() const
{
    std::vector<ValueView> values;
    for (std::size_t place = 0; place < keys().size(); ++place)
        values.push_back(content_->at(place));
    return values;
}

std::vector<Record::Field> Record::fields() const
{
    struct Copy {
        Value operator()(std::string_view text) const { return std::string(text); }
        Value operator()(std::int32_t number) const { return number; }
    };
    std::vector<Field> fields;
    for (std::size_t place = 0; place < keys().size(); ++place)
        fields.emplace_back(keys()[place], std::visit(Copy(), content_->at(place)));
    return fields;
}

bool Record::operator==(const Record& other) const
{
    if (!content_ || !other.content_)
        return content_ == other.content_;
    return content_ == other.content_ || content_->isEqual(*other.content_);
}

std::optional<std::string_view> Record::findText(std::string_view key) const
{
    return content_ ? content_->textAt(placeOf(key, *content_->keys)) : std::nullopt;
}

std::int32_t Record::number(std::string_view key) const
{
    const std::size_t place = placeOf(key, keys());
    if (place == keys().size())
        return 0;
    const ValueView value = content_->at(place);
    const auto* number = std::get_if<std::int32_t>(&value);
    return number ? *number : 0;
}

void Record::set(std::string_view key, ValueView value)
{
    std::vector<ValueView> values = this->values();
    const std::size_t place = placeOf(key, keys());
    if (place < values.size()) {
        values[place] = value;
        *this = Record(content_->keys, values);
        return;
    }
    std::vector<std::string> keys = this->keys();
    keys.emplace_back(key);
    values.push_back(value);
    *this = Record(keysOf(std::move(keys)), values);
}

} // namespace platform
