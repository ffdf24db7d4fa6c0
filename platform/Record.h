#pragma once
// The shared record type: a string-keyed dictionary whose values are text or 32-bit integers, read and written by key.
// Keys keep the order in which they were first set. A copy is a value of its own but shares what it holds until one of
// the two is changed, so a list of thousands is copied and compared at the cost of its pointers.

#include <cstdint>
#include <initializer_list>
#include <memory>
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
    explicit Record(std::vector<Field> fields) : fields_(std::make_shared<std::vector<Field>>(std::move(fields))) {}

    /// The text under `key`; empty when the key is missing or holds a number.
    const std::string& text(std::string_view key) const;
    /// The number under `key`; 0 when the key is missing or holds text.
    std::int32_t number(std::string_view key) const;
    void set(std::string_view key, Value value);

    const std::vector<Field>& fields() const;
    bool operator==(const Record& other) const { return fields_ == other.fields_ || fields() == other.fields(); }
    /// Whether both are copies of one record, unchanged since; equal records need not be.
    bool isCopyOf(const Record& other) const { return fields_ == other.fields_; }

private:
    const Value* find(std::string_view key) const;

    std::shared_ptr<std::vector<Field>> fields_; ///< null while there are none
};

} // namespace platform
