#pragma once
// JSON by Qt's reader.

#include "platform/Effects.h"

namespace platform::qt {

class QtJson final : public Json {
public:
    std::vector<Record> objectsOf(std::string_view json) const override;
};

} // namespace platform::qt
