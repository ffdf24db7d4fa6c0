#pragma once
// A value that tells when it changes. Setting an equal value does nothing, which is what stops feedback loops between
// a control and the widget it is bound to.

#include "platform/controls/Signal.h"

#include <utility>

namespace platform {

template <typename T>
class Property {
public:
    Property() = default;
    explicit Property(T value) : value_(std::move(value)) {}
    Property(const Property&) = delete;
    Property& operator=(const Property&) = delete;

    const T& get() const { return value_; }

    void set(T value)
    {
        if (value == value_)
            return;
        value_ = std::move(value);
        changed_.emit();
    }

    /// Calls `slot` with the value on every change from now on. When an earlier slot sets the property again, a later
    /// one hears the newest value, not the one it missed.
    [[nodiscard]] Connection onChange(std::function<void(const T&)> slot)
    {
        return changed_.connect([this, slot = std::move(slot)] { slot(T(value_)); });
    }

private:
    T value_{};
    Signal<> changed_;
};

} // namespace platform
