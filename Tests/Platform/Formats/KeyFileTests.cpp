#include "Platform/Formats/KeyFile.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

using Arguments = std::optional<std::vector<std::string>>;

TEST(KeyFileTests, desktopEntries) {
  const auto file = KeyFile::parseDesktopEntry("# comment\nStray=1\n[Desktop Entry]\r\nName = Notes \n"
                                               "Exec=notes --title=a;b\\\nName[de]=Notizen\nno assignment\n"
                                               "[Desktop Action New]\nName=New\nExec=notes --new\n"
                                               "[Desktop Entry]\nHidden=true\nHidden=false");
  EXPECT_EQ(file.last("Desktop Entry", "Name"), "Notes");
  EXPECT_EQ(file.last("Desktop Entry", "Name[de]"), "Notizen") << "a backslash does not continue a line here";
  EXPECT_EQ(file.last("Desktop Entry", "Exec"), "notes --title=a;b\\");
  EXPECT_EQ(file.last("Desktop Entry", "Hidden"), "false");
  EXPECT_EQ(file.last("Desktop Action New", "Exec"), "notes --new");
  EXPECT_EQ(file.last("Desktop Entry", "Stray"), std::nullopt);
  EXPECT_EQ(file.last("", "Stray"), "1");
}

TEST(KeyFileTests, units) {
  const auto file = KeyFile::parseUnit("[Service]\n; comment\nExecStart=/bin/one \\\n# between\n  --flag\n"
                                       "ExecStart=/bin/two\n[Install]\nWantedBy=default.target\n"
                                       "[Service]\nExecStartPre=/bin/pre\nRestart=on-failure\\");
  EXPECT_EQ(file.all("Service", "ExecStart"),
            (std::vector<std::string_view>{"/bin/one  --flag", "/bin/two"}));
  EXPECT_EQ(file.last("Install", "WantedBy"), "default.target");
  EXPECT_EQ(file.last("Service", "Restart"), "on-failure") << "the last line wants to go on";
  const auto reset = KeyFile::parseUnit("[Service]\nExecStart=/bin/one\nExecStart=\nExecStart=/bin/two\n");
  EXPECT_EQ(reset.all("Service", "ExecStart"), (std::vector<std::string_view>{"/bin/two"}));
}

TEST(KeyFileTests, commandLinesOfDesktopEntries) {
  const std::pair<const char*, Arguments> rows[] = {
      {"notes", {{"notes"}}},
      {"  /usr/bin/notes  --new %U ", {{"/usr/bin/notes", "--new", "%U"}}},
      {R"("/opt/My Notes/run" "a b" c"d e"f)", {{"/opt/My Notes/run", "a b", "cd ef"}}},
      {R"(sh -c "echo \\"x\\" \\$HOME \\\\")", {{"sh", "-c", R"(echo "x" $HOME \)"}}},
      {R"(a\sb)", {{"a", "b"}}},
      {"rate 100%%", {{"rate", "100%"}}},
      {R"(/opt/My\\ App/run x\\\\y)", {{"/opt/My App/run", R"(x\y)"}}},
      {R"("")", {}},
      {R"("/opt/unclosed)", {}},
      {"", {}},
      {"   ", {}},
  };
  for (const auto& [exec, expected] : rows) EXPECT_EQ(desktopEntryArguments(exec), expected) << exec;
}

TEST(KeyFileTests, programsOfUnits) {
  const std::pair<const char*, std::optional<std::string>> rows[] = {
      {"/usr/bin/one --flag", "/usr/bin/one"},
      {"-/usr/bin/one", "/usr/bin/one"},
      {"@/usr/bin/one name", "/usr/bin/one"},
      {"!!+:- /usr/bin/one", "/usr/bin/one"},
      {"one", "one"},
      {R"("/opt/My App/run" x)", "/opt/My App/run"},
      {R"('/opt/My App/run' x)", "/opt/My App/run"},
      {R"(/opt/My\x20App/r\sun\\ x)", R"(/opt/My App/r un\)"},
      {R"(/opt/My\040App/\08)", "/opt/My App/08"},
      {R"(/opt/\xZZ)", "/opt/xZZ"},
      {"%h/bin/one", "%h/bin/one"},
      {R"("/opt/unclosed)", std::nullopt},
      {"-", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [execStart, expected] : rows) EXPECT_EQ(unitProgram(execStart), expected) << execStart;
}

TEST(KeyFileTests, dropInsOfAUnit) {
  const std::pair<const char*, std::vector<std::string>> rows[] = {
      {"a.service", {"a.service.d"}},
      {"a-b-c.service", {"a-b-c.service.d", "a-b-.service.d", "a-.service.d"}},
      {"a-.service", {"a-.service.d"}},
      {"a-b@.service", {"a-b@.service.d", "a-@.service.d"}},
      {"a@b-c.service", {"a@b-c.service.d", "a@.service.d"}},
      {"none", {}}};
  for (const auto& [unit, names] : rows) EXPECT_EQ(dropInNames(unit), names) << unit;
  EXPECT_EQ(dropInNameOfType("a.b.service"), "service.d");
}

TEST(KeyFileTests, namesInsideUnitNames) {
  EXPECT_EQ(unitNameEscaped("org.example.Notes"), "org.example.Notes");
  EXPECT_EQ(unitNameEscaped("my-notes (2)"), R"(my\x2dnotes\x20\x282\x29)");
  EXPECT_EQ(unitNameEscaped(".hidden/x"), R"(\x2ehidden-x)");
}

} // namespace
} // namespace korvell
