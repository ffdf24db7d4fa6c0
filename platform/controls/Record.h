#pragma once
// The shared record type: a string-keyed dictionary whose values are text or 32-bit integers, read and written by key.
// Keys keep the order in which they were first set. A copy is a value of its own but shares what it holds until one of
// the two is changed, so a list of thousands is copied and compared at the cost of its pointers.

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
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

    Record() = default;
    Record(std::initializer_list<Field> fields) : Record(std::vector<Field>(fields)) {}
    /// No key may come twice.
    explicit Record(std::vector<Field> fields);
    /// With the keys of another record, shared with it, and a value for each.
    Record(const Record& alike, std::vector<Value> values);

    /// The text under `key`; none when the key is missing or holds a number. A text is there until the record is
    /// changed or gone.
    std::optional<std::string_view> findText(std::string_view key) const;
    /// The text under `key`; empty when the key is missing or holds a number.
    std::string_view text(std::string_view key) const { return findText(key).value_or(std::string_view()); }
    /// The number under `key`; 0 when the key is missing or holds text.
    std::int32_t number(std::string_view key) const;
    void set(std::string_view key, Value value);

    const std::vector<std::string>& keys() const { return *content().keys; }
    bool operator==(const Record& other) const { return content_ == other.content_ || content() == other.content(); }

private:
    using Keys = std::vector<std::string>;

    struct Content {
        std::shared_ptr<const Keys> keys = std::make_shared<const Keys>(); ///< never null
        std::vector<Value> values;                                         ///< one a key

        bool operator==(const Content& other) const
        {
            return (keys == other.keys || *keys == *other.keys) && values == other.values;
        }
    };

    const Content& content() const;
    /// The value under `key`, or null.
    const Value* find(std::string_view key) const;

    std::shared_ptr<Content> content_; ///< null while there are no fields; changed only where nobody shares it
};

/// A list that several keep and nobody changes.
using SharedRecords = std::shared_ptr<const std::vector<Record>>;

} // namespace platform
