#pragma once
// Who Korvell's programs are to macOS: the names under which they are registered, and the code-signing
// requirements with which the application and its helper recognise each other.

#include <optional>
#include <string>

namespace korvell {

/// The application; the tool inside its bundle bears the same identifier.
inline constexpr const char* applicationIdentifier = "com.korvell.Korvell";
/// The helper, and the name of its service.
inline constexpr const char* helperIdentifier = "com.korvell.Korvell.Helper";
/// The helper's launch property list inside the bundle.
inline constexpr const char* helperLaunchList = "com.korvell.Korvell.Helper.plist";

struct CodeRequirement {
  /// What the helper's signature must fulfil. With a team: signed by it under a certificate of Apple's;
  /// without one, as in a build that was signed on the spot, only the identifier is asked for. Nothing when
  /// `team` can be no team identifier, because it would change what the requirement says.
  static std::optional<std::string> forHelper(const std::optional<std::string>& team);
  /// The same for the application, asked by the helper.
  static std::optional<std::string> forApplication(const std::optional<std::string>& team);
};

} // namespace korvell
