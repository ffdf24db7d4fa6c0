#pragma once
// The objects of a store, as plain values.

#include "platform/plist/PropertyList.h"

#include <string>
#include <vector>

namespace platform::store {

/// An object's entity, which the model has to know, and its attributes.
struct ManagedObject {
    std::string entity;
    plist::Dictionary attributes;

    bool operator==(const ManagedObject&) const = default;
};

/// In the order of insertion.
using ObjectGraph = std::vector<ManagedObject>;

} // namespace platform::store
