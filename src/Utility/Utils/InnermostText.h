#pragma once

#include <string>

namespace DAX::Common::Utils {

// What the throw site said, in one line: its free text or its description, found in a diagnostic text. That may be the
// chain of an exception that has come over the bus, several times even: then it is the throw site where the chain
// began. Empty when that said neither.
std::string get_innermost_text(const std::string& diagnostic);

} // namespace DAX::Common::Utils
