#pragma once
// The shared record type: a string-keyed dictionary whose values are text or 32-bit integers, read and written by key.
// Keys keep the order in which they were first set. A copy is a value of its own but shares what it holds until one of
// the two is changed, so a list of thousands is copied and compared at the cost of its pointers; records made from one
// set of keys share that too.

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
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

    /// The keys of many records that are made alike. None may come twice.
    using Keys = std::shared_ptr<const std::vector<std::string>>;

    Record() = default;
    Record(std::initializer_list<Field> fields) : Record(std::vector<Field>(fields)) {}
    /// No key may come twice.
    explicit Record(std::vector<Field> fields);
    /// As many values as keys; they are moved from.
    Record(Keys keys, std::span<Value> values);

    /// The text under `key`; null when the key is missing or holds a number.
    const std::string* findText(std::string_view key) const;
    /// The text under `key`; empty when the key is missing or holds a number.
    const std::string& text(std::string_view key) const;
    /// The number under `key`; 0 when the key is missing or holds text.
    std::int32_t number(std::string_view key) const;
    void set(std::string_view key, Value value);

    const std::vector<std::string>& keys() const;
    /// A copy of all, in the order of the keys.
    std::vector<Field> fields() const;
    bool operator==(const Record& other) const;
    /// Whether both are copies of one record, unchanged since; equal records need not be.
    bool isCopyOf(const Record& other) const { return content_ == other.content_; }

private:
    /// The records of which there are thousands have four fields, and one block of memory each.
    struct Content {
        Keys keys;
        std::array<Value, 4> first;
        std::vector<Value> rest;

        const Value& at(std::size_t place) const { return place < first.size() ? first[place] : rest[place - 4]; }
        void put(std::size_t place, Value value);
    };

    const Value* find(std::string_view key) const;

    std::shared_ptr<Content> content_; ///< null while there are no fields
};

} // namespace platform
