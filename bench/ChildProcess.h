#pragma once
// Programs run as children, with what they print thrown away.

#include <string>
#include <vector>

namespace bench {

using Texts = std::vector<std::string>;

/// Runs a program to its end; throws unless it ends well. Answers the milliseconds it had of the processor, from its
/// start to its end. `environment` holds NAME=VALUE, added to our own; the output goes to the file, if one is named.
double run(const Texts& command, const Texts& environment = {}, const std::string& output = "/dev/null");

} // namespace bench
