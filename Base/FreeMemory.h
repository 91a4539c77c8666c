#pragma once
// What a program that runs all day does after it has closed something large.

namespace korvell {

/// Hands memory that is free within the process back to the system. Takes milliseconds.
void giveFreeMemoryBack();

} // namespace korvell
