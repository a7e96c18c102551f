// Profile files ("Vorn.def"): "[Section]" headers and "key=value" lines.
//
// The file is handled as lines of bytes, so that a rewrite leaves every line it
// does not change exactly as it was, whatever its encoding or line end. Names
// and values are UTF-8; a file that is not valid UTF-8 (an old one written in
// a Windows code page) is read as Latin-1 rather than garbled.
#include <QByteArray>
#include <QFile>
#include <QSaveFile>
#include <QStringDecoder>

#include "Vb.h"

namespace prestkt {
namespace {

QString Decode(const QByteArray& bytes) {
  QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
  QString text = utf8(bytes);
  if (utf8.hasError()) return QString::fromLatin1(bytes);
  return text;
}

// The lines of a file: split at '\n', so that joining them again with '\n'
// gives back the same bytes. A file ending with '\n' has an empty last part.
QList<QByteArray> Lines(const QByteArray& content) {
  if (content.isEmpty()) return {};
  return content.split('\n');
}

// The text of a line, without its '\r' and, on the first line, without the
// byte order mark.
QByteArray Text(const QList<QByteArray>& lines, qsizetype i) {
  QByteArray line = lines[i];
  if (line.endsWith('\r')) line.chop(1);
  if (i == 0 && line.startsWith("\xEF\xBB\xBF")) line.remove(0, 3);
  return line;
}

bool SectionHeader(const QByteArray& line, QString* name) {
  const QByteArray t = line.trimmed();
  if (!t.startsWith('[')) return false;
  const qsizetype close = t.indexOf(']');
  if (close < 0) return false;
  *name = Decode(t.mid(1, close - 1)).trimmed();
  return true;
}

// "key = value" (";" starts a comment line). The key is given trimmed, as
// spelled in the file; the value trimmed, as bytes.
bool KeyLine(const QByteArray& line, QByteArray* key, QByteArray* value) {
  const QByteArray t = line.trimmed();
  if (t.isEmpty() || t.startsWith(';')) return false;
  const qsizetype eq = t.indexOf('=');
  if (eq < 0) return false;
  *key = t.left(eq).trimmed();
  *value = t.mid(eq + 1).trimmed();
  return true;
}

bool Same(const QString& a, const QString& b) {
  return a.compare(b, Qt::CaseInsensitive) == 0;
}

// Where a key stands in the file: the header of its section (the first one of
// that name), the key's line, and the last line of the section that is not
// blank. -1 for whatever is missing.
struct Place {
  qsizetype header = -1;
  qsizetype key = -1;
  qsizetype lastFilled = -1;
  QByteArray keySpelling;
  QByteArray value;
};

Place Find(const QList<QByteArray>& lines, const QString& section, const QString& key) {
  Place place;
  const QString wantedSection = section.trimmed();
  const QString wantedKey = key.trimmed();
  for (qsizetype i = 0; i < lines.size(); ++i) {
    const QByteArray line = Text(lines, i);
    QString name;
    if (SectionHeader(line, &name)) {
      if (place.header >= 0) break;  // the section is over
      if (Same(name, wantedSection)) place.header = place.lastFilled = i;
      continue;
    }
    if (place.header < 0) continue;
    if (!line.trimmed().isEmpty()) place.lastFilled = i;
    QByteArray k, v;
    if (place.key < 0 && KeyLine(line, &k, &v) && Same(Decode(k), wantedKey)) {
      place.key = i;
      place.keySpelling = k;
      place.value = v;
    }
  }
  return place;
}

}  // namespace

QString GetPrivateProfileString(const QString& section, const QString& key,
                                const QString& defaultValue, const QString& file) {
  if (section.trimmed().isEmpty() || key.trimmed().isEmpty()) return defaultValue;
  QFile f(file);
  if (!f.open(QIODevice::ReadOnly)) return defaultValue;
  const Place place = Find(Lines(f.readAll()), section, key);
  if (place.key < 0) return defaultValue;
  return Decode(place.value);
}

// An empty section or key name is refused (false) and the file left alone.
bool WritePrivateProfileString(const QString& section, const QString& key, const QString& value,
                               const QString& file) {
  if (section.trimmed().isEmpty() || key.trimmed().isEmpty()) return false;
  QByteArray content;
  {
    QFile f(file);
    if (f.exists()) {
      if (!f.open(QIODevice::ReadOnly)) return false;
      content = f.readAll();
    }
  }
  QList<QByteArray> lines = Lines(content);
  const Place place = Find(lines, section, key);
  const QByteArray newValue = value.trimmed().toUtf8();

  if (place.key >= 0) {
    // In place, with the key as it was spelled and the line's own line end.
    const bool cr = lines[place.key].endsWith('\r');
    lines[place.key] = place.keySpelling + '=' + newValue + (cr ? "\r" : "");
  } else if (place.header >= 0) {
    const QByteArray line = key.trimmed().toUtf8() + '=' + newValue;
    if (place.lastFilled == lines.size() - 1) {
      // The section closes a file without a final line end: end it.
      lines.append(line);
      lines.append(QByteArray());
    } else {
      lines.insert(place.lastFilled + 1, line);
    }
  } else {
    // A new section at the end, after a blank line when the file has content.
    if (!lines.isEmpty() && !lines.back().isEmpty()) lines.append(QByteArray());
    if (!lines.isEmpty()) {
      const qsizetype last = lines.size() - 2;  // the last line before the final '\n'
      if (last >= 0 && !Text(lines, last).trimmed().isEmpty())
        lines.insert(lines.size() - 1, QByteArray());
    }
    if (lines.isEmpty()) lines.append(QByteArray());
    lines.insert(lines.size() - 1, '[' + section.trimmed().toUtf8() + ']');
    lines.insert(lines.size() - 1, key.trimmed().toUtf8() + '=' + newValue);
  }

  QSaveFile out(file);
  out.setDirectWriteFallback(true);
  if (!out.open(QIODevice::WriteOnly)) return false;
  const QByteArray bytes = lines.join('\n');
  if (out.write(bytes) != bytes.size()) {
    out.cancelWriting();
    return false;
  }
  return out.commit();
}

}  // namespace prestkt
