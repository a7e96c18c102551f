// The flat table of a period for a spreadsheet: operators' activities and
// suppliers' delivery lines, the filters that shape it, and the export that
// writes it and opens the file.
#include <gtest/gtest.h>

#include <QFile>
#include <QUrl>

#include "ModExcel.h"
#include "LettoreXlsx.h"
#include "ModIcon.h"
#include "ProcedureUi.h"
#include "TestSupport.h"
#include "frmRepExcel.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

// Customers of type 1 and a party of another type, two operators and one whose
// party is gone, a model of each customer, service kinds, a supplier.
void Base(TestDb& t) {
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH) VALUES (1, 1, 'Officina Rossi', 0), "
         "(1, 2, 'Bianchi Stampi', 0), (3, 1, 'Agente Verdi', 0), (2, 1, 'Zincatura Lombarda', 0), "
         "(10, 1, 'Mario Verdi', 21.5), (10, 2, 'Luca Neri', 18)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (1, 'Oraria', 1)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Bool8) VALUES (12, 1, 'Saldatura', 0), "
         "(12, 2, 'Tornitura', 0), (1, 1, 'C/Lavorazione', -1)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202600001, 'Pompa', 1, 1, 1, '2026-01-10 00:00:00'), (202600002, 'Coperchio', 1, 1, 2, '2026-01-10 00:00:00'), "
         "(202600003, 'Provvigioni', 1, 3, 1, '2026-01-10 00:00:00')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) VALUES "
         "(202600001, 1, 1, 'Serie A', '2026-01-11 00:00:00', 1, 0), (202600002, 1, 1, 'Unica', '2026-01-11 00:00:00', 1, 0), "
         "(202600003, 1, 1, 'Altra', '2026-01-11 00:00:00', 1, 0)");
}

void Attivita(TestDb& t, int codice, int cProject, int operatore, int prestazione, const char* inizio, const char* fine) {
  t.Exec(QStringLiteral("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd, "
                        "CostoH) VALUES (%1, %2, 1, %3, %4, '%5', %6, 99)")
             .arg(codice)
             .arg(cProject)
             .arg(operatore)
             .arg(prestazione)
             .arg(QString::fromLatin1(inizio))
             .arg(fine ? QStringLiteral("'%1'").arg(QString::fromLatin1(fine)) : QStringLiteral("NULL")));
}

// A supplier order (12) of one line tied to the model, and deliveries against it.
void Ordine(TestDb& t, int nDoc, const char* data, int cProject, const char* nota) {
  t.Exec(QStringLiteral("INSERT INTO DocForn (TipoDoc, NDoc, Data, TAnag, CAnag) VALUES (12, %1, '%2', 2, 1)")
             .arg(nDoc)
             .arg(QString::fromLatin1(data)));
  t.Exec(QStringLiteral("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus) VALUES "
                        "(12, %1, 0, 1, 10, 3.5, 1)")
             .arg(nDoc));
  t.Exec(QStringLiteral("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, Importo, "
                        "NotaArt) VALUES (12, %1, 0, 1, 1, %2, 1, 10, 3.5, %3)")
             .arg(nDoc)
             .arg(cProject)
             .arg(nota ? QStringLiteral("'%1'").arg(QString::fromLatin1(nota)) : QStringLiteral("NULL")));
}
void Consegna(TestDb& t, int nDoc, const char* data, int nOrdine, double qta, double importo) {
  t.Exec(QStringLiteral("INSERT INTO DocForn (TipoDoc, NDoc, Data, TAnag, CAnag) VALUES (15, %1, '%2', 2, 1)")
             .arg(nDoc)
             .arg(QString::fromLatin1(data)));
  t.Exec(QStringLiteral("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus, TipoDocRif, NDocRif, "
                        "RigaRif) VALUES (15, %1, 0, 1, %2, %3, 1, 12, %4, 1)")
             .arg(nDoc)
             .arg(qta, 0, 'g', 17)
             .arg(importo, 0, 'g', 17)
             .arg(nOrdine));
}

// The rows of the table as texts "TipoPrest|Cliente|Operatore|Fornitore|Lavorazione|Minuti|CostoH|QtaExt|CostoLavExt|Data".
QStringList Righe(const RecordsetPtr& rs) {
  QStringList r;
  for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
    QStringList c;
    for (const char* f : {"TipoPrest", "Cliente", "Operatore", "Fornitore", "Lavorazione", "Minuti", "CostoH", "QtaExt",
                          "CostoLavExt"})
      c << rs->Value(QString::fromLatin1(f)).toString();
    c << CDate(rs->Value(QStringLiteral("Data"))).toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    r << c.join(QLatin1Char('|'));
  }
  return r;
}

const QDate kDal(2026, 11, 1), kAl(2026, 11, 30);

}  // namespace

TEST(frmRepExcel, TheTableHasItsColumnsInOrder) {
  TestDb t;
  Base(t);
  RecordsetPtr rs = frmRepExcel::CreaTabella(kDal, kAl, 0, 1, 0);
  const QStringList attese = {"Cliente", "Data", "Modello", "TipoMod", "Disposizione", "TipoDisp", "TipoPrest",
                              "Operatore", "Fornitore", "Lavorazione", "Minuti", "CostoH", "QtaExt", "CostoLavExt"};
  ASSERT_EQ(rs->FieldCount(), attese.size());
  for (int i = 0; i < attese.size(); ++i) EXPECT_EQ(rs->FieldInfo(i).Name, attese[i]);
  EXPECT_EQ(rs->FieldInfo(1).Type, adDate);
  EXPECT_EQ(rs->FieldInfo(6).DefinedSize, 3);
  EXPECT_EQ(rs->RecordCount(), 0);
}

// The first day counts from midnight; the last day counts at midnight only:
// an activity later that day is out. Only the party type 1 comes in.
TEST(frmRepExcel, InternalRowsOfThePeriodAndOfThePartyType) {
  TestDb t;
  Base(t);
  Attivita(t, 202600001, 202600001, 1, 1, "2026-10-31 23:59:00", "2026-11-01 00:30:00");
  Attivita(t, 202600002, 202600001, 1, 1, "2026-11-01 00:00:00", "2026-11-01 01:30:00");
  Attivita(t, 202600003, 202600002, 2, 2, "2026-11-30 00:00:00", "2026-11-30 00:45:00");
  Attivita(t, 202600004, 202600002, 2, 2, "2026-11-30 08:00:00", "2026-11-30 09:00:00");
  Attivita(t, 202600005, 202600003, 1, 1, "2026-11-10 00:00:00", "2026-11-10 01:00:00");  // party type 3
  RecordsetPtr rs = frmRepExcel::CreaTabella(kDal, kAl, 0, 1, 0);
  // CostoH is the operator's hourly cost now, not the 99 stored on the activity.
  EXPECT_EQ(Righe(rs), QStringList({"INT|Officina Rossi|Mario Verdi|Interno|Saldatura|90|21.5|0|0|2026-11-01 00:00",
                                    "INT|Bianchi Stampi|Luca Neri|Interno|Tornitura|45|18|0|0|2026-11-30 00:00"}));
  rs->MoveFirst();
  EXPECT_EQ(rs->Value("Modello").toString(), "Pompa");
  EXPECT_EQ(rs->Value("TipoMod").toString(), "Stampo");
  EXPECT_EQ(rs->Value("TipoDisp").toString(), "Oraria");
  EXPECT_TRUE(IsNull(rs->Value("Disposizione")));
}

TEST(frmRepExcel, ACustomerChosenKeepsItsRowsOnly) {
  TestDb t;
  Base(t);
  Attivita(t, 202600001, 202600001, 1, 1, "2026-11-02 00:00:00", "2026-11-02 01:00:00");
  Attivita(t, 202600002, 202600002, 2, 2, "2026-11-03 00:00:00", "2026-11-03 01:00:00");
  Ordine(t, 1, "2026-10-20 00:00:00", 202600001, "Zincatura");
  Consegna(t, 2, "2026-11-05 00:00:00", 1, 4, 3.5);
  RecordsetPtr rs = frmRepExcel::CreaTabella(kDal, kAl, 0, 1, 2);
  ASSERT_EQ(rs->RecordCount(), 1);
  EXPECT_EQ(rs->Value("Cliente").toString(), "Bianchi Stampi");
}

// An operator's party that no longer exists leaves Operatore empty; a
// running activity has no minutes.
TEST(frmRepExcel, ADeletedOperatorLeavesItsNameEmpty) {
  TestDb t;
  Base(t);
  Attivita(t, 202600001, 202600001, 7, 1, "2026-11-02 00:00:00", "2026-11-02 01:00:00");
  Attivita(t, 202600002, 202600001, 1, 2, "2026-11-03 00:00:00", nullptr);
  RecordsetPtr rs = frmRepExcel::CreaTabella(kDal, kAl, 0, 1, 0);
  ASSERT_EQ(rs->RecordCount(), 2);
  rs->MoveFirst();
  EXPECT_EQ(rs->Value("Operatore").toString(), "");
  EXPECT_EQ(rs->Value("Minuti").toLongLong(), 60);
  rs->MoveNext();
  EXPECT_EQ(rs->Value("Operatore").toString(), "Mario Verdi");
  EXPECT_TRUE(IsNull(rs->Value("Minuti")));
  EXPECT_EQ(t.LogLines("frmRepExcel", "CaricaDati").size(), 1);
}

// A delivery in the period against an order up to 365 days older than its
// start: one row each, with the delivered quantity and the delivery line's
// amount; an order one day older is out of reach, and a delivery on the last
// day is in, since a document has no time.
TEST(frmRepExcel, ExternalRowsAreTheDeliveriesOfThePeriod) {
  TestDb t;
  Base(t);
  Ordine(t, 1, "2025-11-01 00:00:00", 202600001, "Zincatura");  // exactly 365 days before
  Ordine(t, 2, "2025-10-31 00:00:00", 202600001, "Cromatura");  // 366
  Ordine(t, 3, "2026-11-02 00:00:00", 202600002, nullptr);
  Consegna(t, 11, "2026-11-30 00:00:00", 1, 4, 3.123456);  // part of the 10 ordered
  Consegna(t, 12, "2026-11-10 00:00:00", 2, 5, 3.5);
  Consegna(t, 13, "2026-12-01 00:00:00", 3, 1, 3.5);       // after the period
  Consegna(t, 14, "2026-11-15 00:00:00", 3, 2.345, 7);  // a tie: to the even hundredth, 2.34
  RecordsetPtr rs = frmRepExcel::CreaTabella(kDal, kAl, 0, 1, 0);
  // Orders by their date: order 1, then order 3.
  EXPECT_EQ(Righe(rs),
            QStringList({"EXT|Officina Rossi|Fornitore|Zincatura Lombarda|Zincatura|0|0|4|3.12346|2026-11-30 00:00",
                         "EXT|Bianchi Stampi|Fornitore|Zincatura Lombarda||0|0|2.34|7|2026-11-15 00:00"}));
}

TEST(frmRepExcel, AnOperatorChosenDropsTheExternalRows) {
  TestDb t;
  Base(t);
  Attivita(t, 202600001, 202600001, 1, 1, "2026-11-02 00:00:00", "2026-11-02 01:00:00");
  Attivita(t, 202600002, 202600001, 2, 1, "2026-11-02 00:00:00", "2026-11-02 02:00:00");
  Ordine(t, 1, "2026-10-20 00:00:00", 202600001, "Zincatura");
  Consegna(t, 2, "2026-11-05 00:00:00", 1, 4, 3.5);
  EXPECT_EQ(frmRepExcel::CreaTabella(kDal, kAl, 0, 1, 0)->RecordCount(), 3);
  RecordsetPtr rs = frmRepExcel::CreaTabella(kDal, kAl, 2, 1, 0);
  ASSERT_EQ(rs->RecordCount(), 1);
  EXPECT_EQ(rs->Value("Operatore").toString(), "Luca Neri");
}

// The screen: its filters and period, the file asked with the filter of the
// spreadsheet's version, the file written and opened; a cancel ends quietly.
TEST(frmRepExcel, TheExportAsksForTheFileWritesItAndOpensIt) {
  TestDb t;
  Base(t);
  Attivita(t, 202600001, 202600001, 1, 1, "2026-11-02 00:00:00", "2026-11-02 01:00:00");
  QStringList aperti;
  SetOpenHook([&](const QUrl& u) {
    aperti << u.toLocalFile();
    return true;
  });
  frmRepExcel f;
  f.Form_Load();
  EXPECT_EQ(f.windowTitle(), "Report operatori");
  const auto periodo = PeriodoDelMese(QDate::currentDate());
  EXPECT_EQ(f.DTDal->date(), periodo.first);
  EXPECT_EQ(f.DTAl->date(), periodo.second);
  EXPECT_EQ(f.CBOperatore->itemText(0), "{tutti gli operatori}");
  EXPECT_EQ(f.CBOperatore->count(), 3);
  EXPECT_EQ(f.CBCAnag->itemText(0), "{scegli anagrafica}");
  f.DTDal->setDate(kDal);
  f.DTAl->setDate(kAl);

  // Cancelled: nothing written, nothing opened, nothing logged.
  f.Bottone(3)->trigger();
  ASSERT_EQ(t.messages->filtri.size(), 1u);
  EXPECT_EQ(t.messages->filtri.back(), "File xls 2007(*.xlsx)|*.xlsx");
  EXPECT_TRUE(aperti.isEmpty());
  EXPECT_TRUE(t.LogLines("frmRepExcel", "CaricaDati").isEmpty());

  const QString file = t.Path() + "/report.xlsx";
  t.messages->files.push_back(file);
  f.mnuPrn->trigger();
  EXPECT_TRUE(QFile::exists(file));
  // The sheet holds the titles and the one activity, its day as text.
  const Foglio foglio = LeggiFoglio(file);
  ASSERT_TRUE(foglio.letto);
  EXPECT_EQ(foglio.Righe(), 2);
  EXPECT_EQ(foglio.Testo("A1"), "Cliente");
  EXPECT_EQ(foglio.Testo("N1"), "CostoLavExt");
  EXPECT_EQ(foglio.Testo("A2"), "Officina Rossi");
  EXPECT_EQ(foglio.Testo("B2"), "02/11/2026");
  EXPECT_EQ(foglio.Testo("G2"), "INT");
  EXPECT_EQ(foglio.Testo("H2"), "Mario Verdi");
  EXPECT_EQ(foglio.Testo("K2"), "60");
  EXPECT_EQ(foglio.Testo("L2"), "21.5");
  EXPECT_FALSE(foglio.Ha("E2"));  // Disposizione stays empty
  EXPECT_EQ(aperti, QStringList({file}));
  EXPECT_EQ(f.NomeFile, file);
  EXPECT_EQ(f.ProgressBar1->value(), f.ProgressBar1->maximum());
  EXPECT_EQ(t.messages->asked.back().prompt, "File creato con successo!");

  // A spreadsheet older than 2007 asks for the old kind of file.
  ImpostaVersioniOffice(11, 0);
  f.Bottone(3)->trigger();
  EXPECT_EQ(t.messages->filtri.back(), "File xls (*.xls)|*.xls");
  ImpostaVersioniOffice(0, 0);
  SetOpenHook({});
}
