#include "Platform/macOS/MacTemperatures.h"

#include "Base/macOS/CoreFoundation.h"
#include "Platform/macOS/IORegistry.h"

#include <cstdint>
#include <dlfcn.h>
#include <type_traits>
#include <utility>

namespace korvell {

namespace {

// The controller

class AppleSMC final : public ControllerTransport {
public:
  explicit AppleSMC(io_connect_t connection) : connection_(connection) {}
  ~AppleSMC() override { IOServiceClose(connection_); }
  AppleSMC(const AppleSMC&) = delete;
  AppleSMC& operator=(const AppleSMC&) = delete;

  std::optional<std::size_t> exchange(const Record& request, Record& reply) override {
    constexpr std::uint32_t selector = 2;
    std::size_t size = reply.size();
    if (IOConnectCallStructMethod(connection_, selector, request.data(), request.size(), reply.data(),
                                  &size) != KERN_SUCCESS)
      return std::nullopt;
    return size;
  }

private:
  const io_connect_t connection_;
};

// The sensor events. None of these types is declared for everybody: all are objects of Core Foundation.

constexpr const char* framework = "/System/Library/Frameworks/IOKit.framework/IOKit";
constexpr std::int64_t vendorPage = 0xff00, temperatureUsage = 5;
constexpr std::int64_t temperatureEvent = 15;
constexpr std::int32_t temperatureLevel = std::int32_t(temperatureEvent << 16);

struct EventFunctions {
  CFTypeRef (*createClient)(CFAllocatorRef) = nullptr;
  void (*setMatching)(CFTypeRef client, CFDictionaryRef) = nullptr;
  CFArrayRef (*copyServices)(CFTypeRef client) = nullptr;
  CFTypeRef (*copyProperty)(CFTypeRef service, CFStringRef) = nullptr;
  CFTypeRef (*copyEvent)(CFTypeRef service, std::int64_t type, std::int32_t options,
                         std::int64_t timestamp) = nullptr;
  double (*getFloat)(CFTypeRef event, std::int32_t field) = nullptr;

  bool load() {
    void* library = ::dlopen(framework, RTLD_LAZY); // stays: it is linked anyway
    if (!library) return false;
    const auto find = [&](auto& function, const char* name) {
      function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, name));
      return function != nullptr;
    };
    return find(createClient, "IOHIDEventSystemClientCreate") &&
           find(setMatching, "IOHIDEventSystemClientSetMatching") &&
           find(copyServices, "IOHIDEventSystemClientCopyServices") &&
           find(copyProperty, "IOHIDServiceClientCopyProperty") &&
           find(copyEvent, "IOHIDServiceClientCopyEvent") && find(getFloat, "IOHIDEventGetFloatValue");
  }
};

class HIDEvents final : public TemperatureEvents {
public:
  HIDEvents(const EventFunctions& functions, CFOwned<CFTypeRef> client)
      : functions_(functions), client_(std::move(client)) {
    const auto matching =
        cfObject(Value::object({{"PrimaryUsagePage", vendorPage}, {"PrimaryUsage", temperatureUsage}}));
    functions_.setMatching(client_.get(), cfCast<CFDictionaryRef>(matching.get(), CFDictionaryGetTypeID()));
    services_ = CFOwned<CFArrayRef>(functions_.copyServices(client_.get()));
  }

  std::vector<std::optional<std::string>> products() override {
    std::vector<std::optional<std::string>> products;
    for (std::size_t i = 0; i < count(); ++i) {
      const CFOwned<CFTypeRef> product(functions_.copyProperty(service(i), CFSTR("Product")));
      const auto name = cfCast<CFStringRef>(product.get(), CFStringGetTypeID());
      products.push_back(name ? std::optional(cfText(name)) : std::nullopt);
    }
    return products;
  }

  std::optional<double> celsius(std::size_t place) override {
    if (place >= count()) return std::nullopt;
    const CFOwned<CFTypeRef> event(functions_.copyEvent(service(place), temperatureEvent, 0, 0));
    if (!event) return std::nullopt;
    return functions_.getFloat(event.get(), temperatureLevel);
  }

private:
  std::size_t count() const { return services_ ? std::size_t(CFArrayGetCount(services_.get())) : 0; }
  CFTypeRef service(std::size_t place) const {
    return CFArrayGetValueAtIndex(services_.get(), CFIndex(place));
  }

  const EventFunctions functions_;
  CFOwned<CFTypeRef> client_;
  CFOwned<CFArrayRef> services_;
};

} // namespace

std::unique_ptr<ControllerTransport> openMacController() {
  const IOObject service(IOServiceGetMatchingService(kIOMainPortDefault, IOServiceMatching("AppleSMC")));
  io_connect_t connection = IO_OBJECT_NULL;
  if (!service || IOServiceOpen(service.get(), mach_task_self(), 0, &connection) != KERN_SUCCESS)
    return nullptr;
  return std::make_unique<AppleSMC>(connection);
}

std::unique_ptr<TemperatureEvents> openMacTemperatureEvents() {
  EventFunctions functions;
  if (!functions.load()) return nullptr;
  CFOwned<CFTypeRef> client(functions.createClient(kCFAllocatorDefault));
  return client ? std::make_unique<HIDEvents>(functions, std::move(client)) : nullptr;
}

} // namespace korvell
