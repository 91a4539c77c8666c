#include "App/CommandLineTool.h"
#include "App/HelperSwitch.h"

#include "Tests/Fakes/FakeEnvironment.h"
#include "Tests/Fakes/FakeUsageHelper.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace korvell {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct CommandLineToolTests : testing::Test {
  TemporaryFolder home;
  std::optional<std::string> output = ""; ///< of the shell; nothing when it can't be started
  std::vector<std::string> asked;         ///< the last program with its arguments
  const std::string link = home / ".local/bin/korvell";
  const std::string installed = "Installed. Open a new terminal window and run korvell --help.";

  CommandLineToolTests() { home.write("app/korvell", "tool"); }

  CommandLineTool tool(std::optional<std::string> shell = "/bin/bash",
                       SystemKind system = SystemKind::linuxDesktop) {
    auto environment = shell ? fakeEnvironment({{"SHELL", *shell}}) : fakeEnvironment({});
    const auto run = [this](const std::string& path, const std::vector<std::string>& arguments, Seconds,
                            const Cancellation&) -> std::optional<ShellResult> {
      asked = arguments;
      asked.insert(asked.begin(), path);
      if (!output) return std::nullopt;
      return ShellResult{.output = *output};
    };
    return CommandLineTool({system, home / "app/korvell-app", home.path().string(), environment, run});
  }
  std::string install(std::string path) {
    output = "Welcome!\nPATH=__PATH__\n__PATH__" + path + "\nGoodbye: ~/.local/bin:\n";
    return tool().install();
  }
};

TEST_F(CommandLineToolTests, theToolIsInTheBundleOrBesideTheProgram) {
  const auto path = [](std::string program) {
    return CommandLineTool({.program = std::move(program)}).toolPath();
  };
  EXPECT_EQ(path("/Applications/Korvell.app/Contents/MacOS/Korvell"),
            "/Applications/Korvell.app/Contents/Helpers/korvell");
  EXPECT_EQ(path("/usr/bin/korvell-app"), "/usr/bin/korvell");
  EXPECT_EQ(path("/home/u/MacOS/korvell-app"), "/home/u/MacOS/korvell");
}

TEST_F(CommandLineToolTests, aLinkIsMadeOrRenewedWhereverItLed) {
  EXPECT_EQ(install("/usr/bin:" + (home / ".local/bin")), installed);
  EXPECT_EQ(fs::read_symlink(link), home / "app/korvell");
  EXPECT_THAT(asked, ElementsAre("/bin/bash", "-ilc", "printf '\\n__PATH__%s' \"$PATH\""));

  home.write("other", "somebody's");
  for (const char* target : {"other", "gone"}) {
    fs::remove(link);
    fs::create_symlink(home / target, link);
    EXPECT_EQ(install("~/.local/bin"), installed) << target;
    EXPECT_EQ(fs::read_symlink(link), home / "app/korvell") << target;
  }
  EXPECT_EQ(home.text("other"), "somebody's");
  EXPECT_EQ(std::distance(fs::directory_iterator(home / ".local/bin"), fs::directory_iterator()), 1)
      << "nothing that was made aside stays";
}

TEST_F(CommandLineToolTests, whatIsNoLinkStays) {
  home.write(".local/bin/korvell", "my own");
  const auto refusal = "~/.local/bin/korvell already exists and is not a link. Remove it and try again.";
  EXPECT_EQ(install("~/.local/bin"), refusal);
  EXPECT_EQ(home.text(".local/bin/korvell"), "my own");
  fs::remove(link);
  fs::create_directory(link);
  EXPECT_EQ(install("~/.local/bin"), refusal);
  EXPECT_TRUE(fs::is_directory(link));
}

TEST_F(CommandLineToolTests, aCopyThatRunsFromThatFolderIsNotLinkedToItself) {
  fs::create_directories(home / ".local/bin");
  fs::create_directory_symlink(home / ".local", home / "local");
  fs::create_symlink(home / "app/korvell", link);
  for (const char* program : {".local/bin/korvell-app", "local/bin/korvell-app"}) {
    const CommandLineTool own(
        {.program = home / program,
         .home = home.path().string(),
         .environment = fakeEnvironment({}),
         .run = [](const auto&, const auto&, Seconds, const auto&) -> std::optional<ShellResult> {
           return ShellResult{.output = "__PATH__~/.local/bin"};
         }});
    EXPECT_EQ(own.install(), installed) << program;
    EXPECT_EQ(home.text(".local/bin/korvell"), "tool") << program;
  }
}

TEST_F(CommandLineToolTests, whatStandsInTheWayIsSaid) {
  home.write(".local/bin", "a file");
  EXPECT_THAT(install("~/.local/bin"), StartsWith("Could not install: "));
  EXPECT_EQ(home.text(".local/bin"), "a file");
  fs::remove(home / "app/korvell");
  EXPECT_EQ(install("~/.local/bin"), "The command line tool is missing from this copy of Korvell.");
  EXPECT_TRUE(asked.empty()) << "no shell is started for that";
}

TEST_F(CommandLineToolTests, aFolderThatIsNotOnThePATHIsToldWithTheShellsOwnLine) {
  for (const auto* path : {"", "/usr/bin", "/elsewhere/.local/bin:~/.local/bin2", "~/.local"})
    EXPECT_THAT(install(path), HasSubstr("is not on your PATH")) << path;
  EXPECT_EQ(install("/bin:~/.local/bin/:/usr/bin"), installed);

  output.reset();
  const std::string line = "export PATH=\"$HOME/.local/bin:$PATH\"";
  const struct {
    std::optional<std::string> shell;
    SystemKind system;
    std::string started, advice;
  } rows[] = {
      {"/bin/bash", SystemKind::linuxDesktop, "/bin/bash", line + " to ~/.bashrc."},
      {"/usr/bin/zsh", SystemKind::linuxDesktop, "/usr/bin/zsh", line + " to ~/.zshrc."},
      {"/usr/bin/fish", SystemKind::linuxDesktop, "/usr/bin/fish",
       "fish_add_path ~/.local/bin to ~/.config/fish/config.fish."},
      {"/bin/dash", SystemKind::linuxDesktop, "/bin/dash", line + " to ~/.profile."},
      {std::nullopt, SystemKind::linuxDesktop, "/bin/sh", line + " to ~/.profile."},
      {std::nullopt, SystemKind::macOS, "/bin/zsh", line + " to ~/.zshrc."},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(tool(row.shell, row.system).install(),
              "Installed at ~/.local/bin/korvell, but ~/.local/bin is not on your PATH. Add " + row.advice);
    EXPECT_EQ(asked.front(), row.started);
  }
}

TEST_F(CommandLineToolTests, quotedTextReachesAShellAsItIs) {
  for (const std::string text : {"", "/usr/bin/korvell", "it's $HOME `x` \"y\" \\ *", "'''"}) {
    const auto result = Shell::run("/bin/sh", {"-c", "printf %s " + shellQuoted(text)}, Seconds{60});
    EXPECT_EQ(result.value_or(ShellResult{}).output, text);
  }
}

TEST_F(CommandLineToolTests, agentsAreToldWhereTheToolIs) {
  const CommandLineTool plain({.program = "/opt/it's/korvell-app"});
  EXPECT_EQ(plain.claudeCommand(), "claude mcp add korvell -- '/opt/it'\\''s/korvell' mcp");
  EXPECT_EQ(plain.clientSnippet(), "{\n  \"mcpServers\": {\n    \"korvell\": {\n      \"command\": "
                                   "\"/opt/it's/korvell\",\n      \"args\": [\"mcp\"]\n    }\n  }\n}");
  const CommandLineTool odd({.program = "/opt/\"a\\b\"/korvell-app"});
  const auto snippet = parseJSON(odd.clientSnippet());
  ASSERT_TRUE(snippet);
  EXPECT_EQ(*snippet->find("mcpServers")->find("korvell")->find("command"), Value(odd.toolPath()));
}

struct HelperSwitchTests : testing::Test {
  FakeUsageHelper helper;
  std::vector<std::string> asked;
  std::optional<ShellResult> answer = ShellResult{};

  HelperSwitch make(SystemKind system, std::uint32_t user, std::string asker = "/usr/bin/ask") {
    helper.current = UsageHelperStatus::notEnabled;
    const auto run = [this](const std::string& path, const std::vector<std::string>& arguments, Seconds,
                            const Cancellation&) {
      asked = arguments;
      asked.insert(asked.begin(), path);
      return answer;
    };
    return HelperSwitch({helper, system, user, "/opt/it's/korvell", std::move(asker), run});
  }
};

TEST_F(HelperSwitchTests, whoMayTurnsItDirectly) {
  EXPECT_TRUE(make(SystemKind::macOS, 501).turn(true));
  EXPECT_EQ(helper.current, UsageHelperStatus::enabled);
  EXPECT_TRUE(make(SystemKind::linuxDesktop, 0).turn(true));
  EXPECT_EQ(helper.current, UsageHelperStatus::enabled);
  helper.failure = Failure{"No."};
  EXPECT_EQ(make(SystemKind::macOS, 501).turn(false).reason(), "No.");
  EXPECT_TRUE(asked.empty());
}

TEST_F(HelperSwitchTests, othersAskAnAdministrator) {
  const auto desktop = make(SystemKind::linuxDesktop, 1000);
  EXPECT_TRUE(desktop.turn(false));
  EXPECT_THAT(asked, ElementsAre("/usr/bin/ask", "/opt/it's/korvell", "helper", "disable"));
  EXPECT_EQ(helper.current, UsageHelperStatus::notEnabled) << "that is the other program's to do";

  const std::string byHand = "sudo '/opt/it'\\''s/korvell' helper enable";
  const struct {
    std::optional<ShellResult> answer;
    std::string reason;
  } rows[] = {
      {ShellResult{.exitStatus = 126}, "no administrator allowed it"},
      {ShellResult{.exitStatus = 143, .interrupted = true}, "no administrator allowed it"},
      {ShellResult{.exitStatus = 127}, byHand},
      {ShellResult{.exitStatus = 1}, "That did not work. "},
      {ShellResult{.exitStatus = 143, .timedOut = true}, "That did not work. "},
      {std::nullopt, byHand},
  };
  for (const auto& row : rows) {
    answer = row.answer;
    const auto outcome = desktop.turn(true);
    ASSERT_FALSE(outcome);
    EXPECT_THAT(outcome.reason(), HasSubstr(row.reason));
  }
  asked.clear();
  EXPECT_THAT(make(SystemKind::linuxDesktop, 1000, "").turn(true).reason(), HasSubstr(byHand));
  EXPECT_TRUE(asked.empty());
}

} // namespace
} // namespace korvell
