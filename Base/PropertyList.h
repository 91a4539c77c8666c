#pragma once
// Property lists in their XML and binary forms, as launch items and applications carry them.
//
// The bytes may be anybody's: both systems' parsers are kept from documents that would exhaust the stack
// (deep nesting) or the memory (a binary document can refer to one object many times over, and unfolds
// without end). What is refused reads as malformed.

#include "Base/Value.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace korvell {

/// Strings, whole numbers (signed 64-bit), reals, booleans, dates, arrays and dictionaries; binary data,
/// other kinds and what is nested more than 512 deep are null. Nothing when the bytes are malformed or tell
/// one of the forms by no sign.
std::optional<Value> parsePropertyList(std::string_view bytes);

enum class PropertyListForm { xml, binary };

/// The form of a document that is safe to parse: at most 1 MiB, nested at most 512 deep (in XML: at most
/// 4,000 containers), unfolding to at most 8 MiB. For the parsers of the systems.
std::optional<PropertyListForm> tamePropertyListForm(std::string_view bytes);

} // namespace korvell
