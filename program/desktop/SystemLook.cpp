#include "program/desktop/SystemLook.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFileInfo>
#include <QGuiApplication>

namespace desktop {

namespace {

constexpr const char* kService = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kGroup = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";

// Asking for a bus where there is none would start one.
bool HasBus() {
  return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
         QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus");
}

}  // namespace

std::optional<bool> SystemLook::IsLight(uint scheme) {
  constexpr uint kDark = 1;
  constexpr uint kLight = 2;
  return scheme == kDark || scheme == kLight ? std::optional(scheme == kLight) : std::nullopt;
}

SystemLook::SystemLook(std::function<void(bool light)> told) : told_(std::move(told)) {
  if (!HasBus() || !QDBusConnection::sessionBus().isConnected()) return;
  connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
          [this](Qt::ApplicationState state) {
            if (state == Qt::ApplicationActive) Ask();
          });
  Ask();
}

void SystemLook::Ask() {
  QDBusMessage question = QDBusMessage::createMethodCall(kService, kPath, kInterface, "Read");
  question << kGroup << kKey;
  auto* answer =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    const QDBusPendingReply<QDBusVariant> reply = *answer;
    // The number comes wrapped twice.
    const QVariant value = reply.isError() ? QVariant() : reply.value().variant();
    const QVariant inner =
        value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value;
    if (const auto light = IsLight(inner.toUInt())) told_(*light);
    answer->deleteLater();
  });
}

}  // namespace desktop
