#include "Platform/Linux/DRMClients.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <unistd.h>

namespace korvell {

namespace {

bool isProcess(const std::string& name) {
  return std::ranges::all_of(name, [](unsigned char c) { return std::isdigit(c); });
}

bool isGraphicsDevice(const std::string& link) {
  std::array<char, 64> target; // longer ones are something else
  const auto length = ::readlink(link.c_str(), target.data(), target.size());
  return length > 0 && std::string_view(target.data(), std::size_t(length)).starts_with("/dev/dri/");
}

} // namespace

void DRMClients::find() {
  files_.clear();
  for (const auto& process : folderNames(proc_)) {
    if (!isProcess(process)) continue;
    const auto folder = proc_ + "/" + process;
    for (const auto& descriptor : folderNames(folder + "/fd"))
      if (isGraphicsDevice(folder + "/fd/" + descriptor)) files_.push_back(folder + "/fdinfo/" + descriptor);
  }
}

const std::map<std::string, DRMClients::Sum>& DRMClients::read(FileReader& reader) {
  std::map<Identity, DRMClient> now;
  std::erase_if(files_, [&](const std::string& file) {
    const auto text = reader.read(file);
    auto client = text ? parseDRMClient(*text) : std::nullopt;
    if (!client) return true; // closed, or another file by now
    now.emplace(Identity{client->device, client->id}, std::move(*client));
    return false;
  });

  for (auto& [device, sum] : sums_) sum.memory = 0;
  for (const auto& [identity, client] : now) {
    Sum& sum = sums_[client.device];
    sum.memory += client.memory;
    const auto before = clients_.find(identity);
    for (const auto& [engine, time] : client.engineTime) {
      auto& total = sum.engineTime[engine];
      if (before == clients_.end()) continue;
      const auto old = before->second.engineTime.find(engine);
      if (old != before->second.engineTime.end() && time > old->second) total += time - old->second;
    }
  }
  clients_ = std::move(now);
  return sums_;
}

} // namespace korvell
