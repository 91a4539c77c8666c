#pragma once
// A Mac's controller that plays recorded keys and can be made to fail in every way in which a real one does.

#include "Platform/TemperatureSources.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace korvell {

class FakeController final : public ControllerTransport {
public:
  struct Key {
    std::string type;
    std::vector<std::uint8_t> bytes;
    std::optional<std::uint32_t> toldSize = std::nullopt; ///< where it differs from what there is
  };
  /// What a test changes and looks at, while the transport is somebody else's.
  struct Script {
    std::map<std::string, Key> keys;
    std::size_t answerSize = recordSize;
    bool refuses = false;
    int calls = 0;
    Record last{}; ///< the last request
  };

  explicit FakeController(std::shared_ptr<Script> script) : script_(std::move(script)) {}

  std::optional<std::size_t> exchange(const Record& request, Record& reply) override {
    ++script_->calls;
    script_->last = request;
    if (script_->refuses) return std::nullopt;
    const auto key = script_->keys.find(name(request));
    if (key == script_->keys.end()) {
      reply[40] = 0x84; // "not found"
      return script_->answerSize;
    }
    if (request[42] == 9) {
      const auto size = key->second.toldSize.value_or(std::uint32_t(key->second.bytes.size()));
      const auto& type = key->second.type;
      const std::uint32_t packed = std::uint32_t(std::uint8_t(type[0])) << 24 |
                                   std::uint32_t(std::uint8_t(type[1])) << 16 |
                                   std::uint32_t(std::uint8_t(type[2])) << 8 | std::uint8_t(type[3]);
      std::memcpy(&reply[28], &size, 4);
      std::memcpy(&reply[32], &packed, 4);
    } else {
      std::ranges::copy(key->second.bytes, reply.begin() + 48);
    }
    return script_->answerSize;
  }

private:
  static std::string name(const Record& request) {
    std::uint32_t packed = 0;
    std::memcpy(&packed, request.data(), 4);
    std::string name;
    for (int shift = 24; shift >= 0; shift -= 8) name += char(packed >> shift & 0xff);
    return name;
  }

  std::shared_ptr<Script> script_;
};

/// Services of a Mac's event system: a product and a temperature each, absent where the service has none.
class FakeTemperatureEvents final : public TemperatureEvents {
public:
  struct Service {
    std::optional<std::string> product;
    std::optional<double> celsius;
  };
  using Services = std::vector<Service>;
  explicit FakeTemperatureEvents(std::shared_ptr<Services> services) : services_(std::move(services)) {}

  std::vector<std::optional<std::string>> products() override {
    std::vector<std::optional<std::string>> products;
    for (const auto& service : *services_) products.push_back(service.product);
    return products;
  }
  std::optional<double> celsius(std::size_t service) override { return services_->at(service).celsius; }

private:
  std::shared_ptr<Services> services_;
};

} // namespace korvell
