# The command-line tool and the keeper, for macOS and for Homebrew on Linux.
#
# Not tried: written after Homebrew's formula cookbook, never installed with brew. `brew audit --strict` and
# `brew test korvell` come first. `url` and `sha256` are of a release archive, which scripts/package does not make;
# the checksum below is that of nothing, so that no install passes by accident.
class Korvell < Formula
  desc "Health of this computer in a terminal"
  homepage "https://korvell.com/"
  url "https://korvell.com/releases/korvell-0.1.0.tar.gz"
  sha256 "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"
  license "Apache-2.0"

  depends_on "cli11" => :build
  depends_on "cmake" => :build
  depends_on "ninja" => :build
  depends_on "nlohmann-json" => :build
  depends_on "pkgconf" => :build
  depends_on "fmt"
  depends_on "simdjson"
  depends_on "sqlite"

  on_macos do
    depends_on macos: :sonoma
  end

  on_linux do
    depends_on "libplist"
    depends_on "libsodium"
    depends_on "pulseaudio"
    depends_on "systemd"
  end

  def install
    system "cmake", "-S", ".", "-B", "build", "-G", "Ninja", "-DKORVELL_UI=OFF", *std_cmake_args
    system "cmake", "--build", "build"
    system "cmake", "--install", "build"
  end

  # The helper that reads what the system hides of other users' processes is part of the application's bundle: macOS
  # starts a daemon only from there. This copy says so in `korvell helper`.
  service do
    run [opt_bin/"korvell", "run"]
    keep_alive crashed: true
    log_path var/"log/korvell.log"
    error_log_path var/"log/korvell.log"
  end

  test do
    assert_match version.to_s, shell_output("#{bin}/korvell --version")
    assert_match "\"score\"", shell_output("#{bin}/korvell status --json")
  end
end
