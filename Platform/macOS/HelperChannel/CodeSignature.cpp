#include "Platform/macOS/HelperChannel/CodeSignature.h"

#include "Base/macOS/CoreFoundation.h"

#include <Security/Security.h>

namespace korvell {

namespace {

std::optional<std::string> readTeamIdentifier() {
  CFOwned<SecCodeRef> self;
  if (SecCodeCopySelf(kSecCSDefaultFlags, self.out()) != errSecSuccess) return std::nullopt;
  CFOwned<SecStaticCodeRef> code;
  if (SecCodeCopyStaticCode(self.get(), kSecCSDefaultFlags, code.out()) != errSecSuccess) return std::nullopt;
  CFOwned<CFDictionaryRef> information;
  if (SecCodeCopySigningInformation(code.get(), kSecCSSigningInformation, information.out()) != errSecSuccess)
    return std::nullopt;
  const auto team = cfCast<CFStringRef>(CFDictionaryGetValue(information.get(), kSecCodeInfoTeamIdentifier),
                                        CFStringGetTypeID());
  auto text = cfText(team);
  if (text.empty()) return std::nullopt;
  return text;
}

} // namespace

const std::optional<std::string>& ownTeamIdentifier() {
  static const auto team = readTeamIdentifier();
  return team;
}

} // namespace korvell
