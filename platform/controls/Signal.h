#pragma once
// Signals with scoped connections: a slot stays connected exactly as long as the Connection that `connect` returned
// lives. Emitting is safe while slots connect, disconnect or destroy the signal. Single-threaded.

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace platform {

/// Keeps one slot connected; disconnects when destroyed.
class Connection {
public:
    Connection() = default;
    explicit Connection(std::function<void()> disconnect) : disconnect_(std::move(disconnect)) {}
    Connection(Connection&& other) noexcept : disconnect_(std::exchange(other.disconnect_, nullptr)) {}
    Connection& operator=(Connection&& other) noexcept
    {
        if (this != &other) {
            disconnect();
            disconnect_ = std::exchange(other.disconnect_, nullptr);
        }
        return *this;
    }
    ~Connection() { disconnect(); }

    void disconnect()
    {
        if (auto action = std::exchange(disconnect_, nullptr))
            action();
    }

private:
    std::function<void()> disconnect_;
};

template <typename... Args>
class Signal {
public:
    using Slot = std::function<void(Args...)>;

    [[nodiscard]] Connection connect(Slot slot)
    {
        auto entry = std::make_shared<Slot>(std::move(slot));
        slots_->push_back(entry);
        return Connection([slots = std::weak_ptr(slots_), entry = std::weak_ptr(entry)] {
            const auto list = slots.lock();
            const auto self = entry.lock();
            if (!list || !self)
                return;
            *self = nullptr; // an emission under way skips it
            std::erase(*list, self);
        });
    }

    void emit(Args... args) const
    {
        const auto snapshot = *slots_;
        for (const auto& slot : snapshot) {
            if (const Slot call = *slot) // a copy: the slot may disconnect itself
                call(args...);
        }
    }

private:
    std::shared_ptr<std::vector<std::shared_ptr<Slot>>> slots_ = std::make_shared<std::vector<std::shared_ptr<Slot>>>();
};

} // namespace platform
