#include "program/desktop/Settings.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

namespace desktop {

namespace {

// Layouts take some kilobytes; a larger file is none of ours.
constexpr std::uint64_t kMostBytes = 16 << 20;

}  // namespace

Settings::Settings(const engine::Services& services, std::string file)
    : files_(services.files), ledger_(services.ledger), file_(std::move(file)) {
  (void)Read();  // in the ledger; without a file the defaults apply
}

QByteArray Settings::Bytes(const QString& key) const {
  return QByteArray::fromBase64(values_.value(key).toString().toLatin1());
}

QStringList Settings::Texts(const QString& key) const {
  QStringList texts;
  const QJsonArray values = values_.value(key).toArray();
  for (const auto& value : values) {
    if (value.isString()) texts.append(value.toString());
  }
  return texts;
}

engine::Status Settings::Set(const QString& key, const QByteArray& bytes) {
  return Keep(key, QString::fromLatin1(bytes.toBase64()));
}

engine::Status Settings::Set(const QString& key, const QStringList& texts) {
  return Keep(key, QJsonArray::fromStringList(texts));
}

// Read again before writing: a second desktop may have kept something meanwhile. Only what this run
// has set wins over it, and holds in this run also where it cannot be written.
engine::Status Settings::Keep(const QString& key, const QJsonValue& value) {
  session_.insert(key, value);
  engine::Status status = Read();
  if (file_.empty()) return {};
  if (status) status = files_.MakeFolders(file_.substr(0, file_.rfind('/')));
  // A person may keep such files elsewhere, with a link here.
  files_.Follow(file_);
  return status ? files_.ReplaceFile(file_, QJsonDocument(values_).toJson().toStdString()) : status;
}

// A damaged file is copied aside and counts as empty; the next Set writes a whole one.
engine::Status Settings::Read() {
  values_ = {};
  engine::Status status;
  if (files_.Kind(file_) != engine::FileKind::Missing) {
    const auto text = files_.ReadFile(file_, kMostBytes);
    QJsonParseError error{};
    const QJsonDocument document =
        text ? QJsonDocument::fromJson(QByteArray::fromStdString(text.Value()), &error)
             : QJsonDocument();
    if (!text) {
      status = text.GetStatus();
    } else if (!document.isObject()) {
      status = KeepAside(error.errorString().toStdString());
    }
    values_ = document.object();
  }
  for (auto it = session_.constBegin(); it != session_.constEnd(); ++it)
    values_.insert(it.key(), it.value());
  return status;
}

engine::Status Settings::KeepAside(const std::string& reason) {
  const std::string aside = file_ + ".damaged";
  engine::Status kept = files_.CopyFile(file_, aside, true);
  if (kept)
    ledger_.AddNote(
        file_, "The settings were damaged (" + reason + "); the old file is \"" + aside + "\".");
  return kept;
}

}  // namespace desktop
