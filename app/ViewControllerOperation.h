#pragma once
// One operation of the controller, from its first change to its last refresh. Operations call each other; the outermost
// one tells what happened when it ends, and makes a step of the history if it was given a name.

#include "app/ViewController.h"

#include <optional>
#include <string>

class ViewController::Operation {
public:
    /// Only refreshes.
    explicit Operation(ViewController& controller);
    /// Edits the mapping under a name, which is shown in the user's language.
    Operation(ViewController& controller, const std::string& name);
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation();

private:
    ViewController& controller_;
    std::string name_;
    std::optional<mapping::EditingSnapshot> before_;
    std::string pathBefore_;
};
