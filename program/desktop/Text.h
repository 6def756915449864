// Texts between the host's type and the toolkit's. Bytes that are no valid UTF-8 show as
// replacement characters. Any thread.
#pragma once

#include <QString>
#include <string>

#include "host/String.h"

namespace desktop {

inline QString ToQt(const std::string& utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}
inline QString ToQt(const host::String& text) { return ToQt(text.ToUtf8()); }
inline host::String ToHost(const QString& text) { return host::String(text.toStdString()); }

// A label as the toolkit shows it literally: it would take a lone "&" for the mark of a shortcut.
inline QString Label(const host::String& text) { return ToQt(text).replace('&', "&&"); }

}  // namespace desktop
