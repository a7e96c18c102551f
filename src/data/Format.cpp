// Format(value, pattern): the digit and date patterns of the system, written
// out with the users' conventions (decimal comma, thousands dot, Italian month
// and day names).
//
// A pattern with a digit placeholder (0 or #) is a number pattern; otherwise a
// pattern with a date letter (d m y h n s w q, AM/PM) is a date pattern; any
// other pattern gives the plain text of the value, as CStr does.
#include <QDate>
#include <QHash>
#include <QRegularExpression>
#include <QStringList>
#include <QTime>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "Vb.h"

namespace prestkt {
namespace {

const QDate kDayZero(1899, 12, 30);  // serial 0 of the platform's dates

// ---------------------------------------------------------------------------
// Numbers as decimal digits
// ---------------------------------------------------------------------------

// |value| = 0.digits x 10^point: "12345" with point 4 is 1234.5.
struct Decimal {
  QString digits;  // no leading or trailing zeros; empty for zero
  int point = 0;
  bool negative = false;
  bool IsZero() const { return digits.isEmpty(); }
};

void Normalize(Decimal& d) {
  qsizetype lead = 0;
  while (lead < d.digits.size() && d.digits[lead] == u'0') ++lead;
  d.digits.remove(0, lead);
  d.point -= int(lead);
  while (!d.digits.isEmpty() && d.digits.back() == u'0') d.digits.chop(1);
  if (d.digits.isEmpty()) d.point = 0;
}

Decimal FromInteger(qulonglong magnitude, bool negative) {
  Decimal d;
  d.digits = QString::number(magnitude);
  d.point = int(d.digits.size());
  d.negative = negative;
  Normalize(d);
  return d;
}

// Fifteen significant digits, as the platform keeps them: 1.005 reads as
// 1.00500000000000 and not as the binary 1.00499999999999989...
Decimal FromDouble(double x) {
  Decimal d;
  d.negative = x < 0;
  const double a = std::fabs(x);
  if (a == 0) return d;
  // "1.23450000000000e+03", correctly rounded.
  char testo[48];
  const auto fine = std::to_chars(testo, testo + sizeof testo, a, std::chars_format::scientific, 14).ptr;
  const char* e = std::find(testo, fine, 'e');
  d.digits.reserve(15);
  for (const char* c = testo; c < e; ++c)
    if (*c != '.') d.digits += QLatin1Char(*c);
  int esponente = 0;
  std::from_chars(e + 1 + (e[1] == '+' ? 1 : 0), fine, esponente);
  d.point = esponente + 1;
  Normalize(d);
  return d;
}

// Keeps `decimals` digits after the point; a dropped part of a half or more
// rounds the magnitude up, so halves go away from zero.
void RoundTo(Decimal& d, int decimals) {
  if (d.IsZero()) return;
  const qsizetype keep = qsizetype(d.point) + decimals;
  if (keep >= d.digits.size()) return;
  if (keep < 0) {
    d.digits.clear();
    d.point = 0;
    return;
  }
  const bool up = d.digits[keep] >= u'5';
  d.digits.truncate(keep);
  if (up) {
    qsizetype i = d.digits.size() - 1;
    while (i >= 0 && d.digits[i] == u'9') {
      d.digits[i] = u'0';
      --i;
    }
    if (i >= 0) {
      d.digits[i] = QChar(d.digits[i].unicode() + 1);
    } else {
      d.digits.prepend(u'1');
      ++d.point;
    }
  }
  Normalize(d);
}

bool IsText(const QVariant& v) {
  const int t = v.typeId();
  return t == QMetaType::QString || t == QMetaType::QByteArray || t == QMetaType::QChar;
}

std::optional<double> NumericText(const QVariant& v) {
  const QVariant text(v.toString());
  if (!IsNumeric(text)) return std::nullopt;
  return CDbl(text);
}

// The number a value stands for, when it stands for one.
std::optional<Decimal> NumberOf(const QVariant& v) {
  switch (v.typeId()) {
    case QMetaType::Bool:
      return v.toBool() ? FromInteger(1, true) : FromInteger(0, false);  // True is -1
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong: {
      const qlonglong n = v.toLongLong();
      return FromInteger(n < 0 ? 0ULL - qulonglong(n) : qulonglong(n), n < 0);
    }
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
      return FromInteger(v.toULongLong(), false);
    case QMetaType::Double:
    case QMetaType::Float: {
      const double x = v.toDouble();
      if (!std::isfinite(x)) return std::nullopt;
      return FromDouble(x);
    }
    default:
      if (IsText(v)) {
        if (auto x = NumericText(v)) return FromDouble(*x);
      }
      return std::nullopt;
  }
}

// ---------------------------------------------------------------------------
// Number patterns
// ---------------------------------------------------------------------------

enum class NumTok { Zero, Hash, Point, Comma, Percent, Literal };
struct NumItem {
  NumTok kind;
  QString text;
  bool IsDigit() const { return kind == NumTok::Zero || kind == NumTok::Hash; }
};

// Splits at the ';' that are not quoted or escaped.
QStringList SplitSections(const QString& pattern) {
  QStringList sections;
  QString current;
  bool quoted = false;
  for (qsizetype i = 0; i < pattern.size(); ++i) {
    const QChar c = pattern[i];
    if (c == u'\\' && !quoted && i + 1 < pattern.size()) {
      current += c;
      current += pattern[++i];
      continue;
    }
    if (c == u'"') quoted = !quoted;
    if (c == u';' && !quoted) {
      sections << current;
      current.clear();
      continue;
    }
    current += c;
  }
  sections << current;
  return sections;
}

// The patterns are few and come back at every value: each is taken apart once
// per thread, and the parts are shared (a QList copy only counts a reference).
template <class T>
T Memo(const QString& chiave, T (*scomponi)(const QString&)) {
  thread_local QHash<QString, T> memo;
  const auto it = memo.constFind(chiave);
  if (it != memo.constEnd()) return *it;
  if (memo.size() > 512) memo.clear();
  T parti = scomponi(chiave);
  memo.insert(chiave, parti);
  return parti;
}

QList<NumItem> ScomponiNumero(const QString& section) {
  QList<NumItem> items;
  bool pointSeen = false;
  for (qsizetype i = 0; i < section.size(); ++i) {
    const QChar c = section[i];
    if (c == u'\\') {
      if (i + 1 < section.size()) items.append({NumTok::Literal, QString(section[++i])});
    } else if (c == u'"') {
      const qsizetype end = section.indexOf(u'"', i + 1);
      const qsizetype stop = end < 0 ? section.size() : end;
      items.append({NumTok::Literal, section.mid(i + 1, stop - i - 1)});
      i = stop;
    } else if (c == u'0') {
      items.append({NumTok::Zero, {}});
    } else if (c == u'#') {
      items.append({NumTok::Hash, {}});
    } else if (c == u'.' && !pointSeen) {
      pointSeen = true;
      items.append({NumTok::Point, {}});
    } else if (c == u',') {
      items.append({NumTok::Comma, {}});
    } else if (c == u'%') {
      items.append({NumTok::Percent, QStringLiteral("%")});
    } else {
      items.append({NumTok::Literal, QString(c)});
    }
  }
  return items;
}

QList<NumItem> ParseNumber(const QString& section) { return Memo(section, &ScomponiNumero); }

QString Grouped(const QString& digits) {
  QString out;
  const qsizetype n = digits.size();
  for (qsizetype i = 0; i < n; ++i) {
    if (i > 0 && (n - i) % 3 == 0) out += u'.';
    out += digits[i];
  }
  return out;
}

// One section of a number pattern. The digits of the whole part fill the
// placeholders from the right; digits beyond the placeholders go in front of
// the first one. A comma between placeholders groups the thousands, a comma
// after the last one of the whole part divides by a thousand.
QString FormatNumberSection(Decimal d, const QString& section, bool showMinus) {
  const QList<NumItem> items = ParseNumber(section);
  qsizetype pointAt = items.size();
  for (qsizetype i = 0; i < items.size(); ++i) {
    if (items[i].kind == NumTok::Point) {
      pointAt = i;
      break;
    }
  }

  qsizetype firstDigit = -1, lastDigit = -1, firstZero = -1;
  int wholePlaceholders = 0, fractionPlaceholders = 0, percents = 0;
  for (qsizetype i = 0; i < items.size(); ++i) {
    if (items[i].kind == NumTok::Percent) ++percents;
    if (!items[i].IsDigit()) continue;
    if (i < pointAt) {
      if (firstDigit < 0) firstDigit = i;
      lastDigit = i;
      if (firstZero < 0 && items[i].kind == NumTok::Zero) firstZero = i;
      ++wholePlaceholders;
    } else {
      ++fractionPlaceholders;
    }
  }
  bool grouping = false;
  int scale = 0;
  for (qsizetype i = 0; i < pointAt; ++i) {
    if (items[i].kind != NumTok::Comma || firstDigit < 0) continue;
    if (i > firstDigit && i < lastDigit) grouping = true;
    if (i > lastDigit) ++scale;
  }

  if (!d.IsZero()) d.point += 2 * percents - 3 * scale;
  RoundTo(d, fractionPlaceholders);

  // Whole part, at least as many digits as the placeholders from the first 0.
  QString whole;
  if (d.point > 0) whole = d.digits.left(d.point).leftJustified(d.point, u'0');
  int minimum = 0;
  if (firstZero >= 0) {
    for (qsizetype i = firstZero; i < pointAt; ++i) minimum += items[i].IsDigit() ? 1 : 0;
  }
  if (whole.size() < minimum) whole = whole.rightJustified(minimum, u'0');

  QString fraction;
  for (int i = 0; i < fractionPlaceholders; ++i) {
    const qsizetype at = qsizetype(d.point) + i;
    fraction += (at >= 0 && at < d.digits.size()) ? d.digits[at] : QChar(u'0');
  }
  // Trailing # placeholders drop their zeros, up to the last 0 placeholder.
  QList<bool> shown(fractionPlaceholders, true);
  {
    int k = fractionPlaceholders - 1;
    for (qsizetype i = items.size() - 1; i > pointAt && k >= 0; --i) {
      if (!items[i].IsDigit()) continue;
      if (items[i].kind == NumTok::Zero || fraction[k] != u'0') break;
      shown[k--] = false;
    }
  }

  QString out;
  if (showMinus && d.negative && !d.IsZero()) out += u'-';
  const qsizetype extra = whole.size() - wholePlaceholders;
  int placeholder = 0;
  for (qsizetype i = 0; i < pointAt; ++i) {
    const NumItem& item = items[i];
    if (item.kind == NumTok::Literal || item.kind == NumTok::Percent) {
      out += item.text;
    } else if (item.IsDigit()) {
      if (grouping) {
        if (placeholder == 0) out += Grouped(whole);
      } else {
        if (placeholder == 0 && extra > 0) out += whole.left(extra);
        const qsizetype at = extra + placeholder;
        if (at >= 0) out += whole[at];
      }
      ++placeholder;
    }
  }
  if (wholePlaceholders == 0) out += whole;
  if (pointAt < items.size()) {
    out += u',';
    int k = 0;
    for (qsizetype i = pointAt + 1; i < items.size(); ++i) {
      const NumItem& item = items[i];
      if (item.kind == NumTok::Literal || item.kind == NumTok::Percent) {
        out += item.text;
      } else if (item.IsDigit()) {
        if (shown[k]) out += fraction[k];
        ++k;
      }
    }
  }
  return out;
}

// Up to three sections: positive;negative;zero. The negative section is
// written without the minus sign; an empty section falls back to the first.
QString FormatNumber(Decimal d, const QString& pattern) {
  const QStringList sections = SplitSections(pattern);
  if (d.IsZero() && sections.size() >= 3 && !sections[2].isEmpty())
    return FormatNumberSection(d, sections[2], false);
  if (d.negative && !d.IsZero() && sections.size() >= 2 && !sections[1].isEmpty()) {
    d.negative = false;
    return FormatNumberSection(d, sections[1], false);
  }
  return FormatNumberSection(d, sections[0], true);
}

// ---------------------------------------------------------------------------
// Dates
// ---------------------------------------------------------------------------

// A date and a time of day, kept apart so that no time zone gets involved.
struct Moment {
  QDate date;
  QTime time;
};

std::optional<Moment> FromSerial(double serial) {
  // The platform's dates run from year 100 to year 9999.
  if (!std::isfinite(serial) || serial < -657434.0 || serial >= 2958466.0) return std::nullopt;
  const double days = std::trunc(serial);
  qint64 seconds = std::llround(std::fabs(serial - days) * 86400.0);
  QDate date = kDayZero.addDays(qint64(days));
  if (seconds >= 86400) {
    date = date.addDays(1);
    seconds -= 86400;
  }
  if (date.year() > 9999) return std::nullopt;
  return Moment{date, QTime::fromMSecsSinceStartOfDay(int(seconds * 1000))};
}

int TwoDigitYear(int yy) {
  return yy < 30 ? 2000 + yy : 1900 + yy;
}

std::optional<Moment> MakeMoment(int y, int mo, int d, int h, int mi, int s) {
  const QDate date(y, mo, d);
  const QTime time(h, mi, s);
  if (!date.isValid() || !time.isValid()) return std::nullopt;
  return Moment{date, time};
}

// "yyyy-MM-dd[ HH:mm[:ss]]", the ISO form with a T, "dd/MM/yyyy[ HH:mm[:ss]]"
// and a bare "HH:mm[:ss]" (a time of day on the platform's day zero).
std::optional<Moment> DateText(const QString& raw) {
  static const QRegularExpression iso(QStringLiteral(
      R"(^(\d{4})-(\d{1,2})-(\d{1,2})(?:[ T](\d{1,2}):(\d{2})(?::(\d{2})(?:[.,]\d+)?)?)?)"
      R"((?:Z|[+-]\d{2}(?::?\d{2})?)?$)"));
  static const QRegularExpression local(QStringLiteral(
      R"(^(\d{1,2})/(\d{1,2})/(\d{4}|\d{2})(?:\s+(\d{1,2})[:.](\d{2})(?:[:.](\d{2}))?)?$)"));
  static const QRegularExpression timeOnly(QStringLiteral(R"(^(\d{1,2}):(\d{2})(?::(\d{2}))?$)"));
  const QString s = raw.trimmed();
  auto num = [](const QRegularExpressionMatch& m, int n) {
    return m.capturedLength(n) ? m.captured(n).toInt() : 0;
  };
  if (auto m = iso.match(s); m.hasMatch())
    return MakeMoment(num(m, 1), num(m, 2), num(m, 3), num(m, 4), num(m, 5), num(m, 6));
  if (auto m = local.match(s); m.hasMatch()) {
    int year = num(m, 3);
    if (m.capturedLength(3) == 2) year = TwoDigitYear(year);
    return MakeMoment(year, num(m, 2), num(m, 1), num(m, 4), num(m, 5), num(m, 6));
  }
  if (auto m = timeOnly.match(s); m.hasMatch()) {
    const QTime time(num(m, 1), num(m, 2), num(m, 3));
    if (time.isValid()) return Moment{kDayZero, time};
  }
  return std::nullopt;
}

std::optional<Moment> DateOf(const QVariant& v) {
  switch (v.typeId()) {
    case QMetaType::QDateTime: {
      const QDateTime dt = v.toDateTime();
      if (!dt.isValid()) return std::nullopt;
      const QTime t = dt.time();
      return Moment{dt.date(), QTime(t.hour(), t.minute(), t.second())};
    }
    case QMetaType::QDate: {
      const QDate d = v.toDate();
      if (!d.isValid()) return std::nullopt;
      return Moment{d, QTime(0, 0)};
    }
    case QMetaType::QTime: {
      const QTime t = v.toTime();
      if (!t.isValid()) return std::nullopt;
      return Moment{kDayZero, QTime(t.hour(), t.minute(), t.second())};
    }
    default:
      break;
  }
  if (IsText(v)) {
    if (auto m = DateText(v.toString())) return m;
    if (auto x = NumericText(v)) return FromSerial(*x);
    return std::nullopt;
  }
  if (v.typeId() == QMetaType::Bool) return FromSerial(v.toBool() ? -1.0 : 0.0);
  if (NumberOf(v)) return FromSerial(v.toDouble());
  return std::nullopt;
}

const char16_t* const kMonths[12] = {u"gennaio",   u"febbraio", u"marzo",    u"aprile",
                                     u"maggio",    u"giugno",   u"luglio",   u"agosto",
                                     u"settembre", u"ottobre",  u"novembre", u"dicembre"};
const char16_t* const kMonthsShort[12] = {u"gen", u"feb", u"mar", u"apr", u"mag", u"giu",
                                          u"lug", u"ago", u"set", u"ott", u"nov", u"dic"};
// Monday first, as QDate::dayOfWeek counts.
const char16_t* const kDays[7] = {u"lunedì",  u"martedì", u"mercoledì", u"giovedì",
                                  u"venerdì", u"sabato",  u"domenica"};
const char16_t* const kDaysShort[7] = {u"lun", u"mar", u"mer", u"gio", u"ven", u"sab", u"dom"};

enum class DateTok {
  Literal,
  Day,
  Month,
  Year,
  Hour,
  Minute,
  Second,
  Weekday,
  Week,
  Quarter,
  AmPm,
  LongTime
};
struct DateItem {
  DateTok kind;
  int count = 0;
  QString text;   // a literal; for AmPm the morning designator
  QString other;  // for AmPm the afternoon designator
};

bool IsDateLetter(QChar c) {
  switch (c.toLower().unicode()) {
    case u'd':
    case u'm':
    case u'y':
    case u'h':
    case u'n':
    case u's':
    case u'w':
    case u'q':
      return true;
    default:
      return false;
  }
}

QList<DateItem> ScomponiData(const QString& p) {
  QList<DateItem> items;
  auto literal = [&items](const QString& text) {
    if (!items.isEmpty() && items.back().kind == DateTok::Literal)
      items.back().text += text;
    else
      items.append({DateTok::Literal, 0, text, {}});
  };
  for (qsizetype i = 0; i < p.size(); ++i) {
    const QChar c = p[i];
    if (c == u'\\') {
      if (i + 1 < p.size()) literal(QString(p[++i]));
      continue;
    }
    if (c == u'"') {
      const qsizetype end = p.indexOf(u'"', i + 1);
      const qsizetype stop = end < 0 ? p.size() : end;
      literal(p.mid(i + 1, stop - i - 1));
      i = stop;
      continue;
    }
    if (p.mid(i, 5).compare(u"AM/PM", Qt::CaseInsensitive) == 0) {
      items.append({DateTok::AmPm, 0, p.mid(i, 2), p.mid(i + 3, 2)});
      i += 4;
      continue;
    }
    if (p.mid(i, 3).compare(u"A/P", Qt::CaseInsensitive) == 0) {
      items.append({DateTok::AmPm, 0, p.mid(i, 1), p.mid(i + 2, 1)});
      i += 2;
      continue;
    }
    if (p.mid(i, 5).compare(u"ttttt", Qt::CaseInsensitive) == 0) {
      items.append({DateTok::LongTime, 0, {}, {}});
      i += 4;
      continue;
    }
    if (!IsDateLetter(c)) {
      literal(QString(c));
      continue;
    }
    const QChar letter = c.toLower();
    int run = 1;
    while (i + run < p.size() && p[i + run].toLower() == letter) ++run;
    i += run - 1;
    // A run longer than the longest token of its letter goes on as a new token;
    // every list of sizes ends with 1, so the run is always used up.
    auto split = [&items, &run](DateTok kind, std::initializer_list<int> sizes) {
      while (run > 0) {
        for (int size : sizes) {
          if (run >= size) {
            items.append({kind, size, {}, {}});
            run -= size;
            break;
          }
        }
      }
    };
    switch (letter.unicode()) {
      case u'd':
        split(DateTok::Day, {6, 5, 4, 3, 2, 1});
        break;
      case u'm':
        split(DateTok::Month, {4, 3, 2, 1});
        break;
      case u'y':
        split(DateTok::Year, {4, 2, 1});
        break;
      case u'h':
        split(DateTok::Hour, {2, 1});
        break;
      case u'n':
        split(DateTok::Minute, {2, 1});
        break;
      case u's':
        split(DateTok::Second, {2, 1});
        break;
      case u'w':
        split(DateTok::Week, {2, 1});
        break;
      default:
        split(DateTok::Quarter, {1});
        break;
    }
  }
  // "Week" took pairs of w; a lone w is the weekday.
  for (DateItem& item : items) {
    if (item.kind == DateTok::Week && item.count == 1) item.kind = DateTok::Weekday;
  }
  // m and mm are minutes right after an hour or right before a second, the
  // literals in between not counting.
  for (qsizetype i = 0; i < items.size(); ++i) {
    if (items[i].kind != DateTok::Month || items[i].count > 2) continue;
    qsizetype before = i - 1;
    while (before >= 0 && items[before].kind == DateTok::Literal) --before;
    qsizetype after = i + 1;
    while (after < items.size() && items[after].kind == DateTok::Literal) ++after;
    if ((before >= 0 && items[before].kind == DateTok::Hour) ||
        (after < items.size() && items[after].kind == DateTok::Second))
      items[i].kind = DateTok::Minute;
  }
  return items;
}

QList<DateItem> ParseDate(const QString& p) { return Memo(p, &ScomponiData); }

QString Two(int n) {
  return QString::number(n).rightJustified(2, u'0');
}

QString FormatDate(const Moment& m, const QString& pattern) {
  const QList<DateItem> items = ParseDate(pattern);
  bool twelveHours = false;
  for (const DateItem& item : items) twelveHours = twelveHours || item.kind == DateTok::AmPm;
  const QDate& d = m.date;
  const QTime& t = m.time;
  QString out;
  for (const DateItem& item : items) {
    switch (item.kind) {
      case DateTok::Literal:
        out += item.text;
        break;
      case DateTok::Day:
        switch (item.count) {
          case 1:
            out += QString::number(d.day());
            break;
          case 2:
            out += Two(d.day());
            break;
          case 3:
            out += QString::fromUtf16(kDaysShort[d.dayOfWeek() - 1]);
            break;
          case 4:
            out += QString::fromUtf16(kDays[d.dayOfWeek() - 1]);
            break;
          case 5:
            out += FormatDate(m, QStringLiteral("dd/mm/yyyy"));
            break;
          default:
            out += FormatDate(m, QStringLiteral("dddd d mmmm yyyy"));
            break;
        }
        break;
      case DateTok::Month:
        switch (item.count) {
          case 1:
            out += QString::number(d.month());
            break;
          case 2:
            out += Two(d.month());
            break;
          case 3:
            out += QString::fromUtf16(kMonthsShort[d.month() - 1]);
            break;
          default:
            out += QString::fromUtf16(kMonths[d.month() - 1]);
            break;
        }
        break;
      case DateTok::Year:
        if (item.count == 1)
          out += QString::number(d.dayOfYear());
        else if (item.count == 2)
          out += Two(d.year() % 100);
        else
          out += QString::number(d.year());
        break;
      case DateTok::Hour: {
        int h = t.hour();
        if (twelveHours) h = h % 12 == 0 ? 12 : h % 12;
        out += item.count == 1 ? QString::number(h) : Two(h);
        break;
      }
      case DateTok::Minute:
        out += item.count == 1 ? QString::number(t.minute()) : Two(t.minute());
        break;
      case DateTok::Second:
        out += item.count == 1 ? QString::number(t.second()) : Two(t.second());
        break;
      case DateTok::Weekday:  // Sunday is 1
        out += QString::number(d.dayOfWeek() % 7 + 1);
        break;
      case DateTok::Week: {  // weeks start on Sunday; the one holding 1 January is the first
        const int firstWeekday = QDate(d.year(), 1, 1).dayOfWeek() % 7;  // Sunday 0
        out += QString::number((d.dayOfYear() - 1 + firstWeekday) / 7 + 1);
        break;
      }
      case DateTok::Quarter:
        out += QString::number((d.month() - 1) / 3 + 1);
        break;
      case DateTok::AmPm:
        out += t.hour() < 12 ? item.text : item.other;
        break;
      case DateTok::LongTime:
        out += Two(t.hour()) + u':' + Two(t.minute()) + u':' + Two(t.second());
        break;
    }
  }
  return out;
}

// ---------------------------------------------------------------------------
// Telling the patterns apart
// ---------------------------------------------------------------------------

enum class PatternKind { Number, Date, Other };

PatternKind TipoDiFormato(const QString& p) {
  bool dateLetter = false;
  for (qsizetype i = 0; i < p.size(); ++i) {
    const QChar c = p[i];
    if (c == u'\\') {
      ++i;
    } else if (c == u'"') {
      const qsizetype end = p.indexOf(u'"', i + 1);
      i = end < 0 ? p.size() : end;
    } else if (c == u'0' || c == u'#') {
      return PatternKind::Number;
    } else if (IsDateLetter(c) || p.mid(i, 3).compare(u"A/P", Qt::CaseInsensitive) == 0 ||
               p.mid(i, 5).compare(u"AM/PM", Qt::CaseInsensitive) == 0 ||
               p.mid(i, 5).compare(u"ttttt", Qt::CaseInsensitive) == 0) {
      dateLetter = true;
    }
  }
  return dateLetter ? PatternKind::Date : PatternKind::Other;
}

PatternKind KindOf(const QString& p) { return Memo(p, &TipoDiFormato); }

// The named formats of the platform, in the users' conventions.
QString Named(const QString& pattern, bool* generalNumber, bool* generalDate) {
  const QString name = pattern.trimmed().toLower();
  *generalNumber = name == u"general number";
  *generalDate = name == u"general date";
  if (name == u"fixed") return QStringLiteral("0.00");
  if (name == u"standard") return QStringLiteral("#,##0.00");
  if (name == u"percent") return QStringLiteral("0.00%");
  if (name == u"short date") return QStringLiteral("dd/mm/yyyy");
  if (name == u"medium date") return QStringLiteral("dd-mmm-yy");
  if (name == u"long date") return QStringLiteral("dddd d mmmm yyyy");
  if (name == u"short time") return QStringLiteral("hh:nn");
  if (name == u"medium time") return QStringLiteral("hh:nn AM/PM");
  if (name == u"long time") return QStringLiteral("hh:nn:ss");
  return pattern;
}

// What a pattern asks for, told once per pattern.
struct Formato {
  QString p;  // the pattern, a named format turned into its own
  bool generalNumber = false;
  bool generalDate = false;
  PatternKind kind = PatternKind::Other;
};

Formato Analizza(const QString& pattern) {
  Formato a;
  a.p = Named(pattern, &a.generalNumber, &a.generalDate);
  a.kind = KindOf(a.p);
  return a;
}

}  // namespace

QString Format(const QVariant& value, const QString& pattern) {
  if (IsNull(value)) return {};
  const Formato schema = Memo(pattern, &Analizza);
  const QString& p = schema.p;
  const bool generalNumber = schema.generalNumber;
  const bool generalDate = schema.generalDate;

  if (generalNumber) {
    if (IsText(value)) {
      if (auto x = NumericText(value)) return CStr(*x);
      return value.toString();
    }
    return CStr(value);
  }
  if (generalDate) {
    if (auto m = DateOf(value)) {
      if (m->date == kDayZero) return FormatDate(*m, QStringLiteral("hh:nn:ss"));
      if (m->time == QTime(0, 0)) return FormatDate(*m, QStringLiteral("dd/mm/yyyy"));
      return FormatDate(*m, QStringLiteral("dd/mm/yyyy hh:nn:ss"));
    }
    return CStr(value);
  }

  switch (schema.kind) {
    case PatternKind::Number:
      if (auto d = NumberOf(value)) return FormatNumber(*d, p);
      break;
    case PatternKind::Date:
      if (auto m = DateOf(value)) return FormatDate(*m, p);
      break;
    case PatternKind::Other:
      break;
  }
  if (IsText(value)) return value.toString();
  return CStr(value);
}

}  // namespace prestkt
