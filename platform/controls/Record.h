#pragma once
// The shared record type: a string-keyed dictionary whose values are text or 32-bit integers, read and written by key.
// Keys keep the order in which they were first set. A copy is a value of its own but shares what it holds until one of
// the two is changed, so a list of thousands is copied and compared at the cost of its pointers; records made from one
// set of keys share that too.

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

class Record {
public:
    using Value = std::variant<std::string, std::int32_t>;
    using Field = std::pair<std::string, Value>;
    /// A value that somebody else keeps.
    using ValueView = std::variant<std::string_view, std::int32_t>;

    /// The keys of many records that are made alike. None may come twice.
    using Keys = std::shared_ptr<const std::vector<std::string>>;
    static Keys keysOf(std::vector<std::string> keys);

    Record() = default;
    Record(std::initializer_list<Field> fields) : Record(std::vector<Field>(fields)) {}
    /// No key may come twice.
    explicit Record(const std::vector<Field>& fields);
    /// As many values as keys.
    Record(Keys keys, std::span<const ValueView> values);
    Record(const Record& other);
    Record(Record&& other) noexcept : content_(std::exchange(other.content_, nullptr)) {}
    Record& operator=(Record other) noexcept
    {
        std::swap(content_, other.content_);
        return *this;
    }
    ~Record();

    /// The text under `key`; none when the key is missing or holds a number. A text is there until the record is
    /// changed or gone.
    std::optional<std::string_view> findText(std::string_view key) const;
    /// The text under `key`; empty when the key is missing or holds a number.
    std::string_view text(std::string_view key) const { return findText(key).value_or(std::string_view()); }
    /// The number under `key`; 0 when the key is missing or holds text.
    std::int32_t number(std::string_view key) const;
    void set(std::string_view key, ValueView value);

    const std::vector<std::string>& keys() const;
    /// A copy of all, in the order of the keys.
    std::vector<Field> fields() const;
    bool operator==(const Record& other) const;
    /// Whether both are copies of one record, unchanged since; equal records need not be.
    bool isCopyOf(const Record& other) const { return content_ == other.content_; }

private:
    struct Content;

    std::vector<ValueView> values() const;

    Content* content_ = nullptr; ///< null while there are no fields
};

/// A list that several keep and nobody changes.
using SharedRecords = std::shared_ptr<const std::vector<Record>>;

} // namespace platform
