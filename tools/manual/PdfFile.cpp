#include "tools/manual/PdfFile.h"

#include <QRegularExpression>
#include <algorithm>

namespace manual {

namespace {

// The number that stands first after `key`; -1 where there is none. The last mention counts, as
// that of a file that was appended to.
qlonglong NumberAfter(const QByteArray& text, const char* key) {
  const qsizetype at = text.lastIndexOf(key);
  if (at < 0) return -1;
  const auto match = QRegularExpression(QStringLiteral("^\\s*(\\d+)"))
                         .match(QString::fromLatin1(text.mid(at + qstrlen(key), 24)));
  return match.hasMatch() ? match.captured(1).toLongLong() : -1;
}

// A text string of the format: UTF-16 with its mark, in hexadecimal digits.
QByteArray TextString(const QString& text) {
  QByteArray digits = "<FEFF";
  for (const QChar letter : text)
    digits += QByteArray::number(letter.unicode(), 16).rightJustified(4, '0').toUpper();
  return digits + ">";
}

QByteArray Reference(int number) { return QByteArray::number(number) + " 0 R"; }

}  // namespace

std::optional<PdfFile> PdfFile::Read(const QByteArray& bytes) {
  PdfFile file(bytes);
  if (!bytes.startsWith("%PDF-1.") || !file.ReadObjects() || !file.ReadPages()) return std::nullopt;
  return file;
}

// The cross-reference table of PDF 1.7, section 7.5.4: a line of 20 bytes for each object, with its
// offset in ten digits.
bool PdfFile::ReadObjects() {
  start_ = NumberAfter(bytes_, "startxref");
  const QByteArray trailer = bytes_.mid(bytes_.lastIndexOf("trailer"));
  count_ = static_cast<int>(NumberAfter(trailer, "/Size"));
  root_ = static_cast<int>(NumberAfter(trailer, "/Root"));
  info_ = static_cast<int>(NumberAfter(trailer, "/Info"));
  if (start_ <= 0 || count_ <= 0 || root_ <= 0 || info_ <= 0) return false;
  const QList<QByteArray> lines =
      bytes_.mid(start_, bytes_.indexOf("trailer", start_) - start_).split('\n');
  if (lines.size() < count_ + 2 || lines[0].trimmed() != "xref") return false;
  for (int number = 1; number < count_; ++number) {
    const QByteArray& line = lines[number + 2];
    if (line.contains(" n")) offsets_[number] = line.left(10).toLongLong();
  }
  return true;
}

bool PdfFile::ReadPages() {
  const QString tree =
      QString::fromLatin1(Object(static_cast<int>(NumberAfter(Object(root_), "/Pages"))));
  const QString kids =
      tree.mid(tree.indexOf(QLatin1String("/Kids"))).section(u'[', 1, 1).section(u']', 0, 0);
  static const QRegularExpression reference(QStringLiteral("(\\d+)\\s+0\\s+R"));
  static const QRegularExpression box(
      QStringLiteral("/MediaBox\\s*\\[\\s*\\S+\\s+\\S+\\s+\\S+\\s+([0-9.]+)"));
  for (auto it = reference.globalMatch(kids); it.hasNext();) {
    pages_.push_back(it.next().captured(1).toInt());
    heights_.push_back(
        box.match(QString::fromLatin1(Object(pages_.back()))).captured(1).toDouble());
  }
  return !pages_.empty() &&
         std::all_of(heights_.begin(), heights_.end(), [](double height) { return height > 0; });
}

// The text between "obj" and "endobj", as it stands now.
QByteArray PdfFile::Object(int number) const {
  if (replaced_.contains(number)) return replaced_[number];
  const qsizetype at = offsets_.value(number, -1);
  if (at < 0) return {};
  const qsizetype begin = bytes_.indexOf("obj", at) + 3;
  return bytes_.mid(begin, bytes_.indexOf("endobj", begin) - begin);
}

void PdfFile::ForgetTime() {
  const qsizetype at = bytes_.indexOf("/CreationDate", offsets_.value(info_));
  if (at < 0) return;
  // Blanks in its place, so that no offset changes.
  for (qsizetype i = at; i < bytes_.size() && bytes_[i] != '\n'; ++i) bytes_[i] = ' ';
}

// The format counts upwards from the bottom of a page.
QByteArray PdfFile::PlaceOf(const Destination& place) const {
  const double above = 8;  // what stays visible above the line
  return "[" + Reference(pages_[place.page]) + " /XYZ 0 " +
         QByteArray::number(heights_[place.page] - place.top + above, 'f', 1) + " null]";
}

bool PdfFile::LinkTo(const std::vector<Destination>& places) {
  static const QRegularExpression address(QStringLiteral("/A\\s*<<.*?/URI\\s*\\(#([^)]*)\\)\\s*>>"),
                                          QRegularExpression::DotMatchesEverythingOption);
  for (auto it = offsets_.constBegin(); it != offsets_.constEnd(); ++it) {
    if (!bytes_.mid(it.value(), 64).contains("/Annot\n")) continue;
    const QString link = QString::fromLatin1(Object(it.key()));
    const auto match = address.match(link);
    if (!match.hasMatch()) continue;
    const QString anchor = QString::fromUtf8(match.captured(1).toLatin1());
    const auto place = std::find_if(places.begin(), places.end(),
                                    [&](const auto& each) { return each.anchor == anchor; });
    if (place == places.end()) return false;
    QByteArray changed = link.toLatin1();
    changed.replace(match.capturedStart(), match.capturedLength(), "/Dest " + PlaceOf(*place));
    replaced_[it.key()] = changed;
  }
  return true;
}

namespace {

// An entry of the outline; the others by their places, -1 where there is none.
struct Entry {
  int parent = -1, previous = -1, next = -1, first = -1, last = -1, children = 0;
};

// One for each place by its level, and a last one, which holds those of the highest level. PDF 1.7,
// section 12.3.3: entries are linked to their neighbors and to the first and last one below them.
std::vector<Entry> TreeOf(const std::vector<Destination>& places) {
  std::vector<Entry> entries(places.size() + 1);
  std::vector<int> open;  // the entry of each level that further ones may belong to
  for (int i = 0; i < static_cast<int>(places.size()); ++i) {
    while (!open.empty() && places[open.back()].level >= places[i].level) open.pop_back();
    entries[i].parent = open.empty() ? static_cast<int>(places.size()) : open.back();
    Entry& parent = entries[entries[i].parent];
    entries[i].previous = parent.last;
    if (parent.last >= 0) entries[parent.last].next = i;
    if (parent.first < 0) parent.first = i;
    parent.last = i;
    ++parent.children;
    open.push_back(i);
  }
  return entries;
}

}  // namespace

void PdfFile::AddOutline(const std::vector<Destination>& places) {
  const std::vector<Entry> entries = TreeOf(places);
  const int top = count_ + static_cast<int>(places.size());
  const auto add = [&](QByteArray& text, const char* key, int entry) {
    if (entry >= 0) text += QByteArray("\n/") + key + " " + Reference(count_ + entry);
  };
  for (std::size_t i = 0; i < places.size(); ++i) {
    QByteArray text =
        "\n<<\n/Title " + TextString(places[i].title) + "\n/Dest " + PlaceOf(places[i]);
    add(text, "Parent", entries[i].parent);
    add(text, "Prev", entries[i].previous);
    add(text, "Next", entries[i].next);
    add(text, "First", entries[i].first);
    add(text, "Last", entries[i].last);
    // Below 0: folded at first.
    if (entries[i].children > 0) text += "\n/Count -" + QByteArray::number(entries[i].children);
    replaced_[count_ + static_cast<int>(i)] = text + "\n>>\n";
  }
  QByteArray text = "\n<<\n/Type /Outlines\n/Count " + QByteArray::number(entries.back().children);
  add(text, "First", entries.back().first);
  add(text, "Last", entries.back().last);
  replaced_[top] = text + "\n>>\n";
  count_ = top + 1;
  QByteArray catalog = Object(root_);
  catalog.insert(catalog.lastIndexOf(">>"),
                 "/Outlines " + Reference(top) + "\n/PageMode /UseOutlines\n");
  replaced_[root_] = catalog;
}

// An incremental update (PDF 1.7, section 7.5.6): objects, a table for these alone, and a trailer
// that leads to the former table.
QByteArray PdfFile::Bytes() const {
  QByteArray bytes = bytes_;
  QByteArray table = "xref\n";
  for (auto it = replaced_.constBegin(); it != replaced_.constEnd(); ++it) {
    const QByteArray offset = QByteArray::number(bytes.size()).rightJustified(10, '0');
    table += QByteArray::number(it.key()) + " 1\n" + offset + " 00000 n \n";
    bytes += QByteArray::number(it.key()) + " 0 obj" + it.value() + "endobj\n";
  }
  const QByteArray start = QByteArray::number(bytes.size());
  bytes += table + "trailer\n<<\n/Size " + QByteArray::number(count_) + "\n/Root " +
           Reference(root_) + "\n/Info " + Reference(info_);
  return bytes + "\n/Prev " + QByteArray::number(start_) + "\n>>\nstartxref\n" + start +
         "\n%%EOF\n";
}

}  // namespace manual
