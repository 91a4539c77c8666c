#pragma once
// Identifiers that nobody else has made.

#include <functional>
#include <string>

namespace korvell {

/// Makes a new identifier at each call.
using UUIDSource = std::function<std::string()>;

/// A random UUID (version 4), "3f2b8c1e-...", in lower case. From any thread.
std::string randomUUID();

} // namespace korvell
