#include "Core/Health/Wordings.h"

namespace korvell {

namespace {

constexpr const char* othersName = "in";
constexpr std::string_view english = "en";

} // namespace

void tellWordings(const Wordings& wordings, Value& record) {
  auto others = Value::object();
  for (const auto& [code, wording] : wordings) {
    if (code == english)
      record.set("title", wording.title).set("detail", wording.detail);
    else
      others.set(code, Value::object({{"title", wording.title}, {"detail", wording.detail}}));
  }
  if (!others.asObject()->empty()) record.set(othersName, std::move(others));
}

Wordings readWordings(const Value& record) {
  Wordings wordings;
  const auto read = [&](const std::string& code, const Value& from) {
    const auto *title = from.find("title"), *detail = from.find("detail");
    if (title && detail && title->asString() && detail->asString())
      wordings[code] = {*title->asString(), *detail->asString()};
  };
  const auto* others = record.find(othersName);
  if (!others || !others->asObject()) return wordings;
  for (const auto& [code, wording] : *others->asObject()) read(code, wording);
  read(std::string(english), record);
  return wordings;
}

const Wording* wordingHere(const Wordings& wordings) {
  const auto found = wordings.find(currentLanguage().code);
  return found == wordings.end() ? nullptr : &found->second;
}

} // namespace korvell
