#include "Tool/Completion.h"

#include "Base/Localization.h"
#include "Base/Text.h"

#include <algorithm>

namespace korvell {

namespace {

bool takesValue(const Option& option) {
  return option.kind != Option::Kind::flag && option.kind != Option::Kind::positional;
}

/// Follows the words that are complete, as the parser would.
class Position {
public:
  Position(std::span<const Command> commands) : root_(commands) {}

  void follow(const std::string& word) {
    if (word == "=" && awaited_) return; // shells part "--option=value" into three words
    if (awaited_) {
      awaited_ = nullptr;
    } else if (!onlyPlaces_ && word == "--") {
      onlyPlaces_ = true;
    } else if (!onlyPlaces_ && word.starts_with('-')) {
      followOption(word);
    } else if (!descend(word)) {
      ++places_;
    }
  }

  Completions at(Context& context, const std::string& typed) const {
    if (awaited_) return values(context, *awaited_);
    if (!onlyPlaces_ && typed.starts_with('-')) return afterDash(context, typed);
    Completions here;
    if (places_ == 0 && !onlyPlaces_) here.candidates = commandNames();
    if (const auto* place = openPlace()) {
      auto more = values(context, *place);
      here.areFiles = more.areFiles;
      std::ranges::move(more.candidates, std::back_inserter(here.candidates));
    } else if (here.candidates.empty() && typed.empty() && !onlyPlaces_) {
      here.candidates = optionNames();
    }
    return here;
  }

private:
  std::span<const Command> subcommands() const { return command_ ? std::span(command_->subcommands) : root_; }

  bool descend(const std::string& word) {
    const bool isHelp = !command_ && word == "help";
    if (isHelp) return isHelped_ = true;
    const auto found = std::ranges::find(subcommands(), word, &Command::name);
    if (places_ > 0 || found == subcommands().end()) return false;
    command_ = &*found;
    return true;
  }
  void followOption(const std::string& word) {
    const auto name = word.substr(0, word.find('='));
    given_.push_back(name);
    const auto* option = optionCalled(name);
    if (option && takesValue(*option) && name == word) awaited_ = option;
  }
  const Option* optionCalled(std::string_view name) const {
    if (!command_) return nullptr;
    const auto found = std::ranges::find(command_->options, name, &Option::name);
    return found == command_->options.end() ? nullptr : &*found;
  }
  const Option* openPlace() const {
    if (!command_ || isHelped_) return nullptr;
    std::size_t left = places_;
    for (const auto& option : command_->options)
      if (option.kind == Option::Kind::positional && left-- == 0) return &option;
    return nullptr;
  }

  std::vector<Suggestion> commandNames() const {
    std::vector<Suggestion> names;
    for (const auto& command : subcommands()) names.push_back({command.name, localized(command.summary)});
    if (!command_ && !isHelped_) names.push_back({"help", localized("Print the help of a command")});
    return names;
  }
  std::vector<Suggestion> optionNames() const {
    std::vector<Suggestion> names;
    if (isHelped_) return names;
    const auto isOpen = [this](const Option& option) {
      return option.kind != Option::Kind::positional &&
             (option.kind == Option::Kind::list || std::ranges::find(given_, option.name) == given_.end());
    };
    if (command_)
      for (const auto& option : command_->options)
        if (isOpen(option)) names.push_back({option.name, localized(option.help)});
    names.push_back({"--help", localized("Print this help and exit")});
    if (!command_) names.push_back({"--version", localized("Print the version and exit")});
    return names;
  }
  static Completions values(Context& context, const Option& option) {
    Completions found;
    found.areFiles = option.isPath;
    for (const auto& choice : option.choices) found.candidates.push_back({choice});
    if (option.suggest) found.candidates = option.suggest(context);
    return found;
  }
  Completions afterDash(Context& context, const std::string& typed) const {
    const auto equals = typed.find('=');
    if (equals == std::string::npos) return {optionNames()};
    const auto name = typed.substr(0, equals);
    const auto* option = optionCalled(name);
    if (!option || !takesValue(*option)) return {};
    auto found = values(context, *option);
    for (auto& candidate : found.candidates) candidate.value.insert(0, name + "=");
    return found;
  }

  std::span<const Command> root_;
  const Command* command_ = nullptr;
  const Option* awaited_ = nullptr; ///< the option whose value comes next
  std::vector<std::string> given_;
  std::size_t places_ = 0; ///< words so far that are neither commands nor options
  bool onlyPlaces_ = false;
  bool isHelped_ = false; ///< only commands come behind "help"
};

/// Names with control characters can neither be told in a line nor typed.
bool isTypable(const std::string& text) { return !text.empty() && escapedControls(text) == text; }

} // namespace

Completions completions(Context& context, std::span<const Command> commands,
                        std::span<const std::string> words) {
  Position position(commands);
  for (const auto& word : words.first(words.size() - 1)) position.follow(word);
  return position.at(context, words.back());
}

int printCompletions(Context& context, std::span<const Command> commands,
                     std::span<const std::string> words) {
  static const std::string nothing[1];
  const auto found = completions(context, commands, words.empty() ? std::span(nothing) : words);
  if (found.areFiles && found.candidates.empty()) {
    context.out.writeRaw(std::string(fileNames) + "\n");
    return exitOK;
  }
  for (const auto& [value, description] : found.candidates) {
    if (!isTypable(value)) continue;
    const auto about = description.empty() ? "" : "\t" + escapedControls(description);
    context.out.writeRaw(value + about + "\n");
  }
  return exitOK;
}

} // namespace korvell
