#pragma once
// What the platform asks of a view controller: a hook for when its view has loaded, and the object it represents.

#include <any>
#include <utility>

namespace platform {

class ViewControllerBase {
public:
    ViewControllerBase() = default;
    ViewControllerBase(const ViewControllerBase&) = delete;
    ViewControllerBase& operator=(const ViewControllerBase&) = delete;
    virtual ~ViewControllerBase() = default;

    /// Called once by whoever loads the interface, when every outlet is set.
    virtual void viewDidLoad() {}

    const std::any& representedObject() const { return representedObject_; }
    virtual void setRepresentedObject(std::any object) { representedObject_ = std::move(object); }

private:
    std::any representedObject_;
};

} // namespace platform
