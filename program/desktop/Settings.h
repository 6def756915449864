// Settings: what the desktop keeps between runs (layout, recent files), as one JSON file that is
// read and replaced as a whole. Each change reads the file anew, so that two running
// desktops keep each other's. A file that cannot be understood is kept beside as "<name>.damaged"
// and the defaults apply. Main thread.
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QStringList>

#include "engine/outside/Services.h"

namespace desktop {

class Settings {
 public:
  // `file`: absolute; its folder is made when the first setting is kept. Empty: there is no place,
  // nothing is kept.
  Settings(const engine::Services& services, std::string file);

  // The value under `key`; empty where there is none or one of another kind.
  QByteArray Bytes(const QString& key) const;
  QStringList Texts(const QString& key) const;
  // Keep a value and write the file. The value applies to this run even where writing fails.
  engine::Status Set(const QString& key, const QByteArray& bytes);
  engine::Status Set(const QString& key, const QStringList& texts);

 private:
  // Sets the value for this run and writes the file with it.
  engine::Status Keep(const QString& key, const QJsonValue& value);
  // Fails where the file may hold what would be lost by writing it.
  engine::Status Read();
  engine::Status KeepAside(const std::string& reason);

  engine::FileSystem& files_;
  engine::Ledger& ledger_;
  // Empty: nothing is kept.
  std::string file_;
  QJsonObject values_;
  QJsonObject session_;  // set in this run
};

}  // namespace desktop
