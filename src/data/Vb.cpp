#include "Vb.h"

#include <cstdio>

#include <QDate>
#include <QRegularExpression>
#include <QTimeZone>
#include <cmath>
#include <limits>

namespace prestkt {

namespace {

bool IsNumberType(const QVariant& v) {
  switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::UChar:
    case QMetaType::SChar:
      return true;
    default:
      return false;
  }
}

// Reads a number typed in the users' convention. The decimal comma is the
// normal form; a text with a single point and no comma is read with the point
// as decimal separator, so that values written by programs read back.
bool ParseNumber(QString s, double* out) {
  s = s.trimmed();
  if (s.isEmpty()) return false;
  if (s.contains(QLatin1Char(','))) {
    s.remove(QLatin1Char('.'));
    s.replace(QLatin1Char(','), QLatin1Char('.'));
  } else if (s.count(QLatin1Char('.')) > 1) {
    s.remove(QLatin1Char('.'));
  }
  bool ok = false;
  const double d = s.toDouble(&ok);
  if (!ok || !std::isfinite(d)) return false;
  *out = d;
  return true;
}

QDateTime ParseDate(const QString& text) {
  const QString s = text.trimmed();
  if (s.isEmpty()) return {};
  QDateTime d = DateFromStorage(s);
  if (d.isValid()) return d;
  static const char* const kForms[] = {"dd/MM/yyyy HH:mm:ss", "dd/MM/yyyy HH:mm", "dd/MM/yyyy",
                                       "d/M/yyyy H:mm:ss",    "d/M/yyyy H:mm",    "d/M/yyyy",
                                       "yyyy-MM-dd",          "yyyy-MM-ddTHH:mm:ss",
                                       "yyyy-MM-dd HH:mm",    "HH:mm:ss",         "HH:mm"};
  for (const char* f : kForms) {
    d = QDateTime::fromString(s, QLatin1String(f));
    if (d.isValid()) {
      if (d.date() == QDate(1900, 1, 1) && !QString::fromLatin1(f).contains(QLatin1Char('y')))
        d.setDate(QDate(1899, 12, 30));
      return d;
    }
    if (!QString::fromLatin1(f).contains(QLatin1Char('y'))) {
      const QTime t = QTime::fromString(s, QLatin1String(f));
      if (t.isValid()) return QDateTime(QDate(1899, 12, 30), t);
    }
  }
  return {};
}

// The platform's date serial: days since 30 December 1899, the fraction the time.
// The whole part is the day (toward zero), the fraction always the time of that day.
QDateTime FromSerial(double serial) {
  // The platform's dates run from the year 100 to the year 9999.
  if (!std::isfinite(serial) || serial < -657434.0 || serial >= 2958466.0) Raise(err::Overflow);
  const QDate base(1899, 12, 30);
  const double days = std::trunc(serial);
  qint64 secs = std::llround(std::fabs(serial - days) * 86400.0);
  qint64 day = static_cast<qint64>(days);
  if (secs >= 86400) {
    secs -= 86400;
    day += serial < 0 ? -1 : 1;
  }
  return QDateTime(base.addDays(day), QTime(0, 0).addSecs(static_cast<int>(secs)));
}

// Wall-clock arithmetic: dates carry no time zone, so a summer-time change moves nothing.
QDateTime AddWallSeconds(const QDateTime& d, qint64 secs) {
  qint64 total = d.time().msecsSinceStartOfDay() / 1000 + secs;
  qint64 days = total >= 0 ? total / 86400 : -((-total + 86399) / 86400);
  total -= days * 86400;
  return QDateTime(d.date().addDays(days), QTime(0, 0).addSecs(static_cast<int>(total)));
}

double RoundHalfEven(double x) {
  const double f = std::floor(x);
  const double diff = x - f;
  // A value within a few units of the last place of the half counts as the half:
  // 2.675 * 100 is 267.49999999999997 in binary and rounds as 267.5.
  const double noise = 8 * std::numeric_limits<double>::epsilon() * std::max(1.0, std::fabs(x));
  if (std::fabs(diff - 0.5) <= noise) {
    return std::fmod(f, 2.0) == 0.0 ? f : f + 1.0;
  }
  return std::round(x);
}

qint64 RoundToInteger(const QVariant& v, qint64 lo, qint64 hi) {
  double d = CDbl(v);
  d = RoundHalfEven(d);
  if (!(d >= static_cast<double>(lo) && d <= static_cast<double>(hi))) Raise(err::Overflow);
  return static_cast<qint64>(d);
}

}  // namespace

bool IsNumeric(const QVariant& v) {
  if (IsNull(v)) return false;
  if (IsNumberType(v) || v.typeId() == QMetaType::Bool) return true;
  if (v.typeId() == QMetaType::QString) {
    double d;
    return ParseNumber(v.toString(), &d);
  }
  return false;
}

bool IsDate(const QVariant& v) {
  if (IsNull(v)) return false;
  if (v.typeId() == QMetaType::QDateTime || v.typeId() == QMetaType::QDate) return true;
  if (v.typeId() == QMetaType::QString) return ParseDate(v.toString()).isValid();
  return false;
}

double CDbl(const QVariant& v) {
  if (IsNull(v)) Raise(err::InvalidUseOfNull);
  if (v.typeId() == QMetaType::Bool) return v.toBool() ? -1.0 : 0.0;
  if (IsNumberType(v)) return v.toDouble();
  if (v.typeId() == QMetaType::QString || v.typeId() == QMetaType::QByteArray) {
    double d;
    if (ParseNumber(v.toString(), &d)) return d;
    Raise(err::TypeMismatch);
  }
  if (v.typeId() == QMetaType::QDateTime || v.typeId() == QMetaType::QDate) {
    const QDateTime d = v.toDateTime();
    const QDate base(1899, 12, 30);
    return static_cast<double>(base.daysTo(d.date())) + d.time().msecsSinceStartOfDay() / 86400000.0;
  }
  Raise(err::TypeMismatch);
}

int CInt(const QVariant& v) { return static_cast<int>(RoundToInteger(v, -32768, 32767)); }

int CLng(const QVariant& v) {
  return static_cast<int>(RoundToInteger(v, std::numeric_limits<qint32>::min(),
                                         std::numeric_limits<qint32>::max()));
}

int CByte(const QVariant& v) { return static_cast<int>(RoundToInteger(v, 0, 255)); }

bool CBool(const QVariant& v) {
  if (IsNull(v)) Raise(err::InvalidUseOfNull);
  if (v.typeId() == QMetaType::Bool) return v.toBool();
  if (v.typeId() == QMetaType::QString) {
    const QString s = v.toString().trimmed().toLower();
    if (s == QLatin1String("true") || s == QLatin1String("vero")) return true;
    if (s == QLatin1String("false") || s == QLatin1String("falso")) return false;
  }
  return CDbl(v) != 0.0;
}

QString Str(double x) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.15G", x);
  QString t = QString::fromLatin1(buf);
  // The exponent as two digits at least, as the runtime writes it: 1E+15, 1E-05.
  const int e = t.indexOf(QLatin1Char('E'));
  if (e >= 0) t = t.left(e + 2) + t.mid(e + 2).rightJustified(2, QLatin1Char('0'));
  if (t.startsWith(QLatin1String("0."))) t.remove(0, 1);
  else if (t.startsWith(QLatin1String("-0."))) t.remove(1, 1);
  return x < 0 ? t : QLatin1Char(' ') + t;
}

QString CStr(const QVariant& v) {
  if (IsNull(v)) Raise(err::InvalidUseOfNull);
  switch (v.typeId()) {
    case QMetaType::Bool:
      return v.toBool() ? QStringLiteral("Vero") : QStringLiteral("Falso");
    case QMetaType::Double:
    case QMetaType::Float: {
      QString s = QString::number(v.toDouble(), 'g', 15);
      if (s.contains(QLatin1Char('e'))) s = QString::number(v.toDouble(), 'f', 10);
      if (s.contains(QLatin1Char('.'))) {
        while (s.endsWith(QLatin1Char('0'))) s.chop(1);
        if (s.endsWith(QLatin1Char('.'))) s.chop(1);
      }
      s.replace(QLatin1Char('.'), QLatin1Char(','));
      return s;
    }
    case QMetaType::QDateTime: {
      const QDateTime d = v.toDateTime();
      if (d.time() == QTime(0, 0)) return d.toString(QStringLiteral("dd/MM/yyyy"));
      return d.toString(QStringLiteral("dd/MM/yyyy HH:mm:ss"));
    }
    case QMetaType::QDate:
      return v.toDate().toString(QStringLiteral("dd/MM/yyyy"));
    default:
      return v.toString();
  }
}

QDateTime CDate(const QVariant& v) {
  if (IsNull(v)) Raise(err::InvalidUseOfNull);
  if (v.typeId() == QMetaType::QDateTime) return v.toDateTime();
  if (v.typeId() == QMetaType::QDate) return QDateTime(v.toDate(), QTime(0, 0));
  if (v.typeId() == QMetaType::QString) {
    const QDateTime d = ParseDate(v.toString());
    if (d.isValid()) return d;
    Raise(err::TypeMismatch);
  }
  if (IsNumberType(v)) return FromSerial(v.toDouble());
  Raise(err::TypeMismatch);
}

// Blanks, tabs and line feeds are skipped anywhere in the number, as the platform's Val does.
double Val(const QString& s) {
  QString compact;
  for (const QChar c : s)
    if (c != QLatin1Char(' ') && c != QLatin1Char('\t') && c != QLatin1Char('\n') && c != QLatin1Char('\r'))
      compact += c;
  static const QRegularExpression re(QStringLiteral("^([-+]?[0-9]*\\.?[0-9]*(?:[eE][-+]?[0-9]+)?)"));
  const auto m = re.match(compact);
  if (!m.hasMatch()) return 0;
  bool ok = false;
  const double d = m.captured(1).toDouble(&ok);
  return ok ? d : 0;
}

QVariant NullToZero(const QVariant& v) { return IsNull(v) ? QVariant(0) : v; }

QString NullToStr(const QVariant& v) { return IsNull(v) ? QString() : CStr(v); }

double Round(double x, int decimals) {
  const double scale = std::pow(10.0, decimals);
  const double scaled = x * scale;
  if (!std::isfinite(scaled)) return x;
  return RoundHalfEven(scaled) / scale;
}

double Int(double x) { return std::floor(x); }
double Fix(double x) { return std::trunc(x); }

double Dividi(double a, double b) {
  if (b == 0) Raise(a == 0 ? err::Overflow : err::DivisionByZero);
  const double r = a / b;
  if (!std::isfinite(r)) Raise(err::Overflow);
  return r;
}

qint64 DateDiff(const QString& interval, const QVariant& from, const QVariant& to) {
  const QDateTime a = CDate(from);
  const QDateTime b = CDate(to);
  // Seconds from a fixed origin in local wall time: boundaries are those of the clock.
  const QDate origin(1899, 12, 30);
  auto secs = [&](const QDateTime& d) {
    return origin.daysTo(d.date()) * 86400 + d.time().msecsSinceStartOfDay() / 1000;
  };
  auto floorDiv = [](qint64 x, qint64 y) { return x >= 0 ? x / y : -((-x + y - 1) / y); };
  const QString i = interval.toLower();
  if (i == QLatin1String("s")) return secs(b) - secs(a);
  if (i == QLatin1String("n")) return floorDiv(secs(b), 60) - floorDiv(secs(a), 60);
  if (i == QLatin1String("h")) return floorDiv(secs(b), 3600) - floorDiv(secs(a), 3600);
  if (i == QLatin1String("d") || i == QLatin1String("y")) return a.date().daysTo(b.date());
  if (i == QLatin1String("w")) return a.date().daysTo(b.date()) / 7;
  if (i == QLatin1String("ww")) {
    // Calendar weeks: the Sundays crossed (the origin is a Saturday).
    auto settimana = [&](const QDate& d) { return floorDiv(origin.daysTo(d) - 1, 7); };
    return settimana(b.date()) - settimana(a.date());
  }
  if (i == QLatin1String("m"))
    return (b.date().year() - a.date().year()) * 12 + (b.date().month() - a.date().month());
  if (i == QLatin1String("q"))
    return (b.date().year() - a.date().year()) * 4 +
           ((b.date().month() - 1) / 3 - (a.date().month() - 1) / 3);
  if (i == QLatin1String("yyyy")) return b.date().year() - a.date().year();
  Raise(err::InvalidProcedureCall);
}

QDateTime DateAdd(const QString& interval, double number, const QDateTime& date) {
  const QString i = interval.toLower();
  // The days of one step; a count that would take the date out of the
  // platform's ten thousand years is an invalid argument, as any other.
  double passo = 0;
  if (i == QLatin1String("s")) passo = 1.0 / 86400;
  else if (i == QLatin1String("n")) passo = 1.0 / 1440;
  else if (i == QLatin1String("h")) passo = 1.0 / 24;
  else if (i == QLatin1String("d") || i == QLatin1String("y") || i == QLatin1String("w")) passo = 1;
  else if (i == QLatin1String("ww")) passo = 7;
  else if (i == QLatin1String("m")) passo = 31;
  else if (i == QLatin1String("q")) passo = 92;
  else if (i == QLatin1String("yyyy")) passo = 366;
  const double conteggio = Fix(number);
  if (passo == 0 || !std::isfinite(conteggio) || std::fabs(conteggio) * passo > 3700000.0)
    Raise(err::InvalidProcedureCall);
  const qint64 n = static_cast<qint64>(conteggio);
  QDateTime r;
  if (i == QLatin1String("s")) r = AddWallSeconds(date, n);
  else if (i == QLatin1String("n")) r = AddWallSeconds(date, n * 60);
  else if (i == QLatin1String("h")) r = AddWallSeconds(date, n * 3600);
  else if (passo == 1) r = date.addDays(n);
  else if (i == QLatin1String("ww")) r = date.addDays(n * 7);
  else if (i == QLatin1String("m")) r = date.addMonths(static_cast<int>(n));
  else if (i == QLatin1String("q")) r = date.addMonths(static_cast<int>(n * 3));
  else r = date.addYears(static_cast<int>(n));
  if (!r.isValid() || r.date().year() < 100 || r.date().year() > 9999) Raise(err::InvalidProcedureCall);
  return r;
}

QDateTime Now() {
  QDateTime d = QDateTime::currentDateTime();
  d.setTime(QTime(d.time().hour(), d.time().minute(), d.time().second()));
  return d;
}

QDateTime Today() { return QDateTime(QDate::currentDate(), QTime(0, 0)); }

QString CTempo(qint64 minuti) {
  if (minuti <= 0) return QStringLiteral("00:00");
  // The hours as "#00" and the minutes as "00" write: two digits at least.
  const qint64 ore = minuti / 60;
  return QString::number(ore).rightJustified(2, QLatin1Char('0')) + QLatin1Char(':') +
         QString::number(minuti - ore * 60).rightJustified(2, QLatin1Char('0'));
}

qint64 MinutiTra(const QVariant& da, const QVariant& a) { return DateDiff(QStringLiteral("n"), da, a); }

// Rounds up to the next multiple of passo. The quotient is first rounded to 10
// decimals, so that a value that is a multiple but for binary noise stays put;
// a value that is already a multiple comes back unchanged, not recomputed.
double ArrotMultiplo(double valore, double passo) {
  double result = valore;
  if (passo != 0) {
    const double q = Round(valore / passo, 10);
    if (Int(q) != q) result = passo * (Int(q) + 1);
  }
  return result;
}

QString DateToStorage(const QDateTime& d) {
  return d.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

// Read digit by digit: this runs for every date of every row read from the database.
QDateTime DateFromStorage(const QString& s) {
  const int n = static_cast<int>(s.size());
  if (n != 19 && n != 10) return {};
  auto num = [&](int from, int len, int* out) {
    int v = 0;
    for (int i = from; i < from + len; ++i) {
      const ushort c = s.at(i).unicode();
      if (c < '0' || c > '9') return false;
      v = v * 10 + (c - '0');
    }
    *out = v;
    return true;
  };
  int y, mo, d, h = 0, mi = 0, se = 0;
  if (s.at(4) != QLatin1Char('-') || s.at(7) != QLatin1Char('-')) return {};
  if (!num(0, 4, &y) || !num(5, 2, &mo) || !num(8, 2, &d)) return {};
  if (n == 19) {
    if (s.at(10) != QLatin1Char(' ') || s.at(13) != QLatin1Char(':') || s.at(16) != QLatin1Char(':')) return {};
    if (!num(11, 2, &h) || !num(14, 2, &mi) || !num(17, 2, &se)) return {};
  }
  const QDate date(y, mo, d);
  const QTime time(h, mi, se);
  if (!date.isValid() || !time.isValid()) return {};
  return QDateTime(date, time);
}

}  // namespace prestkt
