# The application for macOS, as a cask: the disk image that packaging/macos/bundle makes.
#
# Not tried: no image has been made on a Mac yet. `version` and `sha256` are of a release; the checksum below is that
# of nothing.
cask "korvell-app" do
  version "0.1.0"
  sha256 "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"

  url "https://korvell.com/releases/Korvell-#{version}.dmg"
  name "Korvell"
  desc "Health of this computer in the menu bar"
  homepage "https://korvell.com/"

  depends_on macos: ">= :sonoma"

  app "Korvell.app"
  binary "#{appdir}/Korvell.app/Contents/Helpers/korvell"

  # Before the files go: the daemon and the login item are registrations of this bundle.
  # A script runs once the application has ended; the tool would refuse while it is open.
  uninstall launchctl: "com.korvell.Korvell.Helper",
            quit:      "com.korvell.Korvell",
            script:    {
              executable:   "#{appdir}/Korvell.app/Contents/Helpers/korvell",
              args:         ["uninstall", "--yes"],
              must_succeed: false,
            }

  # Only with `brew uninstall --zap`: history, AI usage, settings, the widget's document.
  zap trash: [
    "~/Library/Application Support/Korvell",
    "~/Library/Preferences/com.korvell.Korvell.plist",
  ]
end
