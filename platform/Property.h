#pragma once
// A value that tells when it changes. Setting an equal value does nothing, which is what stops feedback loops between
// a control and the widget it is bound to.

#include "platform/Signal.h"

#include <utility>

namespace platform {

template <typename T>
class Property {
public:
    Property() = default;
    explicit Property(T value) : value_(std::move(value)) {}

    const T& get() const { return value_; }

    void set(T value)
    {
        if (value == value_)
            return;
        value_ = std::move(value);
        changed_.emit(T(value_)); // a copy: a slot may set the property again
    }

    /// Calls `slot` with the new value on every change from now on.
    [[nodiscard]] Connection onChange(std::function<void(const T&)> slot) { return changed_.connect(std::move(slot)); }

private:
    T value_{};
    Signal<const T&> changed_;
};

} // namespace platform
