// The export of a recordset to a sheet and to a CSV, read back cell by cell and
// byte by byte; the word wrap of the prints; the report of the time per
// disposition, on paper (PDF) and to a file.
#include <gtest/gtest.h>
#include <zip.h>

#include <QDir>
#include <QFile>
#include <QFontMetricsF>
#include <QImage>
#include <QProcess>
#include <QXmlStreamReader>
#include <cmath>
#include <map>

#include "ModDoc.h"
#include "ModExcel.h"
#include "ModReport.h"
#include "LettoreXlsx.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

QByteArray Leggi(const QString& file) {
  QFile f(file);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool Scrivi(const QString& file, const QByteArray& dati) {
  QFile f(file);
  return f.open(QIODevice::WriteOnly) && f.write(dati) == dati.size();
}

bool Zip(const QString& file) { return Leggi(file).startsWith("PK\x03\x04"); }

// The width the spreadsheet gives a text, measured here on its own: Calibri 11
// at 96 dpi, each character in whole pixels; and the <col> width that a column
// fitted to it carries (7 px of margins, the sheet's 7 px a character unit).
int PxFoglio(const QString& testo) {
  QImage dispositivo(1, 1, QImage::Format_RGB32);
  dispositivo.setDotsPerMeterX(qRound(96 / 0.0254));
  dispositivo.setDotsPerMeterY(qRound(96 / 0.0254));
  QFont font(QStringLiteral("Calibri"));
  font.setPointSizeF(11);
  const QFontMetricsF fm(font, &dispositivo);
  int px = 0;
  for (const QChar c : testo) px += qRound(fm.horizontalAdvance(c));
  return px;
}
double LarghezzaAttesa(const QString& testoPiuLargo) {
  const int px = std::min(PxFoglio(testoPiuLargo) + 7, 255 * 7 + 5);
  return std::floor(static_cast<double>(px) / 7 * 256) / 256;
}

// ---------------------------------------------------------------- the recordsets exported

// Three rows with a text holding ";", a Null date, a date with a time, 0 and
// negative numbers, a truth value and a Null one.
RecordsetPtr Lavori() {
  RecordsetPtr rs = Recordset::Create();
  rs->Append("Cliente", adVarChar, 50);
  rs->Append("Data", adDate);
  rs->Append("Minuti", adInteger);
  rs->Append("Importo", adDouble);
  rs->Append("Chiuso", adBoolean);
  rs->Open();
  const auto riga = [&](const QVariant& c, const QVariant& d, const QVariant& m, const QVariant& i, const QVariant& x) {
    rs->AddNew();
    rs->SetValue("Cliente", c);
    rs->SetValue("Data", d);
    rs->SetValue("Minuti", m);
    rs->SetValue("Importo", i);
    rs->SetValue("Chiuso", x);
    rs->Update();
  };
  riga("Officina Rossi", D(2025, 2, 3), 75, 12.5, true);
  riga("Zincatura; Bianchi", QVariant(), 0, -3.25, false);
  riga(QString::fromUtf8("Città €"), D(2025, 2, 4, 10, 30), -5, 1.0 / 3, QVariant());
  return rs;
}

QList<QByteArray> Linee(const QByteArray& csv) {
  QList<QByteArray> l = csv.split('\n');
  if (!l.isEmpty() && l.back().isEmpty()) l.removeLast();
  return l;
}

// The messages the service was asked, as "text|flags".
QStringList Chiesto(const TestDb& t) {
  QStringList out;
  for (const Asked& a : t.messages->asked) out << a.prompt + QLatin1Char('|') + QString::number(a.buttons);
  return out;
}

// The files of a folder, the hidden ones too.
QStringList FileDi(const QString& cartella) {
  return QDir(cartella).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
}

}  // namespace

// ================================================================ CSV

TEST(ADOtoCSV, TitlesInQuotesThenEachRowByteByByteInWindows1252WithCrLf) {
  TestDb t;
  RecordsetPtr rs = Lavori();
  const QString file = t.Path() + "/lavori.csv";
  ADOtoCSV(file, rs);
  const QByteArray atteso =
      "\"Cliente\";\"Data\";\"Minuti\";\"Importo\";\"Chiuso\"\r\n"
      "Officina Rossi;03/02/2025;75;12,5;Vero\r\n"
      "Zincatura; Bianchi;;0;-3,25;Falso\r\n"
      "Citt\xE0 \x80;04/02/2025 10:30:00;-5;0,333333333333333;\r\n";
  EXPECT_EQ(Leggi(file), atteso);
  EXPECT_EQ(Chiesto(t), QStringList({"File creato con successo!|64"}));
  EXPECT_TRUE(t.LogLines("ModExcel", "ADOtoCSV").isEmpty());
}

// A value holding ";" is not escaped: its row has a column more, and every
// value after it stands one column to the right, as it stands.
TEST(ADOtoCSV, AValueHoldingASemicolonShiftsTheRestOfItsRow) {
  TestDb t;
  const QString file = t.Path() + "/spostata.csv";
  ADOtoCSV(file, Lavori());
  const QList<QByteArray> linee = Linee(Leggi(file));
  ASSERT_EQ(linee.size(), 4);
  const QList<QByteArray> titoli = linee[0].trimmed().split(';');
  const QList<QByteArray> giusta = linee[1].trimmed().split(';');
  const QList<QByteArray> spostata = linee[2].trimmed().split(';');
  EXPECT_EQ(titoli.size(), 5);
  EXPECT_EQ(giusta.size(), 5);
  ASSERT_EQ(spostata.size(), 6);
  EXPECT_EQ(spostata[0], "Zincatura");
  EXPECT_EQ(spostata[1], " Bianchi");  // under "Data"
  EXPECT_EQ(spostata[2], "");          // the Null date under "Minuti"
  EXPECT_EQ(spostata[3], "0");         // the minutes under "Importo"
  EXPECT_EQ(spostata[5], "Falso");     // past the last title
}

TEST(ADOtoCSV, HeadingFirstBareTitlesOrNoneAndQuotesAsTestoSqlDoublesThem) {
  TestDb t;
  RecordsetPtr rs = Recordset::Create();
  rs->Append("Nome \"breve\"", adVarChar, 10);
  rs->Append("N", adInteger);
  rs->Open();
  rs->AddNew();
  rs->SetValue(0, "a");
  rs->SetValue(1, 1);
  rs->Update();
  const QString file = t.Path() + "/t.csv";
  ADOtoCSV(file, rs, {}, false, false, "Elenco del mese");
  EXPECT_EQ(Leggi(file), QByteArray("Elenco del mese\r\n\"Nome ''breve''\";\"N\"\r\na;1\r\n"));
  ADOtoCSV(file, rs, {}, false, true);
  EXPECT_EQ(Leggi(file), QByteArray("Nome \"breve\";N\r\na;1\r\n"));
  ADOtoCSV(file, rs, {}, true, false, "Solo righe");
  EXPECT_EQ(Leggi(file), QByteArray("Solo righe\r\na;1\r\n"));
  EXPECT_EQ(t.messages->asked.size(), 3u);
}

TEST(ADOtoCSV, AnEmptyRecordsetGivesTheTitlesAlone) {
  TestDb t;
  RecordsetPtr vuoto = Recordset::Create();
  vuoto->Append("Cliente", adVarChar, 50);
  vuoto->Append("Data", adDate);
  vuoto->Open();
  const QString file = t.Path() + "/vuoto.csv";
  ADOtoCSV(file, vuoto);
  EXPECT_EQ(Leggi(file), QByteArray("\"Cliente\";\"Data\"\r\n"));
  EXPECT_EQ(Chiesto(t), QStringList({"File creato con successo!|64"}));
}

// The rows under a filter are not the export: every row goes out, in the
// recordset's order, and the filter is there again after.
TEST(ADOtoCSV, AFilterIsLiftedForTheExportAndPutBack) {
  TestDb t;
  RecordsetPtr rs = Lavori();
  rs->SetSort("Minuti");
  rs->SetFilter("Minuti > 0");
  ASSERT_EQ(rs->RecordCount(), 1);
  const QString file = t.Path() + "/filtro.csv";
  std::vector<std::pair<int, int>> passi;
  ADOtoCSV(file, rs, [&](int v, int m) { passi.emplace_back(v, m); });
  const QList<QByteArray> linee = Linee(Leggi(file));
  ASSERT_EQ(linee.size(), 4);
  EXPECT_TRUE(linee[1].startsWith("Citt\xE0"));
  EXPECT_TRUE(linee[2].startsWith("Zincatura; Bianchi;"));
  EXPECT_TRUE(linee[3].startsWith("Officina Rossi;"));
  EXPECT_EQ(rs->Filter(), "Minuti > 0");
  EXPECT_EQ(rs->RecordCount(), 1);
  EXPECT_EQ(rs->Sort(), "Minuti");
  EXPECT_EQ(passi, (std::vector<std::pair<int, int>>{{0, 3}, {1, 3}, {2, 3}, {3, 3}}));
}

TEST(ADOtoCSV, AnOlderFileOfThatNameIsReplaced) {
  TestDb t;
  const QString file = t.Path() + "/vecchio.csv";
  ASSERT_TRUE(Scrivi(file, QByteArray(5000, 'x')));
  ADOtoCSV(file, Lavori());
  EXPECT_TRUE(Leggi(file).startsWith("\"Cliente\""));
  EXPECT_FALSE(Leggi(file).contains('x' + QByteArray(10, 'x')));
}

// A folder that is not there, or a name that is a folder: the failure is in
// the log, no file is left half written, and no success is told.
TEST(ADOtoCSV, APathThatCannotBeWrittenIsLoggedAndLeavesNoFile) {
  TestDb t;
  const QString manca = t.Path() + "/manca/lavori.csv";
  ADOtoCSV(manca, Lavori());
  EXPECT_FALSE(QFileInfo::exists(t.Path() + "/manca"));
  QStringList log = t.LogLines("ModExcel", "ADOtoCSV");
  ASSERT_EQ(log.size(), 1);
  EXPECT_TRUE(log[0].endsWith("(76)")) << log[0].toStdString();
  EXPECT_TRUE(log[0].contains("ADOtoCSV: Path not found")) << log[0].toStdString();

  const QString cartella = t.Path() + "/sono.csv";
  ASSERT_TRUE(QDir().mkdir(cartella));
  const QStringList prima = FileDi(t.Path());
  RecordsetPtr rs = Lavori();
  rs->SetFilter("Minuti > 0");
  ADOtoCSV(cartella, rs);
  EXPECT_TRUE(QFileInfo(cartella).isDir());
  EXPECT_EQ(FileDi(t.Path()), prima);  // no temporary file left beside it
  log = t.LogLines("ModExcel", "ADOtoCSV");
  EXPECT_EQ(log.size(), 3);  // the folder is not deleted, nor written
  EXPECT_EQ(rs->Filter(), "Minuti > 0");
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(ADOtoCSV, NoRecordsetIsLoggedAndWritesNothing) {
  TestDb t;
  ADOtoCSV(t.Path() + "/niente.csv", RecordsetPtr());
  EXPECT_FALSE(QFileInfo::exists(t.Path() + "/niente.csv"));
  const QStringList log = t.LogLines("ModExcel", "ADOtoCSV");
  ASSERT_EQ(log.size(), 1);
  EXPECT_TRUE(log[0].endsWith("(91)"));
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(InWindows1252, TheCodePageOfTheSpreadsheetAndAMarkForTheRest) {
  EXPECT_EQ(InWindows1252(QString::fromUtf8("àèéìòù €‚ƒ„…†‡ˆ‰Š‹ŒŽ‘’“”•–—˜™š›œžŸ")),
            QByteArray("\xE0\xE8\xE9\xEC\xF2\xF9 \x80\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8E\x91\x92\x93\x94"
                       "\x95\x96\x97\x98\x99\x9A\x9B\x9C\x9E\x9F"));
  EXPECT_EQ(InWindows1252(QString::fromUtf8("Łódź 😀 \u0081")), QByteArray("?\xF3" "d? ? ?"));
}

// ================================================================ the sheet

// The test of the system is on the lower-case path: any case of ".xls" and
// ".xlsx" gives a workbook, and only those.
TEST(ADOtoCSV, APathEndingInXlsOrXlsxInAnyCaseGoesToTheSheet) {
  TestDb t;
  for (const char* nome : {"a.XLSX", "b.XLS", "c.Xlsx", "d.xls"}) {
    const QString file = t.Path() + "/" + nome;
    ADOtoCSV(file, Lavori());
    EXPECT_TRUE(Zip(file)) << nome;
    const Foglio f = LeggiFoglio(file);
    ASSERT_TRUE(f.letto) << nome;
    EXPECT_EQ(f.Testo("A1"), "Cliente") << nome;
    EXPECT_EQ(f.Righe(), 4) << nome;
  }
  for (const char* nome : {"e.CSV", "f.xlsx.csv", "gxls", "h.xl"}) {
    const QString file = t.Path() + "/" + nome;
    ADOtoCSV(file, Lavori());
    EXPECT_TRUE(Leggi(file).startsWith("\"Cliente\";\"Data\"")) << nome;
  }
  EXPECT_EQ(t.messages->asked.size(), 8u);
}

TEST(ADOtoXLS, FieldNamesInRowOneAndEveryValueFromRowTwoAsItIs) {
  TestDb t;
  const QString file = t.Path() + "/lavori.xlsx";
  ADOtoXLS(file, Lavori());
  const Foglio f = LeggiFoglio(file);
  ASSERT_TRUE(f.letto);
  EXPECT_EQ(f.nomeFoglio, "Foglio1");
  EXPECT_EQ(f.Testo("A1"), "Cliente");
  EXPECT_EQ(f.Testo("B1"), "Data");
  EXPECT_EQ(f.Testo("E1"), "Chiuso");
  EXPECT_EQ(f.Testo("A2"), "Officina Rossi");
  EXPECT_EQ(f.Testo("A3"), "Zincatura; Bianchi");  // a cell holds its ";" whole
  EXPECT_EQ(f.Testo("A4"), QString::fromUtf8("Città €"));
  // Numbers are numbers: 0 and negatives as they are.
  EXPECT_EQ(f.celle.at("C2").tipo, "");
  EXPECT_EQ(f.Testo("C2"), "75");
  EXPECT_EQ(f.Testo("C3"), "0");
  EXPECT_EQ(f.Testo("C4"), "-5");
  EXPECT_EQ(f.Testo("D3"), "-3.25");
  EXPECT_NEAR(f.Testo("D4").toDouble(), 1.0 / 3, 1e-15);
  EXPECT_EQ(f.celle.at("E2").tipo, "b");
  EXPECT_EQ(f.Testo("E2"), "1");
  EXPECT_EQ(f.Testo("E3"), "0");
  EXPECT_FALSE(f.Ha("E4"));  // Null
  EXPECT_EQ(f.Righe(), 4);
  EXPECT_TRUE(f.nomi.empty());
  EXPECT_EQ(Chiesto(t), QStringList({"File creato con successo!|64"}));
  EXPECT_TRUE(t.LogLines("ModExcel", "ADOtoXLS").isEmpty());
  EXPECT_TRUE(t.LogLines("ModExcel", "CloseFileExcel").isEmpty());
}

// The system wrote "'" + "dd/mm/yyyy" so that the sheet keeps the date as a
// text: the apostrophe is the spreadsheet's mark of a text, not part of it.
// The cell holds the text of the date in the Text format ("@", built-in 49).
TEST(ADOtoXLS, DatesAreTextsOfTheDayInTheTextFormatWithoutTheApostrophe) {
  TestDb t;
  const QString file = t.Path() + "/date.xlsx";
  ADOtoXLS(file, Lavori());
  const Foglio f = LeggiFoglio(file);
  ASSERT_TRUE(f.letto);
  for (const char* rif : {"B2", "B4"}) {
    const Cella& c = f.celle.at(rif);
    EXPECT_TRUE(c.tipo == "inlineStr" || c.tipo == "s" || c.tipo == "str") << rif;
    EXPECT_EQ(f.StileDi(rif).numFmtId, 49) << rif;
  }
  EXPECT_EQ(f.Testo("B2"), "03/02/2025");
  EXPECT_EQ(f.Testo("B4"), "04/02/2025");  // the day alone, the time is not written
  // Any text that starts with an apostrophe is taken so, as the spreadsheet takes it.
  RecordsetPtr rs = Recordset::Create();
  rs->Append("Nota", adVarChar, 20);
  rs->Open();
  rs->AddNew();
  rs->SetValue(0, "'0012");
  rs->Update();
  ADOtoXLS(file, rs);
  const Foglio g = LeggiFoglio(file);
  EXPECT_EQ(g.Testo("A2"), "0012");
  EXPECT_EQ(g.StileDi("A2").numFmtId, 49);
}

// A date at Null or empty writes nothing to its cell; nor does an empty text.
TEST(ADOtoXLS, NullAndEmptyValuesLeaveTheirCellEmpty) {
  TestDb t;
  RecordsetPtr rs = Recordset::Create();
  rs->Append("Data", adDate);
  rs->Append("Variante", adVariant);
  rs->Append("Nota", adVarChar, 20);
  rs->Append("N", adInteger);
  rs->Open();
  rs->AddNew();  // a date never given
  rs->SetValue("N", 1);
  rs->Update();
  rs->AddNew();
  EXPECT_THROW(rs->SetValue("Data", ""), VbError);  // an empty date is no date: it stays Null
  rs->SetValue("Variante", "");
  rs->SetValue("Nota", "");
  rs->SetValue("N", 2);
  rs->Update();
  rs->AddNew();
  rs->SetValue("Data", D(2024, 12, 31));
  rs->SetValue("Variante", D(2024, 12, 31));
  rs->SetValue("Nota", "x");
  rs->SetValue("N", 3);
  rs->Update();
  const QString file = t.Path() + "/vuote.xlsx";
  ADOtoXLS(file, rs);
  const Foglio f = LeggiFoglio(file);
  ASSERT_TRUE(f.letto);
  for (const char* rif : {"A2", "B2", "C2", "A3", "B3", "C3"}) EXPECT_FALSE(f.Ha(rif)) << rif;
  EXPECT_EQ(f.Testo("D2"), "1");
  EXPECT_EQ(f.Testo("D3"), "2");
  EXPECT_EQ(f.Testo("A4"), "31/12/2024");
  // A date in a field that is not a date goes as it is: a date of the sheet.
  EXPECT_EQ(f.celle.at("B4").tipo, "");
  EXPECT_EQ(f.Testo("B4"), "45657");
  EXPECT_EQ(f.formati.at(f.StileDi("B4").numFmtId), "dd/mm/yyyy");
  // The CSV leaves the same places empty between its separators.
  ADOtoCSV(t.Path() + "/vuote.csv", rs);
  EXPECT_EQ(Leggi(t.Path() + "/vuote.csv"),
            QByteArray("\"Data\";\"Variante\";\"Nota\";\"N\"\r\n;;;1\r\n;;;2\r\n31/12/2024;31/12/2024;x;3\r\n"));
}

// The alignment by the field's type: texts left, numbers right, dates and
// truth values centred, all at the bottom and without wrapping. Titles keep
// the sheet's own.
TEST(ADOtoXLS, CellsAreAlignedByTheTypeOfTheirField) {
  TestDb t;
  const QString file = t.Path() + "/allineate.xlsx";
  ADOtoXLS(file, Lavori());
  const Foglio f = LeggiFoglio(file);
  ASSERT_TRUE(f.letto);
  const std::map<QString, QString> attese = {{"A2", "left"},   {"B2", "center"}, {"C2", "right"},
                                             {"D2", "right"},  {"E2", "center"}, {"C3", "right"},
                                             {"D4", "right"},  {"A4", "left"}};
  for (const auto& [rif, allinea] : attese) {
    EXPECT_EQ(f.StileDi(rif).orizzontale, allinea) << rif.toStdString();
    EXPECT_TRUE(f.StileDi(rif).verticale.isEmpty() || f.StileDi(rif).verticale == "bottom") << rif.toStdString();
    EXPECT_TRUE(f.StileDi(rif).aCapo.isEmpty() || f.StileDi(rif).aCapo == "0") << rif.toStdString();
  }
  for (const char* rif : {"A1", "B1", "C1"}) EXPECT_TRUE(f.StileDi(rif).orizzontale.isEmpty()) << rif;
  EXPECT_EQ(AllineamentoCampo(adBigInt), AllineaCella::Destra);
  EXPECT_EQ(AllineamentoCampo(adCurrency), AllineaCella::Destra);
  EXPECT_EQ(AllineamentoCampo(adVarWChar), AllineaCella::Sinistra);
  EXPECT_EQ(AllineamentoCampo(adVariant), AllineaCella::Generale);
}

TEST(ADOtoXLS, AHeadingSplitAtSemicolonsIsRowOne) {
  TestDb t;
  const QString file = t.Path() + "/titoli.xlsx";
  ADOtoXLS(file, Lavori(), {}, false, "Ragione sociale;Giorno;Tempo (min);Euro;Fatto");
  const Foglio f = LeggiFoglio(file);
  ASSERT_TRUE(f.letto);
  EXPECT_EQ(f.Testo("A1"), "Ragione sociale");
  EXPECT_EQ(f.Testo("B1"), "Giorno");
  EXPECT_EQ(f.Testo("C1"), "Tempo (min)");
  EXPECT_EQ(f.Testo("E1"), "Fatto");
  EXPECT_FALSE(f.Ha("F1"));
  EXPECT_EQ(f.Testo("A2"), "Officina Rossi");
  EXPECT_EQ(f.Righe(), 4);
}

// The range runs from R1C1 to the last row and field; an empty recordset
// gives the titles alone and a range of one row.
TEST(ADOtoXLS, TheNamedRangeCoversTitlesAndRows) {
  TestDb t;
  const QString file = t.Path() + "/nome.xlsx";
  ADOtoXLS(file, Lavori(), {}, false, {}, "Dati");
  Foglio f = LeggiFoglio(file);
  ASSERT_TRUE(f.letto);
  EXPECT_EQ(f.nomi, (std::map<QString, QString>{{"Dati", "Foglio1!$A$1:$E$4"}}));

  RecordsetPtr vuoto = Recordset::Create();
  vuoto->Append("Cliente", adVarChar, 50);
  vuoto->Append("Data", adDate);
  vuoto->Append("Ore", adDouble);
  vuoto->Open();
  ADOtoCSV(t.Path() + "/vuoto.XLSX", vuoto, {}, false, false, {}, "Vuoto");
  f = LeggiFoglio(t.Path() + "/vuoto.XLSX");
  ASSERT_TRUE(f.letto);
  EXPECT_EQ(f.nomi, (std::map<QString, QString>{{"Vuoto", "Foglio1!$A$1:$C$1"}}));
  EXPECT_EQ(f.Righe(), 1);
  EXPECT_EQ(f.Testo("C1"), "Ore");
  EXPECT_EQ(t.messages->asked.size(), 2u);
}

// A name the sheet refuses is logged; the sheet is written all the same.
TEST(ADOtoXLS, ANameTheSheetRefusesIsLoggedAndTheFileStillComesOut) {
  TestDb t;
  const QStringList rifiutati = {"Nome con spazi", "1abc", "A1", "xfd1048576", "R1C1", "rc", "C", "Dati-2025"};
  for (const QString& nome : rifiutati) {
    const QString file = t.Path() + "/male.xlsx";
    ADOtoXLS(file, Lavori(), {}, false, {}, nome);
    const Foglio f = LeggiFoglio(file);
    ASSERT_TRUE(f.letto) << nome.toStdString();
    EXPECT_TRUE(f.nomi.empty()) << nome.toStdString();
    EXPECT_EQ(f.Righe(), 4);
  }
  const QStringList log = t.LogLines("ModExcel", "ADOtoXLS");
  ASSERT_EQ(log.size(), rifiutati.size());
  EXPECT_TRUE(log[0].endsWith("ADOtoXLS: The name that you entered is not valid: Nome con spazi (1004)"))
      << log[0].toStdString();
  EXPECT_EQ(t.messages->asked.size(), static_cast<size_t>(rifiutati.size()));
  // Names beyond the sheet's cells, and the other signs a name may hold, are names.
  for (const QString& nome : {QString("XFE1"), QString("_Dati.2025"), QString("\\Tempi"), QString::fromUtf8("Città")}) {
    const QString file = t.Path() + "/bene.xlsx";
    ADOtoXLS(file, Lavori(), {}, false, {}, nome);
    EXPECT_EQ(LeggiFoglio(file).nomi, (std::map<QString, QString>{{nome, "Foglio1!$A$1:$E$4"}})) << nome.toStdString();
  }
  EXPECT_EQ(t.LogLines("ModExcel", "ADOtoXLS").size(), rifiutati.size());
}

TEST(ADOtoXLS, AFilterIsLiftedForTheExportAndPutBackWithTheProgressOverEveryRow) {
  TestDb t;
  RecordsetPtr rs = Lavori();
  rs->SetFilter("Chiuso = True");
  ASSERT_EQ(rs->RecordCount(), 1);
  std::vector<std::pair<int, int>> passi;
  const QString file = t.Path() + "/filtro.xlsx";
  ADOtoXLS(file, rs, [&](int v, int m) { passi.emplace_back(v, m); }, false, {}, "Tutto");
  const Foglio f = LeggiFoglio(file);
  ASSERT_TRUE(f.letto);
  EXPECT_EQ(f.Righe(), 4);
  EXPECT_EQ(f.Testo("A3"), "Zincatura; Bianchi");
  EXPECT_EQ(f.nomi.at("Tutto"), "Foglio1!$A$1:$E$4");
  EXPECT_EQ(rs->Filter(), "Chiuso = True");
  EXPECT_EQ(rs->RecordCount(), 1);
  EXPECT_EQ(passi, (std::vector<std::pair<int, int>>{{0, 3}, {1, 3}, {2, 3}, {3, 3}}));
}

// Each field's column is as wide as its widest text, title included, as the
// sheet shows it: a date without the apostrophe, a number in the 11 places of
// the General format, a truth value in capitals. A column with no text keeps
// the sheet's width, and so do columns beyond the fields.
TEST(ADOtoXLS, EachColumnIsFittedToItsWidestText) {
  TestDb t;
  RecordsetPtr rs = Recordset::Create();
  rs->Append("Cliente", adVarChar, 100);
  rs->Append("Data", adDate);
  rs->Append("Rapporto", adDouble);
  rs->Append("Chiuso", adBoolean);
  rs->Append("Vuoto", adVarChar, 10);
  rs->Append("Minuti", adBigInt);
  rs->Open();
  const auto riga = [&](const QString& c, double r, bool x, qlonglong m) {
    rs->AddNew();
    rs->SetValue("Cliente", c);
    rs->SetValue("Data", D(2025, 11, 28));
    rs->SetValue("Rapporto", r);
    rs->SetValue("Chiuso", x);
    rs->SetValue("Minuti", m);
    rs->Update();
  };
  riga("Bianchi", 2, true, 5);
  riga("Officina Meccanica Rossi & Figli", 1.0 / 3, false, -1234567);
  riga("Wu", 10, true, 0);
  const QString file = t.Path() + "/larghe.xlsx";
  ADOtoXLS(file, rs, {}, false, "Cliente;Data;R;Chiuso;;Minuti lavorati;Oltre");
  const Foglio f = LeggiFoglio(file);
  ASSERT_TRUE(f.letto);
  const double cliente = LarghezzaAttesa("Officina Meccanica Rossi & Figli");
  EXPECT_DOUBLE_EQ(f.larghezze.at(1), cliente);
  EXPECT_DOUBLE_EQ(f.larghezze.at(2), LarghezzaAttesa("28/11/2025"));
  EXPECT_DOUBLE_EQ(f.larghezze.at(3), LarghezzaAttesa("0,333333333"));
  EXPECT_DOUBLE_EQ(f.larghezze.at(4), LarghezzaAttesa(PxFoglio("FALSO") > PxFoglio("Chiuso") ? "FALSO" : "Chiuso"));
  EXPECT_EQ(f.larghezze.count(5), 0u);  // an empty title and no values: nothing to fit
  EXPECT_DOUBLE_EQ(f.larghezze.at(6), LarghezzaAttesa("Minuti lavorati"));
  EXPECT_EQ(f.larghezze.count(7), 0u);  // a title past the fields is not fitted
  EXPECT_GT(cliente, f.larghezze.at(2));
  // The widest column of the sheet is 255 characters.
  RecordsetPtr lungo = Recordset::Create();
  lungo->Append("Nota", adVarChar, 5000);
  lungo->Open();
  lungo->AddNew();
  lungo->SetValue(0, QString(1000, QLatin1Char('W')));
  lungo->Update();
  ADOtoXLS(t.Path() + "/lungo.xlsx", lungo);
  EXPECT_DOUBLE_EQ(LeggiFoglio(t.Path() + "/lungo.xlsx").larghezze.at(1), LarghezzaAttesa(QString(1000, 'W')));
  EXPECT_DOUBLE_EQ(LarghezzaAttesa(QString(1000, 'W')), 65462.0 / 256);  // 1790 px
}

// An older file of that name gives way; a path that cannot be written is
// logged by the closing of the workbook, and leaves neither the file nor the
// workbook's work files behind.
TEST(ADOtoXLS, AnOlderFileGivesWayAndAPathThatCannotBeWrittenLeavesNothing) {
  TestDb t;
  const QString file = t.Path() + "/vecchio.xlsx";
  ASSERT_TRUE(Scrivi(file, "non un foglio"));
  ADOtoXLS(file, Lavori());
  EXPECT_TRUE(Zip(file));
  EXPECT_EQ(LeggiFoglio(file).Righe(), 4);

  const QStringList prima = FileDi(t.Path());
  t.messages->asked.clear();
  RecordsetPtr rs = Lavori();
  rs->SetFilter("Minuti > 0");
  ADOtoCSV(t.Path() + "/manca/x.XLSX", rs);
  EXPECT_FALSE(QFileInfo::exists(t.Path() + "/manca"));
  QStringList log = t.LogLines("ModExcel", "CloseFileExcel");
  ASSERT_EQ(log.size(), 1);
  EXPECT_TRUE(log[0].contains("CloseFileExcel: Path not found")) << log[0].toStdString();
  EXPECT_TRUE(log[0].endsWith("(76)")) << log[0].toStdString();
  EXPECT_EQ(rs->Filter(), "Minuti > 0");
  EXPECT_TRUE(t.messages->asked.empty());

  // A name that is a folder: it can't be deleted nor written over.
  const QString cartella = t.Path() + "/cartella.xlsx";
  ASSERT_TRUE(QDir().mkdir(cartella));
  ADOtoXLS(cartella, Lavori());
  EXPECT_TRUE(QFileInfo(cartella).isDir());
  EXPECT_EQ(t.LogLines("ModExcel", "ADOtoXLS").size(), 1);
  EXPECT_EQ(t.LogLines("ModExcel", "CloseFileExcel").size(), 2);
  QStringList dopo = FileDi(t.Path());
  EXPECT_EQ(dopo, prima);  // no work file left beside them
  EXPECT_TRUE(t.messages->asked.empty());
}

// ================================================================ word wrap

TEST(SpezzaTesto, LinesFitTheWidthBreakAtBlanksAndAtCrLf) {
  Documento doc;
  Documento metro;
  metro.Font("Arial", 8);
  QStringList righe;
  const QString testo = "Officina meccanica di precisione Rossi Giovanni & Figli S.n.c.";
  SpezzaTesto(doc, testo, righe, 3.0, "Arial", false, false, 8);
  ASSERT_GE(righe.size(), 2);
  EXPECT_EQ(righe.join(' '), testo);  // nothing lost, broken at blanks
  for (const QString& r : righe) EXPECT_LE(metro.LarghezzaTesto(r), 3.0) << r.toStdString();
  // Each line takes as many words as fit: the next word would not.
  for (int i = 0; i + 1 < righe.size(); ++i)
    EXPECT_GT(metro.LarghezzaTesto(righe[i] + ' ' + righe[i + 1].section(' ', 0, 0)), 3.0);
  // An empty font name is Arial; the size 0 is the document's current one.
  doc.Font("Arial", 8);
  QStringList stesse;
  SpezzaTesto(doc, testo, stesse, 3.0);
  EXPECT_EQ(stesse, righe);
  // CR LF starts a new line, or turns into a blank.
  SpezzaTesto(doc, "Prima riga\r\nSeconda", righe, 10, "Arial", false, false, 8);
  EXPECT_EQ(righe, QStringList({"Prima riga", "Seconda"}));
  SpezzaTesto(doc, "Prima riga\r\nSeconda", righe, 10, "Arial", false, false, 8, true);
  EXPECT_EQ(righe, QStringList({"Prima riga Seconda"}));
  // No width is the page's width.
  SpezzaTesto(doc, testo, righe, 0, "Arial", false, false, 8);
  EXPECT_EQ(righe, QStringList({testo}));
  SpezzaTesto(doc, "", righe, 3, "Arial", false, false, 8);
  EXPECT_EQ(righe, QStringList({""}));
}

TEST(SpezzaTesto, AWordWiderThanTheLineIsCutCharacterByCharacter) {
  Documento doc;
  Documento metro;
  metro.Font("Arial", 10, true);
  QStringList righe;
  const QString parola = "Precipitevolissimevolmente";
  SpezzaTesto(doc, "Da " + parola, righe, 1.5, "", true, false, 10);
  ASSERT_GE(righe.size(), 3);
  EXPECT_EQ(righe[0], "Da");
  EXPECT_EQ(righe.mid(1).join(""), parola);
  for (int i = 1; i < righe.size(); ++i) {
    EXPECT_LE(metro.LarghezzaTesto(righe[i]), 1.5);
    if (i + 1 < righe.size()) {
      EXPECT_GT(metro.LarghezzaTesto(righe[i] + righe[i + 1][0]), 1.5);
    }
  }
  // Bold is measured bold: wider than the same text upright.
  QStringList chiare;
  SpezzaTesto(doc, "Da " + parola, chiare, 1.5, "", false, false, 10);
  EXPECT_LE(chiare.size(), righe.size());
  EXPECT_GE(chiare[1].size(), righe[1].size());
}

// ================================================================ the report of the time per disposition

namespace {

// Three customers' models; dispositions with time, one of 6005 minutes, and
// one without any.
void Prestazioni(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1) VALUES (1, 1, 'Zincatura Bianchi'), "
         "(1, 2, 'Officina meccanica di precisione Alfa Rossi Giovanni & Figli'), (1, 3, 'Carpenteria Verdi')");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo) VALUES (1, 'Oraria'), (2, 'Forfait')");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500001, 'Coperchio pompa', 1, 1, 1, '2025-01-10 00:00:00', 0), "
         "(202500002, 'Stampo pompa', 1, 1, 2, '2025-01-11 00:00:00', 0), "
         "(202500003, 'Telaio', 1, 1, 3, '2025-01-12 00:00:00', 0)");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
         "(202500001, 1, 'Zincatura a caldo', 2, '2025-01-11 00:00:00', 1250, 0), "
         "(202500002, 1, 'Ripristino della matrice e lucidatura a specchio delle impronte', 1, "
         "'2025-01-12 00:00:00', 2, 0), "
         "(202500002, 2, 'Collaudo', 1, '2025-01-13 00:00:00', 1, 0), "
         "(202500003, 1, 'Saldatura', 1, '2025-01-14 00:00:00', 0, 0)");
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd) VALUES "
         "(202500001, 202500001, 1, 1, 1, '2025-02-03 08:00:00', '2025-02-07 12:05:00'), "
         "(202500002, 202500002, 1, 1, 1, '2025-02-04 10:00:00', '2025-02-04 11:15:00'), "
         "(202500003, 202500003, 1, 1, 1, '2025-02-05 10:00:00', '2025-02-05 10:30:00')");
}

const QList<int> kTutti = {202500001, 202500002, 202500003};

struct StampanteProva : Stampante {
  bool Stampa(const Documento& d) override {
    stampati.push_back(d);
    return true;
  }
  std::vector<Documento> stampati;
};

QStringList TestiPagina(const Documento& d, int pagina) {
  QStringList out;
  for (const auto& x : d.Testi(pagina)) out << x.testo;
  return out;
}

double YDi(const Documento& d, int pagina, const QString& testo) {
  for (const auto& x : d.Testi(pagina))
    if (x.testo == testo) return x.y;
  return -1;
}

QString PdfInTesto(const QString& pdf) {
  QProcess p;
  p.start(QStringLiteral("pdftotext"), {"-layout", pdf, "-"});
  if (!p.waitForFinished(60000) || p.exitCode() != 0) return {};
  return QString::fromUtf8(p.readAllStandardOutput());
}

// A message service that keeps the filter of the save dialog.
class MessaggiConFiltro : public ScriptedMessages {
 public:
  QString filtro;
  QString SaveFileName(const QString& title, const QString& f, const QString& dir) override {
    filtro = f;
    return ScriptedMessages::SaveFileName(title, f, dir);
  }
};

}  // namespace

// With no line checked in the register both methods say so, and do nothing else.
TEST(RepPrestazioni, NoCheckedModelSaysNessunRecordTrovatoForBothMethods) {
  TestDb t;
  Prestazioni(t);
  StampanteProva s;
  std::vector<bool> abilita;
  RepPrestazioni({}, s, [&](bool a) { abilita.push_back(a); });
  EXPECT_TRUE(s.stampati.empty());
  EXPECT_TRUE(abilita.empty());
  ExpPrestazioni({});
  EXPECT_EQ(Chiesto(t), QStringList({"Nessun record trovato|48", "Nessun record trovato|48"}));
  // A model without recorded time is no row either.
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500009, 'Senza tempo', 1, 1, 1, '2025-01-10 00:00:00', 0)");
  RepPrestazioni({202500009}, s);
  EXPECT_TRUE(s.stampati.empty());
  EXPECT_EQ(t.messages->asked.size(), 3u);
  EXPECT_TRUE(FileDi(t.Path()).filter(".csv").isEmpty());
}

// Tempo shows hours and minutes with no upper bound: 6005 minutes are "100:05".
TEST(RepPrestazioni, OnPaperSortedByCustomerModelAndDispositionWith6005MinutesAs100h05) {
  TestDb t;
  Prestazioni(t);
  const QString pdf = t.Path() + "/prestazioni.pdf";
  // The host's form waits while the report is made, and is back before the preview shows.
  struct Pdf : StampantePdf {
    using StampantePdf::StampantePdf;
    bool Stampa(const Documento& d) override {
      passi->push_back("stampa");
      return StampantePdf::Stampa(d);
    }
    std::vector<std::string>* passi = nullptr;
  } stampante(pdf);
  std::vector<std::string> passi;
  stampante.passi = &passi;
  RepPrestazioni(kTutti, stampante, [&](bool a) { passi.push_back(a ? "abilita" : "disabilita"); });
  EXPECT_EQ(passi, (std::vector<std::string>{"disabilita", "abilita", "stampa"}));
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_TRUE(t.LogLines("OCPrestKT", "RepPrestazioni").isEmpty());
  const QString testo = PdfInTesto(pdf);
  ASSERT_FALSE(testo.isEmpty()) << "pdftotext";
  for (const char* atteso : {"Report prestazioni", "Ragione Sociale", "Modello", "Tipo Modello", "Disposizione",
                             "Tipo Disp.", "Tempo", "Minuti", "Dt Fine", "Qta"})
    EXPECT_TRUE(testo.contains(atteso)) << atteso;
  // One row a disposition, by customer: Carpenteria, Officina, Zincatura.
  const auto riga = [&](const QString& inizio) {
    for (const QString& l : testo.split('\n'))
      if (l.trimmed().startsWith(inizio)) return l.simplified();
    return QString();
  };
  EXPECT_EQ(riga("Carpenteria"), "Carpenteria Verdi Telaio Stampo Saldatura Oraria 00:30 30 05/02/2025 0");
  EXPECT_EQ(riga("Zincatura Bianchi"),
            "Zincatura Bianchi Coperchio pompa Stampo Zincatura a caldo Forfait 100:05 6.005 07/02/2025 1.250");
  EXPECT_FALSE(testo.contains("100:05:00"));
  // "Officina" is set with its ligature: the lines of the wrapped customer are found by their other words.
  EXPECT_LT(testo.indexOf("Carpenteria"), testo.indexOf("di precisione Alfa")) << testo.toStdString();
  EXPECT_LT(testo.indexOf("di precisione Alfa"), testo.indexOf("Rossi Giovanni &"));
  EXPECT_LT(testo.indexOf("Rossi Giovanni &"), testo.indexOf("Zincatura Bianchi"));
  EXPECT_FALSE(testo.contains("Collaudo"));  // no time recorded on it
}

// The long texts wrap in their columns, and the next row starts under the
// tallest of them.
TEST(RepPrestazioni, LongTextsWrapAndTheNextRowStartsUnderTheTallestCell) {
  TestDb t;
  Prestazioni(t);
  StampanteProva s;
  RepPrestazioni(kTutti, s);
  ASSERT_EQ(s.stampati.size(), 1u);
  const Documento& d = s.stampati[0];
  EXPECT_EQ(d.Titolo(), "Report prestazioni");
  EXPECT_EQ(d.Pagine(), 1);
  const QStringList testi = TestiPagina(d, 0);
  EXPECT_EQ(testi.mid(0, 10), QStringList({"Report prestazioni", "Ragione Sociale", "Modello", "Tipo Modello",
                                           "Disposizione", "Tipo Disp.", "Tempo", "Minuti", "Dt Fine", "Qta"}));
  // The customer of the second row runs over lines of the column, each within it.
  Documento metro;
  metro.Font("Arial", 8);
  const double yPrima = YDi(d, 0, "Carpenteria Verdi"), yTerza = YDi(d, 0, "Zincatura Bianchi");
  ASSERT_GT(yPrima, 2.0);
  ASSERT_GT(yTerza, yPrima);
  QStringList ragSoc, disposizione;
  double y0 = 0;
  for (const auto& x : d.Testi(0)) {
    if (x.y <= yPrima + 1e-9 || x.y >= yTerza) continue;
    if (x.x == 1.0) {
      if (ragSoc.isEmpty()) y0 = x.y;
      ragSoc << x.testo;
    }
    if (x.x == 9.55) disposizione << x.testo;
  }
  ASSERT_GE(ragSoc.size(), 3);
  EXPECT_EQ(ragSoc.join(' '), "Officina meccanica di precisione Alfa Rossi Giovanni & Figli");
  EXPECT_GE(disposizione.size(), 3);
  EXPECT_EQ(disposizione.join(' '), "Ripristino della matrice e lucidatura a specchio delle impronte");
  for (const QString& r : ragSoc) EXPECT_LE(metro.LarghezzaTesto(r), 2.9);
  for (const QString& r : disposizione) EXPECT_LE(metro.LarghezzaTesto(r), 2.7);
  const double linea = metro.AltezzaRiga();
  const qsizetype alte = std::max(ragSoc.size(), disposizione.size());
  EXPECT_NEAR(yTerza - y0, alte * linea + 0.1, 1e-9);
  // The row of a single line moves down by one line.
  EXPECT_NEAR(y0 - yPrima, linea + 0.1, 1e-9);
  EXPECT_TRUE(testi.contains("01:15"));
  EXPECT_TRUE(testi.contains("75"));
  EXPECT_TRUE(testi.contains("2"));
}

// A row that would pass the foot of the page goes to a new one, under the head again.
TEST(RepPrestazioni, ManyRowsRunOnPagesEachWithItsHead) {
  TestDb t;
  Prestazioni(t);
  for (int k = 10; k < 90; ++k) {
    t.Exec(QString("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
                   "(202500003, %1, 'Fase %1', 1, '2025-01-14 00:00:00', 1, 0)")
               .arg(k));
    t.Exec(QString("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd) "
                   "VALUES (%1, 202500003, %2, 1, 1, '2025-03-01 08:00:00', '2025-03-01 09:00:00')")
               .arg(202500100 + k)
               .arg(k));
  }
  StampanteProva s;
  RepPrestazioni(kTutti, s);
  ASSERT_EQ(s.stampati.size(), 1u);
  const Documento& d = s.stampati[0];
  ASSERT_EQ(d.Pagine(), 2);
  int righe = 0;
  for (int p = 0; p < 2; ++p) {
    const QStringList testi = TestiPagina(d, p);
    EXPECT_EQ(testi.mid(0, 10), QStringList({"Report prestazioni", "Ragione Sociale", "Modello", "Tipo Modello",
                                             "Disposizione", "Tipo Disp.", "Tempo", "Minuti", "Dt Fine", "Qta"}))
        << p;
    Documento metro;
    metro.Font("Arial", 8);
    for (const auto& x : d.Testi(p)) {
      EXPECT_LE(x.y + metro.AltezzaRiga(), 28.0 + 1e-9) << x.testo.toStdString();
      if (x.testo.startsWith("Fase ")) ++righe;
    }
  }
  EXPECT_EQ(righe, 80);
  // The rows of the model go by disposition's name: "Fase 10" .. "Fase 89", then "Saldatura".
  const QStringList seconda = TestiPagina(d, 1);
  EXPECT_TRUE(seconda.contains("Saldatura"));
  EXPECT_TRUE(seconda.contains("Zincatura Bianchi"));
}

// ================================================================ the export of the same data

TEST(ExpPrestazioni, ToASheetWithTheFieldsOfTheDataAndTheDayAsText) {
  TestDb t;
  Prestazioni(t);
  auto messaggi = std::make_shared<MessaggiConFiltro>();
  SetMessageService(messaggi);
  const QString file = t.Path() + "/prestazioni.xlsx";
  messaggi->files.push_back(file);
  ExpPrestazioni(kTutti);
  EXPECT_EQ(messaggi->filtro, "File xls 2007(*.xlsx)|*.xlsx|File csv (*.csv)|*.csv");
  ASSERT_EQ(messaggi->asked.size(), 2u);
  EXPECT_EQ(messaggi->asked[1].prompt, "File creato con successo!");
  const Foglio f = LeggiFoglio(file);
  ASSERT_TRUE(f.letto);
  const QStringList titoli = {"CProject", "CDisp", "RagSoc", "Modello", "TipoMod", "Disposizione",
                              "TipoDisp", "Tempo", "Minuti", "DataMax", "Qta"};
  for (int c = 0; c < titoli.size(); ++c)
    EXPECT_EQ(f.Testo(QString(QChar('A' + c)) + "1"), titoli[c]);
  EXPECT_EQ(f.Righe(), 4);  // three dispositions with time
  // The rows in the order of the data: the models in the order given.
  EXPECT_EQ(f.Testo("A2"), "202500001");
  EXPECT_EQ(f.Testo("H2"), "100:05:00");
  EXPECT_EQ(f.Testo("I2"), "6005");
  EXPECT_EQ(f.Testo("J2"), "07/02/2025");
  EXPECT_EQ(f.StileDi("J2").numFmtId, 49);
  EXPECT_EQ(f.Testo("K2"), "1250");
  EXPECT_EQ(f.Testo("K4"), "0");
  EXPECT_EQ(f.StileDi("K4").orizzontale, "right");
  EXPECT_TRUE(f.nomi.empty());
}

TEST(ExpPrestazioni, ToACsvWhenNamedSoAndOverOldExcelTheOldFilter) {
  TestDb t;
  Prestazioni(t);
  ImpostaVersioniOffice(11, 11);
  auto messaggi = std::make_shared<MessaggiConFiltro>();
  SetMessageService(messaggi);
  const QString file = t.Path() + "/prestazioni.csv";
  messaggi->files.push_back(file);
  ExpPrestazioni({202500003});
  ImpostaVersioniOffice(0, 0);
  EXPECT_EQ(messaggi->filtro, "File xls (*.xls)|*.xls|File csv (*.csv)|*.csv");
  EXPECT_EQ(Leggi(file), QByteArray("\"CProject\";\"CDisp\";\"RagSoc\";\"Modello\";\"TipoMod\";\"Disposizione\";"
                                    "\"TipoDisp\";\"Tempo\";\"Minuti\";\"DataMax\";\"Qta\"\r\n"
                                    "202500003;1;Carpenteria Verdi;Telaio;Stampo;Saldatura;Oraria;00:30:00;30;"
                                    "05/02/2025;0\r\n"));
}

// Cancelling the dialog ends the method; an existing file is asked about,
// with No as the default, and only a Yes replaces it.
TEST(ExpPrestazioni, CancelEndsAndAnExistingFileIsReplacedOnlyOnYes) {
  TestDb t;
  Prestazioni(t);
  ExpPrestazioni(kTutti);  // no file chosen
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].buttons, -2);
  EXPECT_TRUE(FileDi(t.Path()).filter(".csv").isEmpty());

  const QString file = t.Path() + "/c'era.csv";
  ASSERT_TRUE(Scrivi(file, "vecchio"));
  t.messages->asked.clear();
  t.messages->files.push_back(file);  // the default answer: No
  ExpPrestazioni(kTutti);
  EXPECT_EQ(Chiesto(t), QStringList({"|-2", QString::fromUtf8("Il file esiste già. Vuoi sovrascriverlo?|292")}));
  EXPECT_EQ(Leggi(file), "vecchio");

  t.messages->asked.clear();
  t.messages->files.push_back(file);
  t.messages->answers.push_back(vbYes);
  ExpPrestazioni(kTutti);
  EXPECT_EQ(Chiesto(t), QStringList({"|-2", QString::fromUtf8("Il file esiste già. Vuoi sovrascriverlo?|292"),
                                     "File creato con successo!|64"}));
  EXPECT_EQ(Linee(Leggi(file)).size(), 4);
  EXPECT_TRUE(t.LogLines("OCPrestKT", "ExpPrestazioni").isEmpty());
}
