#pragma once
// The objects of a store, as plain values.

#include "platform/plist/PropertyList.h"

#include <cstdint>
#include <map>
#include <string>

namespace platform::store {

/// An object's entity and the attributes that were set; which ones there may be says the model.
struct ManagedObject {
    std::string entity;
    std::map<std::string, plist::Value> attributes;

    bool operator==(const ManagedObject&) const = default;
};

/// Names an object as long as its coordinator lives; rising in the order of insertion.
using ObjectId = std::int64_t;
using ObjectGraph = std::map<ObjectId, ManagedObject>;

} // namespace platform::store
