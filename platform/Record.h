#pragma once
// The shared record type: a string-keyed dictionary whose values are text or 32-bit integers, read and written by key.
// Keys keep the order in which they were first set.

#include <cstdint>
#include <initializer_list>
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
    Record(std::initializer_list<Field> fields) : fields_(fields) {}
    /// No key may come twice.
    explicit Record(std::vector<Field> fields) : fields_(std::move(fields)) {}

    /// The text under `key`; empty when the key is missing or holds a number.
    const std::string& text(std::string_view key) const;
    /// The number under `key`; 0 when the key is missing or holds text.
    std::int32_t number(std::string_view key) const;
    void set(std::string_view key, Value value);

    const std::vector<Field>& fields() const { return fields_; }
    bool operator==(const Record&) const = default;

private:
    const Value* find(std::string_view key) const;

    std::vector<Field> fields_;
};

} // namespace platform
