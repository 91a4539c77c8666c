#pragma once
// What a person said to a question that another program caused.

#include "Base/Enum.h"

namespace korvell {

enum class Consent {
  given,
  declined,
  unanswered, ///< nobody answered in time, or who was asked has gone
  impossible, ///< there is no way to ask anybody
};

template <>
struct EnumTable<Consent> {
  using enum Consent;
  static constexpr EnumCase<Consent> cases[] = {{given, "given", "Given"},
                                                {declined, "declined", "Declined"},
                                                {unanswered, "unanswered", "Not answered"},
                                                {impossible, "impossible", "Impossible"}};
};

} // namespace korvell
