#include "UI/Desktop/DesktopLook.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QTimer>

namespace korvell {

namespace {

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* settings = "org.freedesktop.portal.Settings";
constexpr const char* appearanceNamespace = "org.freedesktop.appearance";
constexpr const char* interfaceNamespace = "org.gnome.desktop.interface";
constexpr const char* accessibilityNamespace = "org.gnome.desktop.a11y.interface";

using Namespaces = QMap<QString, QVariantMap>;

/// Absent where the desktop does not tell.
std::optional<QVariant> find(const Namespaces& all, const char* space, const char* key) {
  const auto values = all.value(space);
  const auto found = values.find(key);
  if (found == values.end()) return std::nullopt;
  const auto wrapped = found->canConvert<QDBusVariant>() ? found->value<QDBusVariant>().variant() : *found;
  return wrapped;
}

DesktopWishes wishesOf(const Namespaces& all) {
  enum ColorScheme : unsigned { noPreference, preferDark, preferLight };
  auto wishes = DesktopLook::fromPalette();
  if (const auto scheme = find(all, appearanceNamespace, "color-scheme")) {
    wishes.appearance = scheme->toUInt() == preferDark ? Appearance::dark : Appearance::light;
    // Without a preference a panel may be of any colour.
    if (scheme->toUInt() == preferDark) wishes.ink = TrayInk::light;
    if (scheme->toUInt() == preferLight) wishes.ink = TrayInk::dark;
  }
  if (const auto contrast = find(all, appearanceNamespace, "contrast"))
    wishes.highContrast = contrast->toUInt() == 1;
  else if (const auto high = find(all, accessibilityNamespace, "high-contrast"))
    wishes.highContrast = high->toBool();
  if (const auto motion = find(all, appearanceNamespace, "reduced-motion"))
    wishes.reducedMotion = motion->toUInt() == 1;
  else if (const auto animations = find(all, interfaceNamespace, "enable-animations"))
    wishes.reducedMotion = !animations->toBool();
  return wishes;
}

} // namespace

struct DesktopLook::Portal {
  explicit Portal(std::function<void(const DesktopWishes&)> changed) : changed_(std::move(changed)) {
    // Any change has everything asked again, several at a time once.
    ask_.setSingleShot(true);
    ask_.setInterval(0);
    QObject::connect(&ask_, &QTimer::timeout, &ask_, [this] { ask(); });
    bus_.connect(service, path, settings, "SettingChanged", &ask_, SLOT(start()));
    ask();
  }

private:
  void ask() {
    auto message = QDBusMessage::createMethodCall(service, path, settings, "ReadAll");
    message.setArguments({QStringList{appearanceNamespace, interfaceNamespace, accessibilityNamespace}});
    auto* call = new QDBusPendingCallWatcher(bus_.asyncCall(message), &ask_);
    QObject::connect(call, &QDBusPendingCallWatcher::finished, call, [this, call] {
      call->deleteLater();
      const auto reply = call->reply();
      if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return;
      changed_(wishesOf(qdbus_cast<Namespaces>(reply.arguments().first())));
    });
  }

  const std::function<void(const DesktopWishes&)> changed_;
  QDBusConnection bus_ = QDBusConnection::sessionBus();
  QTimer ask_;
};

DesktopLook::DesktopLook(std::function<void(const DesktopWishes&)> changed)
    : portal_(std::make_unique<Portal>(std::move(changed))) {}
DesktopLook::~DesktopLook() = default;

} // namespace korvell
