#pragma once
// A controller's owning reference to an on-screen object. Each read and each write of the reference is indivisible. An
// outlet that nobody connected refers to an object of its own that nothing shows, so messages to it do nothing.

#include <memory>
#include <mutex>
#include <utility>

namespace platform {

template <typename T>
class Outlet {
public:
    std::shared_ptr<T> get() const
    {
        const std::lock_guard lock(mutex_);
        return object_;
    }

    /// Null disconnects.
    void set(std::shared_ptr<T> object)
    {
        if (!object)
            object = std::make_shared<T>();
        const std::lock_guard lock(mutex_);
        object_.swap(object); // the parameter takes the former object with it, released after the lock
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<T> object_ = std::make_shared<T>();
};

} // namespace platform
