// Which look the system wants is asked of its settings portal over D-Bus (XDG Desktop Portal,
// interface org.freedesktop.portal.Settings). Nothing waits for the answer: until it comes, and
// where there is no such service, the look of the last run holds (decision 24).
#include "program/desktop/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFileInfo>
#include <QGuiApplication>

#include "program/desktop/ApplicationStyle.h"

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

// 0 is "no preference"; numbers that are not known count as that.
std::optional<bool> SystemAppearance::IsLight(uint scheme) {
  constexpr uint kDark = 1;
  constexpr uint kLight = 2;
  return scheme == kDark || scheme == kLight ? std::optional(scheme == kLight) : std::nullopt;
}

// Asked again whenever the program comes to the front, since most systems change their look in
// another window.
SystemAppearance::SystemAppearance(std::function<void(bool light)> told) : told_(std::move(told)) {
  if (!HasBus() || !QDBusConnection::sessionBus().isConnected()) return;
  connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
          [this](Qt::ApplicationState state) {
            if (state == Qt::ApplicationActive) Ask();
          });
  Ask();
}

void SystemAppearance::Ask() {
  QDBusMessage question = QDBusMessage::createMethodCall(kService, kPath, kInterface, "Read");
  // Read is the older of two methods, which wraps its value once more; every portal has it.
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

namespace {

// Keys of the settings file. The names below stand in it, in the order of AppearanceMenu::Wanted.
constexpr const char* kWanted = "window/look";
constexpr const char* kOfSystem = "window/system-look";
constexpr const char* kNames[] = {"system", "dark", "light"};
constexpr int kLightName = 2;

}  // namespace

AppearanceMenu::AppearanceMenu(QMenu& menu, Settings& settings, QObject* parent)
    : QObject(parent), settings_(settings), group_(nullptr) {
  const QString kept = settings.Texts(kWanted).value(0);
  for (const Wanted wanted : {Wanted::Dark, Wanted::Light}) {
    if (kept == kNames[static_cast<int>(wanted)]) wanted_ = wanted;
  }
  systemIsLight_ = settings.Texts(kOfSystem).value(0) == kNames[kLightName];
  QMenu* looks = menu.addMenu("A&ppearance");
  Add(*looks, "As the &System", Wanted::AsSystem);
  Add(*looks, "&Dark", Wanted::Dark);
  Add(*looks, "&Light", Wanted::Light);
  for (QAction* action : looks->actions()) group_.addAction(action);
  Show();
}

void AppearanceMenu::Add(QMenu& menu, const QString& text, Wanted wanted) {
  QAction* action = menu.addAction(text, this, [this, wanted] {
    wanted_ = wanted;
    // Applies to this run even where it cannot be kept, which the ledger has.
    (void)settings_.Set(kWanted, QStringList{kNames[static_cast<int>(wanted)]});
    Show();
  });
  action->setCheckable(true);
  action->setChecked(wanted == wanted_);
}

// Kept, so that the next start begins in this look instead of changing in front of the person.
void AppearanceMenu::SystemPrefers(bool light) {
  if (light == systemIsLight_) return;
  systemIsLight_ = light;
  (void)settings_.Set(kOfSystem, QStringList{light ? kNames[kLightName] : ""});
  Show();
}

void AppearanceMenu::Show() {
  const bool light = wanted_ == Wanted::Light || (wanted_ == Wanted::AsSystem && systemIsLight_);
  ShowTheme(light ? LightTheme() : DarkTheme());
}

}  // namespace desktop
