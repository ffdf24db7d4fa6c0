#pragma once
// What the program makes of bytes from outside, as functions that may be handed any bytes. Each checks what must hold
// of the outcome and aborts where it does not. The fuzzers call them with bytes of their making, a test with those in
// corpus/ and with every input that once was a finding.

#include <string_view>

namespace fuzz {

/// A property list: what is accepted reads back as the same from both forms that are written.
void propertyList(std::string_view bytes);
/// The same of an old-style list.
void oldStyleList(std::string_view bytes);
/// The community server's listing.
void listing(std::string_view bytes);
/// Any other reply of the server, and texts on their way there.
void replies(std::string_view bytes);
/// A parameter-order file that is marked, loaded, saved, recalled and charted.
void mappingFile(std::string_view bytes);
/// A request's target as the community server takes it apart: path, query, names and the rest.
void request(std::string_view bytes);
/// An upload's body, behind the line of its content type, and the file in it.
void upload(std::string_view bytes);

} // namespace fuzz
