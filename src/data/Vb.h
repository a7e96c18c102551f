#pragma once
// Values, conversions, formats and time arithmetic shared by every module.
// A value is a QVariant; Null is the invalid QVariant. Integers of 8, 16 and
// 32 bits are held as int, 64-bit as qlonglong, dates as QDateTime (local,
// whole seconds), YesNo fields as bool once in memory.
#include <QDateTime>
#include <QString>
#include <QVariant>
#include <limits>

#include "VbError.h"

namespace prestkt {

inline const QVariant Null{};
inline bool IsNull(const QVariant& v) { return !v.isValid(); }
bool IsNumeric(const QVariant& v);  // a number, or a text that reads as one
bool IsDate(const QVariant& v);     // a date, or a text that reads as one

// Conversions. Null raises 94, a value that does not convert raises 13, a value
// out of range raises 6. Texts are read in the users' convention (decimal
// comma, "dd/mm/yyyy" dates); a decimal point is accepted as well.
double CDbl(const QVariant& v);
int CInt(const QVariant& v);    // 16-bit, halves to even
int CLng(const QVariant& v);    // 32-bit, halves to even
int CByte(const QVariant& v);   // 0..255, halves to even
bool CBool(const QVariant& v);  // non-zero is true
QString CStr(const QVariant& v);  // numbers in the users' convention; Null raises 94
QDateTime CDate(const QVariant& v);
double Val(const QString& s);  // leading number with a decimal point, 0 when none
// A number as SQL takes it, whatever the users' convention: a decimal point, 15
// significant digits, no leading zero before the point, an exponent beyond
// them, and a blank in place of the sign of a value not negative (" 12.5",
// " .5", "-3", " 1E+15").
QString Str(double x);

// A whole number as a value: an int when it fits 32 bits, a qlonglong beyond.
inline QVariant WholeNumber(qint64 v) {
  if (v >= std::numeric_limits<int>::min() && v <= std::numeric_limits<int>::max())
    return QVariant(static_cast<int>(v));
  return QVariant(static_cast<qlonglong>(v));
}

QVariant NullToZero(const QVariant& v);  // integer 0 for Null
QString NullToStr(const QVariant& v);    // "" for Null

// Halves go to the even neighbour: Round(16.125, 2) is 16.12, Round(2.5) is 2.
double Round(double x, int decimals = 0);
double Int(double x);  // floor
double Fix(double x);  // toward zero
// a / b as the runtime divides: by zero it fails, 0 / 0 with 6 (overflow),
// anything else with 11 (division by zero); never an infinity or a NaN.
double Dividi(double a, double b);

// Format(value, pattern) with the patterns of the system: digit patterns
// ("0000-00000", "000000000", "#00", "#,##0", "#,##0.00", "#,##0.0", "0"),
// date patterns ("dd/mm/yyyy", "hh:nn", "HH:mm", "dd/mm/yyyy hh:nn:ss",
// "dd hh:nn:ss", "yyyy-mm-dd", "mm/yyyy", "mmmm", "yyyy", "MM" ...). Italian
// conventions: "1.234,50", months "gennaio".."dicembre". Null gives "". Numbers
// round halves away from zero, as the format of the platform does.
QString Format(const QVariant& value, const QString& pattern);

// DateDiff counts boundaries crossed: "n" minutes, "h" hours, "d" days,
// "s" seconds, "m" months, "yyyy" years. A Null argument raises 94.
qint64 DateDiff(const QString& interval, const QVariant& from, const QVariant& to);
QDateTime DateAdd(const QString& interval, double number, const QDateTime& date);
QDateTime Now();     // whole seconds
QDateTime Today();   // today at midnight

// "hh:mm" of a count of minutes; "00:00" for 0 or less; hours are not bounded.
QString CTempo(qint64 minuti);
// Whole minutes between two dates (DateDiff "n").
qint64 MinutiTra(const QVariant& da, const QVariant& a);
// Rounds up to a multiple of passo; see the comment in the source.
double ArrotMultiplo(double valore, double passo);

// The one converter between a date and its stored form "YYYY-MM-DD HH:MM:SS".
QString DateToStorage(const QDateTime& d);
QDateTime DateFromStorage(const QString& s);  // invalid QDateTime when it is not one

// Profile files ("Vorn.def"): sections and keys compared without regard to
// case, a missing key reads as the default, the rest of the file is kept.
QString GetPrivateProfileString(const QString& section, const QString& key,
                                const QString& defaultValue, const QString& file);
bool WritePrivateProfileString(const QString& section, const QString& key,
                               const QString& value, const QString& file);

}  // namespace prestkt
