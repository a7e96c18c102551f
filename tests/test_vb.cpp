// Values, conversions, Format, time arithmetic and profile files (Vb.h).
#include <gtest/gtest.h>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>
#include <limits>
#include <ctime>
#include <optional>

#include "Vb.h"

using namespace prestkt;

// Readable values in the failure messages.
void PrintTo(const QString& s, std::ostream* os) {
  *os << '"' << s.toStdString() << '"';
}
void PrintTo(const QByteArray& b, std::ostream* os) {
  *os << '"' << b.toStdString() << '"';
}
void PrintTo(const QDate& d, std::ostream* os) {
  PrintTo(d.toString(Qt::ISODate), os);
}
void PrintTo(const QTime& t, std::ostream* os) {
  PrintTo(t.toString(Qt::ISODate), os);
}
void PrintTo(const QDateTime& d, std::ostream* os) {
  PrintTo(d.toString(Qt::ISODate), os);
}
void PrintTo(const QVariant& v, std::ostream* os) {
  *os << (v.isValid() ? v.typeName() : "Null") << ' ';
  PrintTo(v.toString(), os);
}

namespace {

// The error number a statement raises, or nullopt when it raises none.
template <typename F>
std::optional<int> ErrorOf(F&& f) {
  try {
    f();
  } catch (const VbError& e) {
    return e.Number();
  }
  return std::nullopt;
}

#define EXPECT_RAISES(statement, number) \
  EXPECT_EQ(ErrorOf([&] { (void)(statement); }), std::optional<int>(number)) << #statement

QDateTime At(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return QDateTime(QDate(y, mo, d), QTime(h, mi, s));
}

const QDateTime kSample = At(2025, 3, 7, 14, 5, 9);  // a Friday

QString F(const QVariant& v, const char* pattern) {
  return Format(v, QString::fromUtf8(pattern));
}

}  // namespace

// ---------------------------------------------------------------------------
// Format: numbers
// ---------------------------------------------------------------------------

TEST(FormatNumber, NullGivesEmptyText) {
  EXPECT_EQ(F(Null, "0000"), "");
  EXPECT_EQ(F(Null, "dd/mm/yyyy"), "");
  EXPECT_EQ(F(Null, ""), "");
}

TEST(FormatNumber, DigitPlaceholdersWithLiterals) {
  EXPECT_EQ(F(202500012, "0000-00000"), "2025-00012");
  EXPECT_EQ(F(202500012, "000000000"), "202500012");
  EXPECT_EQ(F(5, "0000"), "0005");
  EXPECT_EQ(F(7, "000"), "007");
  EXPECT_EQ(F(7, "00"), "07");
  EXPECT_EQ(F(5, "#00"), "05");
  EXPECT_EQ(F(100, "#00"), "100");
  EXPECT_EQ(F(5, "0000-00000"), "0000-00005");
}

TEST(FormatNumber, ExtraDigitsGoInFront) {
  EXPECT_EQ(F(qlonglong(12202500012LL), "0000-00000"), "122025-00012");
  EXPECT_EQ(F(12345, "00"), "12345");
  EXPECT_EQ(F(12345, "\"N. \"000"), "N. 12345");
  EXPECT_EQ(F(7, "\"N. \"000"), "N. 007");
}

TEST(FormatNumber, RoundsHalvesAwayFromZero) {
  EXPECT_EQ(F(2.5, "0"), "3");
  EXPECT_EQ(F(3.5, "0"), "4");
  EXPECT_EQ(F(-2.5, "0"), "-3");
  EXPECT_EQ(F(0.5, "0"), "1");
  EXPECT_EQ(F(0.4, "0"), "0");
  EXPECT_EQ(F(0.125, "0.00"), "0,13");
  EXPECT_EQ(F(16.125, "0.00"), "16,13");
  EXPECT_EQ(F(9.995, "0.00"), "10,00");
  EXPECT_EQ(F(99999.5, "#,##0"), "100.000");
}

TEST(FormatNumber, RoundsOnFifteenSignificantDigits) {
  // 1.005 is 1.00499999999999989... in binary; on fifteen digits it is a half.
  EXPECT_EQ(F(1.005, "0.00"), "1,01");
  EXPECT_EQ(F(2.675, "0.00"), "2,68");
  EXPECT_EQ(F(0.1 + 0.2, "0.0000000000000000"), "0,3000000000000000");
}

TEST(FormatNumber, ThousandsAndDecimals) {
  EXPECT_EQ(F(1234.5, "#,##0"), "1.235");
  EXPECT_EQ(F(1234.5, "#,##0.00"), "1.234,50");
  EXPECT_EQ(F(-1234.5, "#,##0.00"), "-1.234,50");
  EXPECT_EQ(F(2, "#,##0.0"), "2,0");
  EXPECT_EQ(F(0, "#,##0"), "0");
  EXPECT_EQ(F(0, "#,##0.00"), "0,00");
  EXPECT_EQ(F(1234567, "#,##0"), "1.234.567");
  EXPECT_EQ(F(1234567.891, "#,##0.00"), "1.234.567,89");
  EXPECT_EQ(F(999, "#,##0"), "999");
  EXPECT_EQ(F(1000, "#,##0"), "1.000");
  EXPECT_EQ(F(-1000000, "#,##0"), "-1.000.000");
  EXPECT_EQ(F(0.5, "#,##0.00"), "0,50");
  EXPECT_EQ(F(1e15, "#,##0"), "1.000.000.000.000.000");
}

TEST(FormatNumber, MinusOnlyWhenTheRoundedValueIsNotZero) {
  EXPECT_EQ(F(-0.001, "0.00"), "0,00");
  EXPECT_EQ(F(-0.4, "0"), "0");
  EXPECT_EQ(F(-0.5, "0"), "-1");
}

TEST(FormatNumber, OptionalDigits) {
  EXPECT_EQ(F(1.5, "0.0#"), "1,5");
  EXPECT_EQ(F(1.25, "0.0#"), "1,25");
  EXPECT_EQ(F(1.254, "0.0#"), "1,25");
  EXPECT_EQ(F(0, "#"), "");
  EXPECT_EQ(F(0.5, "#.##"), ",5");
  // The decimal separator stays even when no decimal is left, as on the platform.
  EXPECT_EQ(F(5, "0.##"), "5,");
}

TEST(FormatNumber, PercentScalingAndSections) {
  EXPECT_EQ(F(0.25, "0%"), "25%");
  EXPECT_EQ(F(0.1234, "0.0%"), "12,3%");
  EXPECT_EQ(F(1234567, "#,##0,"), "1.235");
  EXPECT_EQ(F(-5, "0;(0)"), "(5)");
  EXPECT_EQ(F(5, "0;(0)"), "5");
  EXPECT_EQ(F(0, "0.00;(0.00);\"zero\""), "zero");
  EXPECT_EQ(F(-5, "0;;\"zero\""), "-5");
}

TEST(FormatNumber, EscapedAndQuotedLiterals) {
  EXPECT_EQ(F(5, "\\#0"), "#5");
  EXPECT_EQ(F(12.5, "0.00 \"km\""), "12,50 km");
  EXPECT_EQ(F(12.5, "#,##0.00 €"), "12,50 €");
  EXPECT_EQ(F(5, "0 min"), "5 min");
}

TEST(FormatNumber, IntegersAreExact) {
  EXPECT_EQ(F(qlonglong(9007199254740993LL), "0"), "9007199254740993");
  EXPECT_EQ(F(qlonglong(-9007199254740993LL), "#,##0"), "-9.007.199.254.740.993");
  EXPECT_EQ(F(QVariant::fromValue(qulonglong(18446744073709551615ULL)), "0"),
            "18446744073709551615");
  EXPECT_EQ(F(QVariant::fromValue(short(-7)), "000"), "-007");
  EXPECT_EQ(F(QVariant::fromValue(2.5f), "0.0"), "2,5");
}

TEST(FormatNumber, TextsAndBooleans) {
  EXPECT_EQ(F("202500012", "0000-00000"), "2025-00012");
  EXPECT_EQ(F("1234,5", "#,##0.00"), "1.234,50");
  EXPECT_EQ(F("  7 ", "000"), "007");
  EXPECT_EQ(F("abc", "0000"), "abc");
  EXPECT_EQ(F("12abc", "#,##0.00"), "12abc");
  EXPECT_EQ(F("", "0"), "");
  EXPECT_EQ(F(true, "0"), "-1");
  EXPECT_EQ(F(false, "0"), "0");
  EXPECT_EQ(F(true, "#,##0.00"), "-1,00");
}

TEST(FormatNumber, OtherCombinationsGiveTheTextOfTheValue) {
  EXPECT_EQ(F(1234.5, ""), "1234,5");
  EXPECT_EQ(F(5, ""), "5");
  EXPECT_EQ(F("testo", ""), "testo");
  EXPECT_EQ(F(kSample, "0000"), "07/03/2025 14:05:09");
  EXPECT_EQ(F(1234.5, "-"), "1234,5");
}

TEST(FormatNumber, NamedFormats) {
  EXPECT_EQ(F(1234.5, "Fixed"), "1234,50");
  EXPECT_EQ(F(1234.5, "Standard"), "1.234,50");
  EXPECT_EQ(F(0.125, "Percent"), "12,50%");
  EXPECT_EQ(F(1234.5, "General Number"), "1234,5");
  EXPECT_EQ(F("1234,50", "General Number"), "1234,5");
}

// ---------------------------------------------------------------------------
// Format: dates
// ---------------------------------------------------------------------------

TEST(FormatDate, ExamplesOfTheSystem) {
  EXPECT_EQ(F(kSample, "dd/mm/yyyy"), "07/03/2025");
  EXPECT_EQ(F(kSample, "hh:nn"), "14:05");
  EXPECT_EQ(F(kSample, "HH:mm"), "14:05");
  EXPECT_EQ(F(kSample, "dd/mm/yyyy hh:nn:ss"), "07/03/2025 14:05:09");
  EXPECT_EQ(F(kSample, "dd hh:nn:ss"), "07 14:05:09");
  EXPECT_EQ(F(kSample, "yyyy-mm-dd"), "2025-03-07");
  EXPECT_EQ(F(kSample, "mm/yyyy"), "03/2025");
  EXPECT_EQ(F(kSample, "mmmm"), "marzo");
  EXPECT_EQ(F(kSample, "yyyy"), "2025");
  EXPECT_EQ(F(kSample, "MM"), "03");
  EXPECT_EQ(F(kSample, "HH:nn"), "14:05");
}

TEST(FormatDate, LettersAreCaseInsensitive) {
  EXPECT_EQ(F(kSample, "YYYY"), "2025");
  EXPECT_EQ(F(kSample, "DD/MM/YYYY"), "07/03/2025");
  EXPECT_EQ(F(kSample, "HH:NN:SS"), "14:05:09");
  EXPECT_EQ(F(kSample, "HH:nn:ss"), "14:05:09");
  EXPECT_EQ(F(kSample, "Mmmm"), "marzo");
}

TEST(FormatDate, MinutesAfterHourOrBeforeSecond) {
  EXPECT_EQ(F(kSample, "mm:ss"), "05:09");
  EXPECT_EQ(F(kSample, "h:m"), "14:5");
  EXPECT_EQ(F(kSample, "dd/mm/yyyy hh:mm"), "07/03/2025 14:05");
  EXPECT_EQ(F(kSample, "hh.mm"), "14.05");
  EXPECT_EQ(F(kSample, "mm"), "03");
  EXPECT_EQ(F(kSample, "mm hh"), "03 14");
  EXPECT_EQ(F(kSample, "mmm hh:mm"), "mar 14:05");
}

TEST(FormatDate, SingleAndLongTokens) {
  const QDateTime t = At(2025, 3, 7, 8, 4, 3);
  EXPECT_EQ(F(t, "d/m/yy"), "7/3/25");
  EXPECT_EQ(F(t, "h:nn:s"), "8:04:3");
  EXPECT_EQ(F(t, "hh:nn:ss"), "08:04:03");
  EXPECT_EQ(F(t, "ddd"), "ven");
  EXPECT_EQ(F(t, "dddd"), "venerdì");
  EXPECT_EQ(F(t, "mmm"), "mar");
  EXPECT_EQ(F(t, "dddd d mmmm yyyy"), "venerdì 7 marzo 2025");
  EXPECT_EQ(F(t, "ddddd"), "07/03/2025");
  EXPECT_EQ(F(t, "ttttt"), "08:04:03");
  EXPECT_EQ(F(t, "y"), "66");  // day of the year
  EXPECT_EQ(F(t, "q"), "1");
  EXPECT_EQ(F(t, "w"), "6");  // Sunday is 1
  EXPECT_EQ(F(At(2025, 1, 4), "ww"), "1");
  EXPECT_EQ(F(At(2025, 1, 5), "ww"), "2");
}

TEST(FormatDate, ItalianNames) {
  const char* months[] = {"gennaio", "febbraio", "marzo",     "aprile",  "maggio",   "giugno",
                          "luglio",  "agosto",   "settembre", "ottobre", "novembre", "dicembre"};
  const char* shortMonths[] = {"gen", "feb", "mar", "apr", "mag", "giu",
                               "lug", "ago", "set", "ott", "nov", "dic"};
  for (int m = 1; m <= 12; ++m) {
    EXPECT_EQ(F(At(2025, m, 15), "mmmm"), QString::fromUtf8(months[m - 1]));
    EXPECT_EQ(F(At(2025, m, 15), "mmm"), QString::fromUtf8(shortMonths[m - 1]));
  }
  // 3 March 2025 is a Monday.
  const char* days[] = {"lunedì",  "martedì", "mercoledì", "giovedì",
                        "venerdì", "sabato",  "domenica"};
  const char* shortDays[] = {"lun", "mar", "mer", "gio", "ven", "sab", "dom"};
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(F(At(2025, 3, 3 + i), "dddd"), QString::fromUtf8(days[i]));
    EXPECT_EQ(F(At(2025, 3, 3 + i), "ddd"), QString::fromUtf8(shortDays[i]));
  }
}

TEST(FormatDate, TwelveHourClock) {
  EXPECT_EQ(F(kSample, "hh:nn AM/PM"), "02:05 PM");
  EXPECT_EQ(F(kSample, "h:nn am/pm"), "2:05 pm");
  EXPECT_EQ(F(At(2025, 3, 7, 0, 30), "h:nn A/P"), "12:30 A");
  EXPECT_EQ(F(At(2025, 3, 7, 12, 0), "h a/p"), "12 p");
}

TEST(FormatDate, LiteralsQuotedAndEscaped) {
  EXPECT_EQ(F(kSample, "dd \"di\" mmmm"), "07 di marzo");
  EXPECT_EQ(F(kSample, "\\d\\a\\l dd"), "dal 07");
  EXPECT_EQ(F(kSample, "dd.mm.yyyy"), "07.03.2025");
}

TEST(FormatDate, OtherDateValues) {
  EXPECT_EQ(F(QDate(2025, 3, 7), "dd/mm/yyyy hh:nn"), "07/03/2025 00:00");
  EXPECT_EQ(F(QTime(14, 5, 9), "hh:nn:ss"), "14:05:09");
  EXPECT_EQ(F(QTime(14, 5, 9), "dd/mm/yyyy"), "30/12/1899");
  EXPECT_EQ(F(QDateTime(QDate(2025, 3, 7), QTime(14, 5, 9, 999)), "ss"), "09");
}

TEST(FormatDate, TextsThatReadAsDates) {
  EXPECT_EQ(F("2025-03-07 14:05:09", "dd/mm/yyyy hh:nn:ss"), "07/03/2025 14:05:09");
  EXPECT_EQ(F("2025-03-07T14:05:09", "dd/mm/yyyy hh:nn:ss"), "07/03/2025 14:05:09");
  EXPECT_EQ(F("2025-03-07", "dd/mm/yyyy"), "07/03/2025");
  EXPECT_EQ(F("07/03/2025", "yyyy-mm-dd"), "2025-03-07");
  EXPECT_EQ(F("07/03/2025 14:05", "hh:nn"), "14:05");
  EXPECT_EQ(F("7/3/2025 14:05:09", "dd/mm/yyyy hh:nn:ss"), "07/03/2025 14:05:09");
  EXPECT_EQ(F("14:05", "hh:nn"), "14:05");
}

TEST(FormatDate, TextsThatDoNotReadAsDatesStayAsTheyAre) {
  EXPECT_EQ(F("abc", "dd/mm/yyyy"), "abc");
  EXPECT_EQ(F("31/02/2025", "dd/mm/yyyy"), "31/02/2025");
  EXPECT_EQ(F("", "dd/mm/yyyy"), "");
}

TEST(FormatDate, NumbersAreDateSerials) {
  EXPECT_EQ(F(45723, "dd/mm/yyyy"), "07/03/2025");
  EXPECT_EQ(F(45723.5, "dd/mm/yyyy hh:nn:ss"), "07/03/2025 12:00:00");
  EXPECT_EQ(F(0, "dd/mm/yyyy"), "30/12/1899");
  EXPECT_EQ(F(-1.25, "dd/mm/yyyy hh:nn"), "29/12/1899 06:00");
  EXPECT_EQ(F("45723", "yyyy-mm-dd"), "2025-03-07");
}

TEST(FormatDate, NamedFormats) {
  EXPECT_EQ(F(kSample, "Short Date"), "07/03/2025");
  EXPECT_EQ(F(kSample, "Long Date"), "venerdì 7 marzo 2025");
  EXPECT_EQ(F(kSample, "Short Time"), "14:05");
  EXPECT_EQ(F(kSample, "Long Time"), "14:05:09");
  EXPECT_EQ(F(kSample, "General Date"), "07/03/2025 14:05:09");
  EXPECT_EQ(F(At(2025, 3, 7), "General Date"), "07/03/2025");
}

// ---------------------------------------------------------------------------
// Round, Int, Fix
// ---------------------------------------------------------------------------

TEST(Round, HalvesGoToTheEvenNeighbour) {
  EXPECT_EQ(Round(16.125, 2), 16.12);
  EXPECT_EQ(Round(2.5), 2.0);
  EXPECT_EQ(Round(3.5), 4.0);
  EXPECT_EQ(Round(-2.5), -2.0);
  EXPECT_EQ(Round(0.5), 0.0);
  EXPECT_EQ(Round(1.5), 2.0);
  EXPECT_EQ(Round(0.125, 2), 0.12);
  EXPECT_EQ(Round(-16.125, 2), -16.12);
  EXPECT_EQ(Round(16.135, 2), 16.14);
  EXPECT_EQ(Round(1.26, 1), 1.3);
  EXPECT_EQ(Round(2.4), 2.0);
  EXPECT_EQ(Round(-2.6), -3.0);
  // 1.005 is 1.00499999999999989... in binary: whether it is taken as below the
  // half or as the half itself (then going to the even 1.00), it gives 1.
  EXPECT_EQ(Round(1.005, 2), 1.0);
}

TEST(Round, IntAndFix) {
  EXPECT_EQ(Int(2.7), 2.0);
  EXPECT_EQ(Int(-2.5), -3.0);
  EXPECT_EQ(Int(-2.0), -2.0);
  EXPECT_EQ(Fix(2.7), 2.0);
  EXPECT_EQ(Fix(-2.5), -2.0);
  EXPECT_EQ(Fix(-2.0), -2.0);
}

// ---------------------------------------------------------------------------
// CTempo, ArrotMultiplo
// ---------------------------------------------------------------------------

TEST(CTempo, HoursAndMinutes) {
  EXPECT_EQ(CTempo(605), "10:05");
  EXPECT_EQ(CTempo(6005), "100:05");
  EXPECT_EQ(CTempo(59), "00:59");
  EXPECT_EQ(CTempo(0), "00:00");
  EXPECT_EQ(CTempo(-5), "00:00");
  EXPECT_EQ(CTempo(75), "01:15");
  EXPECT_EQ(CTempo(60), "01:00");
}

TEST(ArrotMultiplo, RoundsUpToAMultiple) {
  EXPECT_EQ(ArrotMultiplo(12.1, 5), 15.0);
  EXPECT_EQ(ArrotMultiplo(15, 5), 15.0);
  EXPECT_EQ(ArrotMultiplo(-12, 5), -10.0);
  EXPECT_EQ(ArrotMultiplo(10.000000000001, 5), 10.000000000001);
  EXPECT_EQ(ArrotMultiplo(7.3, 0), 7.3);
  EXPECT_EQ(ArrotMultiplo(103.2, 0.1), 103.2);
  EXPECT_EQ(ArrotMultiplo(18.24, 5), 20.0);
  EXPECT_EQ(ArrotMultiplo(18.24, 1), 19.0);
  EXPECT_EQ(ArrotMultiplo(31.2, 1), 32.0);
}

// ---------------------------------------------------------------------------
// DateDiff, MinutiTra, DateAdd, Now, Today
// ---------------------------------------------------------------------------

// Weeks: "w" counts whole seven days, "ww" the Sundays crossed.
TEST(DateDiff, WeeksAreSevenDaysOrTheSundaysCrossed) {
  EXPECT_EQ(DateDiff("w", At(2023, 12, 29), At(2024, 1, 25)), 3);
  EXPECT_EQ(DateDiff("ww", At(2023, 12, 29), At(2024, 1, 25)), 4);  // 31/12, 7/1, 14/1, 21/1
  EXPECT_EQ(DateDiff("ww", At(2024, 1, 25), At(2023, 12, 29)), -4);
  EXPECT_EQ(DateDiff("ww", At(2025, 3, 8), At(2025, 3, 9)), 1);  // Saturday to Sunday
  EXPECT_EQ(DateDiff("ww", At(2025, 3, 9), At(2025, 3, 15)), 0);  // Sunday to Saturday
  EXPECT_EQ(DateDiff("w", At(2025, 3, 9), At(2025, 3, 15)), 0);
  EXPECT_EQ(DateDiff("w", At(2025, 3, 16), At(2025, 3, 8)), -1);
}

TEST(DateDiff, CountsBoundariesCrossed) {
  EXPECT_EQ(DateDiff("n", At(2025, 3, 7, 10, 50, 59), At(2025, 3, 7, 10, 51, 0)), 1);
  EXPECT_EQ(DateDiff("h", At(2025, 3, 7, 10, 50), At(2025, 3, 7, 11, 10)), 1);
  EXPECT_EQ(DateDiff("h", At(2025, 3, 7, 9, 50), At(2025, 3, 7, 10, 10)), 1);
  EXPECT_EQ(DateDiff("n", At(2025, 3, 7, 9, 50), At(2025, 3, 7, 10, 10)), 20);
  EXPECT_EQ(DateDiff("d", At(2025, 3, 7, 23, 59), At(2025, 3, 8, 0, 1)), 1);
  EXPECT_EQ(DateDiff("d", At(2025, 3, 7, 0, 0), At(2025, 3, 7, 23, 59)), 0);
  EXPECT_EQ(DateDiff("s", At(2025, 3, 7, 10, 50, 59), At(2025, 3, 7, 10, 51, 0)), 1);
  EXPECT_EQ(DateDiff("m", At(2025, 1, 31), At(2025, 2, 1)), 1);
  EXPECT_EQ(DateDiff("yyyy", At(2024, 12, 31), At(2025, 1, 1)), 1);
  EXPECT_EQ(DateDiff("n", At(2025, 3, 7, 10, 51, 0), At(2025, 3, 7, 10, 50, 59)), -1);
  EXPECT_EQ(DateDiff("N", At(2025, 3, 7, 10, 0), At(2025, 3, 7, 10, 30)), 30);
}

TEST(DateDiff, AcceptsDateTexts) {
  EXPECT_EQ(DateDiff("n", QString("07/03/2025 10:00"), QString("2025-03-07 10:30:00")), 30);
}

TEST(DateDiff, NullRaisesInvalidUseOfNull) {
  EXPECT_RAISES(DateDiff("n", Null, At(2025, 3, 7)), err::InvalidUseOfNull);
  EXPECT_RAISES(DateDiff("n", At(2025, 3, 7), Null), err::InvalidUseOfNull);
}

TEST(MinutiTra, WholeMinutes) {
  EXPECT_EQ(MinutiTra(At(2025, 3, 7, 8, 0), At(2025, 3, 7, 10, 30)), 150);
  EXPECT_EQ(MinutiTra(At(2025, 3, 7, 23, 0), At(2025, 3, 8, 1, 0)), 120);
  EXPECT_RAISES(MinutiTra(At(2025, 3, 7, 8, 0), Null), err::InvalidUseOfNull);
}

TEST(DateAdd, Intervals) {
  const QDateTime t = At(2025, 3, 7, 10, 50);
  EXPECT_EQ(DateAdd("n", 30, t), At(2025, 3, 7, 11, 20));
  EXPECT_EQ(DateAdd("h", -2, t), At(2025, 3, 7, 8, 50));
  EXPECT_EQ(DateAdd("s", 75, t), At(2025, 3, 7, 10, 51, 15));
  EXPECT_EQ(DateAdd("d", 1, t), At(2025, 3, 8, 10, 50));
  EXPECT_EQ(DateAdd("m", 1, At(2025, 1, 31)), At(2025, 2, 28));
  EXPECT_EQ(DateAdd("yyyy", 1, At(2024, 2, 29)), At(2025, 2, 28));
  EXPECT_EQ(DateAdd("ww", 1, t), At(2025, 3, 14, 10, 50));
  EXPECT_RAISES(DateAdd("x", 1, t), err::InvalidProcedureCall);
}

// The dates of the system are wall-clock dates, as on the platform: adding
// hours or reading a serial must not move with the change to summer time.
TEST(DateAdd, WallClockAcrossSummerTime) {
  if (!QFile::exists("/usr/share/zoneinfo/Europe/Rome")) GTEST_SKIP() << "no zone data";
  const QByteArray oldTz = qgetenv("TZ");
  const bool hadTz = qEnvironmentVariableIsSet("TZ");
  qputenv("TZ", "Europe/Rome");
  tzset();
  // Summer time began in Italy on 30 March 2025 at 02:00.
  const QDateTime before = At(2025, 3, 29, 12, 0);
  const QDateTime added = DateAdd("h", 24, before);
  const QDateTime serial = CDate(45746.5);  // 30 March 2025, noon
  const qint64 hours = DateDiff("h", At(2025, 3, 30, 1, 0), At(2025, 3, 30, 3, 0));
  const QDate addedDate = added.date(), serialDate = serial.date();
  const QTime addedTime = added.time(), serialTime = serial.time();
  if (hadTz)
    qputenv("TZ", oldTz);
  else
    qunsetenv("TZ");
  tzset();
  EXPECT_EQ(addedDate, QDate(2025, 3, 30));
  EXPECT_EQ(addedTime, QTime(12, 0));
  EXPECT_EQ(serialDate, QDate(2025, 3, 30));
  EXPECT_EQ(serialTime, QTime(12, 0));
  EXPECT_EQ(hours, 2);
}

TEST(DateAdd, NowAndToday) {
  const QDateTime now = Now();
  EXPECT_EQ(now.time().msec(), 0);
  EXPECT_LE(qAbs(now.secsTo(QDateTime::currentDateTime())), 2);
  const QDate before = QDate::currentDate();
  const QDateTime today = Today();
  const QDate after = QDate::currentDate();
  EXPECT_EQ(today.time(), QTime(0, 0));
  EXPECT_TRUE(today.date() == before || today.date() == after);
}

// ---------------------------------------------------------------------------
// Conversions
// ---------------------------------------------------------------------------

TEST(Conversions, IsNumeric) {
  EXPECT_TRUE(IsNumeric(5));
  EXPECT_TRUE(IsNumeric(2.5));
  EXPECT_TRUE(IsNumeric(true));
  EXPECT_TRUE(IsNumeric(QString("12,5")));
  EXPECT_TRUE(IsNumeric(QString("1.5")));
  EXPECT_TRUE(IsNumeric(QString(" -3 ")));
  EXPECT_FALSE(IsNumeric(QString("abc")));
  EXPECT_FALSE(IsNumeric(QString("12abc")));
  EXPECT_FALSE(IsNumeric(QString("")));
  EXPECT_FALSE(IsNumeric(Null));
  EXPECT_FALSE(IsNumeric(kSample));
}

TEST(Conversions, IsDate) {
  EXPECT_TRUE(IsDate(kSample));
  EXPECT_TRUE(IsDate(QDate(2025, 3, 7)));
  EXPECT_TRUE(IsDate(QString("07/03/2025")));
  EXPECT_TRUE(IsDate(QString("2025-03-07 14:05:09")));
  EXPECT_FALSE(IsDate(QString("31/02/2025")));
  EXPECT_FALSE(IsDate(QString("abc")));
  EXPECT_FALSE(IsDate(5));
  EXPECT_FALSE(IsDate(Null));
}

TEST(Conversions, CInt) {
  EXPECT_EQ(CInt(0.5), 0);
  EXPECT_EQ(CInt(1.5), 2);
  EXPECT_EQ(CInt(2.5), 2);
  EXPECT_EQ(CInt(-2.5), -2);
  EXPECT_EQ(CInt(2.6), 3);
  EXPECT_EQ(CInt(32767), 32767);
  EXPECT_EQ(CInt(-32768), -32768);
  EXPECT_EQ(CInt(QString("2,5")), 2);
  EXPECT_EQ(CInt(QString("12")), 12);
  EXPECT_EQ(CInt(true), -1);
  EXPECT_RAISES(CInt(40000), err::Overflow);
  EXPECT_RAISES(CInt(32767.5), err::Overflow);
  EXPECT_RAISES(CInt(Null), err::InvalidUseOfNull);
  EXPECT_RAISES(CInt(QString("abc")), err::TypeMismatch);
}

TEST(Conversions, CLng) {
  EXPECT_EQ(CLng(2.5), 2);
  EXPECT_EQ(CLng(3.5), 4);
  EXPECT_EQ(CLng(100000), 100000);
  EXPECT_EQ(CLng(QString("100000")), 100000);
  EXPECT_EQ(CLng(2147483647.0), 2147483647);
  EXPECT_EQ(CLng(-2147483648.0), -2147483647 - 1);
  EXPECT_RAISES(CLng(2147483648.0), err::Overflow);
  EXPECT_RAISES(CLng(Null), err::InvalidUseOfNull);
  EXPECT_RAISES(CLng(QString("abc")), err::TypeMismatch);
}

TEST(Conversions, CByte) {
  EXPECT_EQ(CByte(255), 255);
  EXPECT_EQ(CByte(0), 0);
  EXPECT_EQ(CByte(2.5), 2);
  EXPECT_EQ(CByte(254.5), 254);
  EXPECT_RAISES(CByte(256), err::Overflow);
  EXPECT_RAISES(CByte(-1), err::Overflow);
  EXPECT_RAISES(CByte(Null), err::InvalidUseOfNull);
}

TEST(Conversions, CBool) {
  EXPECT_FALSE(CBool(0));
  EXPECT_TRUE(CBool(2));
  EXPECT_TRUE(CBool(-1));
  EXPECT_FALSE(CBool(0.0));
  EXPECT_TRUE(CBool(true));
  EXPECT_FALSE(CBool(QString("0")));
  EXPECT_RAISES(CBool(QString("abc")), err::TypeMismatch);
  EXPECT_RAISES(CBool(Null), err::InvalidUseOfNull);
}

TEST(Conversions, CDbl) {
  EXPECT_EQ(CDbl(QString("1,5")), 1.5);
  EXPECT_EQ(CDbl(QString("1.5")), 1.5);
  EXPECT_EQ(CDbl(QString("1.234,5")), 1234.5);
  EXPECT_EQ(CDbl(QString(" -2,25 ")), -2.25);
  EXPECT_EQ(CDbl(7), 7.0);
  EXPECT_EQ(CDbl(true), -1.0);
  EXPECT_EQ(CDbl(At(2025, 3, 7, 12, 0)), 45723.5);
  EXPECT_RAISES(CDbl(QString("")), err::TypeMismatch);
  EXPECT_RAISES(CDbl(QString("abc")), err::TypeMismatch);
  EXPECT_RAISES(CDbl(Null), err::InvalidUseOfNull);
}

TEST(Conversions, CStr) {
  EXPECT_EQ(CStr(0.5), "0,5");
  EXPECT_EQ(CStr(1234.5), "1234,5");
  EXPECT_EQ(CStr(-3.25), "-3,25");
  EXPECT_EQ(CStr(0.1 + 0.2), "0,3");
  EXPECT_EQ(CStr(5), "5");
  EXPECT_EQ(CStr(2.0), "2");
  EXPECT_EQ(CStr(QString("testo")), "testo");
  EXPECT_EQ(CStr(kSample), "07/03/2025 14:05:09");
  EXPECT_EQ(CStr(At(2025, 3, 7)), "07/03/2025");
  EXPECT_EQ(CStr(true), "Vero");
  EXPECT_EQ(CStr(false), "Falso");
  EXPECT_RAISES(CStr(Null), err::InvalidUseOfNull);
}

TEST(Conversions, CDate) {
  EXPECT_EQ(CDate(QString("07/03/2025")), At(2025, 3, 7));
  EXPECT_EQ(CDate(QString("07/03/2025 14:05")), At(2025, 3, 7, 14, 5));
  EXPECT_EQ(CDate(QString("2025-03-07 14:05:09")), kSample);
  EXPECT_EQ(CDate(QDate(2025, 3, 7)), At(2025, 3, 7));
  EXPECT_EQ(CDate(kSample), kSample);
  EXPECT_EQ(CDate(45723.5), At(2025, 3, 7, 12, 0));
  // A negative serial counts whole days back from day zero, the fraction being
  // the time of that day: -1.25 is 29/12/1899 at 06:00.
  EXPECT_EQ(CDate(-1.25), At(1899, 12, 29, 6, 0));
  EXPECT_RAISES(CDate(QString("abc")), err::TypeMismatch);
  EXPECT_RAISES(CDate(Null), err::InvalidUseOfNull);
}

TEST(Conversions, Val) {
  EXPECT_EQ(Val("12abc"), 12.0);
  EXPECT_EQ(Val("  12.5abc"), 12.5);
  EXPECT_EQ(Val("abc"), 0.0);
  EXPECT_EQ(Val(""), 0.0);
  EXPECT_EQ(Val("1,5"), 1.0);
  EXPECT_EQ(Val("-3"), -3.0);
  EXPECT_EQ(Val("1e3"), 1000.0);
  // Blanks inside the number are skipped, as the platform's Val does.
  EXPECT_EQ(Val("  1615 198th Street N.E."), 1615198.0);
}

TEST(Conversions, NullToZeroAndNullToStr) {
  const QVariant zero = NullToZero(Null);
  EXPECT_EQ(zero.typeId(), QMetaType::Int);
  EXPECT_EQ(zero.toInt(), 0);
  EXPECT_EQ(NullToZero(5.5), QVariant(5.5));
  EXPECT_EQ(NullToZero(QString("x")), QVariant(QString("x")));
  EXPECT_EQ(NullToStr(Null), "");
  EXPECT_EQ(NullToStr(QString("x")), "x");
  EXPECT_EQ(NullToStr(2.5), "2,5");
}

TEST(Conversions, StorageForm) {
  EXPECT_EQ(DateToStorage(kSample), "2025-03-07 14:05:09");
  EXPECT_EQ(DateFromStorage("2025-03-07 14:05:09"), kSample);
  EXPECT_EQ(DateToStorage(DateFromStorage("2025-03-07 14:05:09")), "2025-03-07 14:05:09");
  EXPECT_EQ(DateToStorage(At(2025, 3, 7)), "2025-03-07 00:00:00");
  EXPECT_FALSE(DateFromStorage("garbage").isValid());
  EXPECT_FALSE(DateFromStorage("2025-02-30 00:00:00").isValid());
  EXPECT_FALSE(DateFromStorage("").isValid());
}

// ---------------------------------------------------------------------------
// Profile files
// ---------------------------------------------------------------------------

namespace {

class Profile : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(dir_.isValid()); }
  QString Path(const char* name = "Vorn.def") const { return dir_.filePath(name); }
  void Put(const QByteArray& bytes) const {
    QFile f(Path());
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
  }
  QByteArray Bytes() const {
    QFile f(Path());
    if (!f.open(QIODevice::ReadOnly)) return "<missing>";
    return f.readAll();
  }
  QString Get(const char* section, const char* key, const char* def = "DEF") const {
    return GetPrivateProfileString(section, key, def, Path());
  }
  bool Set(const char* section, const char* key, const QString& value) const {
    return WritePrivateProfileString(section, key, value, Path());
  }

  QTemporaryDir dir_;
};

}  // namespace

TEST_F(Profile, MissingFileGivesTheDefault) {
  EXPECT_EQ(Get("Generale", "Percorso", "C:\\Dati"), "C:\\Dati");
  EXPECT_FALSE(QFile::exists(Path()));
}

TEST_F(Profile, MissingSectionOrKeyGivesTheDefault) {
  Put("[Generale]\nPercorso=/dati\n");
  EXPECT_EQ(Get("Altro", "Percorso"), "DEF");
  EXPECT_EQ(Get("Generale", "Manca"), "DEF");
  EXPECT_EQ(Get("Generale", "Percorso"), "/dati");
}

TEST_F(Profile, WriteCreatesTheFileThenReads) {
  EXPECT_TRUE(Set("Generale", "Percorso", "/home/officina/dati"));
  EXPECT_EQ(Bytes(), "[Generale]\nPercorso=/home/officina/dati\n");
  EXPECT_EQ(Get("Generale", "Percorso"), "/home/officina/dati");
}

TEST_F(Profile, SectionAndKeyIgnoreCase) {
  ASSERT_TRUE(Set("Generale", "Percorso", "uno"));
  EXPECT_EQ(Get("GENERALE", "percorso"), "uno");
  EXPECT_EQ(Get("generale", "PERCORSO"), "uno");
  ASSERT_TRUE(Set("GENERALE", "PERCORSO", "due"));
  EXPECT_EQ(Bytes(), "[Generale]\nPercorso=due\n");
}

TEST_F(Profile, WhitespaceAndLineEnds) {
  Put("  [ Generale ]  \r\n   Percorso  =  /dati con spazi  \r\nVuota=\r\n");
  EXPECT_EQ(Get("Generale", "Percorso"), "/dati con spazi");
  EXPECT_EQ(Get("Generale", "Vuota"), "");
}

TEST_F(Profile, ReplacingKeepsEverythingElse) {
  const QByteArray before =
      "; impostazioni dell'officina\n"
      "\n"
      "[Generale]\n"
      "  Percorso = /vecchio   \n"
      "Ditta=Rossi & C.\n"
      "\n"
      "[Stampa]\n"
      "; la stampante\n"
      "Percorso=/stampe\n";
  Put(before);
  ASSERT_TRUE(Set("generale", "PERCORSO", "/nuovo"));
  QByteArray after = before;
  after.replace("  Percorso = /vecchio   \n", "Percorso=/nuovo\n");
  EXPECT_EQ(Bytes(), after);
  EXPECT_EQ(Get("Stampa", "Percorso"), "/stampe");
  EXPECT_EQ(Get("Generale", "Percorso"), "/nuovo");
}

TEST_F(Profile, SameKeyInTwoSectionsIsIndependent) {
  ASSERT_TRUE(Set("Uno", "Chiave", "a"));
  ASSERT_TRUE(Set("Due", "Chiave", "b"));
  EXPECT_EQ(Get("Uno", "Chiave"), "a");
  EXPECT_EQ(Get("Due", "Chiave"), "b");
  ASSERT_TRUE(Set("Due", "Chiave", "c"));
  EXPECT_EQ(Get("Uno", "Chiave"), "a");
  EXPECT_EQ(Get("Due", "Chiave"), "c");
  EXPECT_EQ(Bytes(), "[Uno]\nChiave=a\n\n[Due]\nChiave=c\n");
}

TEST_F(Profile, NewKeyGoesAtTheEndOfItsSection) {
  Put("[Uno]\nA=1\n\n[Due]\nB=2\n");
  ASSERT_TRUE(Set("Uno", "C", "3"));
  EXPECT_EQ(Bytes(), "[Uno]\nA=1\nC=3\n\n[Due]\nB=2\n");
  ASSERT_TRUE(Set("Due", "D", "4"));
  EXPECT_EQ(Bytes(), "[Uno]\nA=1\nC=3\n\n[Due]\nB=2\nD=4\n");
}

TEST_F(Profile, NewKeyInAnEmptySectionAndInAFileWithoutFinalLineEnd) {
  Put("[Uno]\n[Due]\nB=2");
  ASSERT_TRUE(Set("Uno", "A", "1"));
  EXPECT_EQ(Bytes(), "[Uno]\nA=1\n[Due]\nB=2");
  ASSERT_TRUE(Set("Due", "C", "3"));
  EXPECT_EQ(Bytes(), "[Uno]\nA=1\n[Due]\nB=2\nC=3\n");
}

TEST_F(Profile, NewSectionGoesAtTheEnd) {
  Put("; commento\n[Uno]\nA=1");
  ASSERT_TRUE(Set("Due", "B", "2"));
  EXPECT_EQ(Bytes(), "; commento\n[Uno]\nA=1\n\n[Due]\nB=2\n");
}

TEST_F(Profile, ReplacedLineKeepsItsOwnLineEnd) {
  Put("[Uno]\r\nA=1\r\nB=2\r\n");
  ASSERT_TRUE(Set("Uno", "A", "9"));
  EXPECT_EQ(Bytes(), "[Uno]\r\nA=9\r\nB=2\r\n");
}

TEST_F(Profile, Utf8AndOldCodePages) {
  ASSERT_TRUE(Set("Ditta", "Città", "Forlì"));
  EXPECT_EQ(Get("Ditta", "CITTÀ"), "Forlì");
  EXPECT_EQ(Bytes(), QString("[Ditta]\nCittà=Forlì\n").toUtf8());

  // A file from an older installation, in Latin-1: read, and its lines kept.
  Put("[Ditta]\nNome=Caf\xe9\nCitta=X\n");
  EXPECT_EQ(Get("Ditta", "Nome"), QString("Café"));
  ASSERT_TRUE(Set("Ditta", "Citta", "Y"));
  EXPECT_EQ(Bytes(), QByteArray("[Ditta]\nNome=Caf\xe9\nCitta=Y\n"));
}

TEST_F(Profile, ByteOrderMarkIsNotPartOfTheFirstSection) {
  Put("\xEF\xBB\xBF[Uno]\nA=1\n");
  EXPECT_EQ(Get("Uno", "A"), "1");
  ASSERT_TRUE(Set("Uno", "A", "2"));
  EXPECT_EQ(Bytes(), "\xEF\xBB\xBF[Uno]\nA=2\n");
}

TEST_F(Profile, FirstOccurrenceWins) {
  Put("[Uno]\nA=1\nA=2\n[Uno]\nA=3\n");
  EXPECT_EQ(Get("Uno", "A"), "1");
  ASSERT_TRUE(Set("Uno", "A", "9"));
  EXPECT_EQ(Bytes(), "[Uno]\nA=9\nA=2\n[Uno]\nA=3\n");
}

TEST_F(Profile, UnwritableFileGivesFalse) {
  const QString path = dir_.filePath("manca/Vorn.def");
  EXPECT_FALSE(WritePrivateProfileString("Uno", "A", "1", path));
  EXPECT_FALSE(QFile::exists(path));
  EXPECT_FALSE(WritePrivateProfileString("", "A", "1", Path()));
  EXPECT_FALSE(WritePrivateProfileString("Uno", "", "1", Path()));
  EXPECT_FALSE(QFile::exists(Path()));
}

// ---------------------------------------------------------------------------
// Extreme values: out of range is a failed conversion, never an overflow
// ---------------------------------------------------------------------------

TEST(ExtremeValues, ConversionsBeyondTheIntegerRangeRaiseOverflow) {
  for (double v : {1e54, -1e54, 2147483647.5, 9.3e18, std::numeric_limits<double>::infinity(),
                   std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_RAISES(CLng(v), err::Overflow) << v;
    EXPECT_RAISES(CInt(v), err::Overflow) << v;
    EXPECT_RAISES(CByte(v), err::Overflow) << v;
  }
  EXPECT_EQ(CLng(2147483647.0), 2147483647);
  EXPECT_EQ(CLng(-2147483648.0), -2147483647 - 1);
}

TEST(ExtremeValues, DateSerialsOutsideTheYearsOfThePlatformRaiseOverflow) {
  for (double v : {1e54, -1e54, 2958466.0, -657435.0, std::numeric_limits<double>::quiet_NaN()})
    EXPECT_RAISES(CDate(v), err::Overflow) << v;
  EXPECT_EQ(CDate(2958465.0).date(), QDate(9999, 12, 31));  // the last day of the platform
  EXPECT_EQ(CDate(-657434.0).date(), QDate(100, 1, 1));     // and the first
}

TEST(ExtremeValues, DateAddOfHugeCountsIsAnInvalidArgument) {
  const QDateTime d = At(2025, 6, 30);
  for (const char* i : {"s", "n", "h", "d", "ww", "m", "q", "yyyy"})
    for (double n : {1e54, -1e54, 9.2e18, 4e6 * 86400})
      EXPECT_RAISES(DateAdd(QString::fromLatin1(i), n, d), err::InvalidProcedureCall) << i << ' ' << n;
  EXPECT_RAISES(DateAdd("d", 3000000, d), err::InvalidProcedureCall);  // past the year 9999
  EXPECT_RAISES(DateAdd("x", 1, d), err::InvalidProcedureCall);
  EXPECT_EQ(DateAdd("d", 2912627, d).date(), QDate(9999, 12, 31));
  EXPECT_RAISES(DateAdd("d", 2912628, d), err::InvalidProcedureCall);
  EXPECT_EQ(DateAdd("d", 1, d), At(2025, 7, 1));
}

TEST(ExtremeValues, FormatAndDateDiffOfExtremesGiveTexts) {
  EXPECT_FALSE(F(1e54, "#,##0.00").isEmpty());
  EXPECT_FALSE(F(-1e54, "0000-00000").isEmpty());
  EXPECT_NO_THROW(F(1e54, "dd/mm/yyyy"));
  EXPECT_EQ(DateDiff("n", At(100, 1, 1), At(9999, 12, 31)), 5206894560LL);
  EXPECT_EQ(Round(1e308, 2), 1e308);
  EXPECT_EQ(ArrotMultiplo(1e54, 5), 1e54);
}

// Numbers for SQL: a point whatever the users' convention, a blank for the sign
// of a value not negative, no zero before the point, an exponent beyond 15 digits.
TEST(Vb, StrWritesNumbersAsSqlTakesThem) {
  EXPECT_EQ(Str(12.5), " 12.5");
  EXPECT_EQ(Str(0.5), " .5");
  EXPECT_EQ(Str(-0.25), "-.25");
  EXPECT_EQ(Str(-3), "-3");
  EXPECT_EQ(Str(0), " 0");
  EXPECT_EQ(Str(12.345), " 12.345");
  EXPECT_EQ(Str(123456789.123), " 123456789.123");
  EXPECT_EQ(Str(1e15), " 1E+15");
  EXPECT_EQ(Str(1e-5), " 1E-05");
  EXPECT_EQ(Str(0.1 + 0.2), " .3");
}
