// The recordsets of a host document's line screen, the default reason of
// outside work, and the link tables made on a database that has none.
#include <gtest/gtest.h>

#include "ModDoc.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

// Two customers' models, each with dispositions open and closed, and a
// supplier order (12/100) whose lines use an open one and a closed one.
void Officina(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1) VALUES (1, 1, 'Officina Rossi'), (2, 1, 'Zincatura')");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo')");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo) VALUES (1, 'Oraria')");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00', 0), "
         "(202500002, 'Coperchio chiuso', 1, 1, 1, '2025-02-10 00:00:00', 9)");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
         "(202500001, 1, 'Aperta', 1, '2025-01-11 00:00:00', 10, 0), "
         "(202500001, 2, 'Chiusa', 1, '2025-01-12 00:00:00', 5, 9), "
         "(202500001, 3, 'Altra aperta', 1, '2025-01-13 00:00:00', 2, 0), "
         "(202500002, 1, 'Di un modello chiuso', 1, '2025-02-11 00:00:00', 1, 0)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen) VALUES (1, 7, 'C/Lavorazione'), (1, 3, 'Vendita')");
}

void Collega(TestDb& t) {
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, Importo) VALUES "
         "(12, 100, 0, 1, 1, 202500001, 1, 10, 3.5), (12, 100, 0, 2, 2, 202500001, 2, 4, 1.25), "
         "(12, 101, 0, 1, 1, 202500001, 3, 1, 9)");
  t.Exec("INSERT INTO ProjectsDocDettPrest (TipoDoc, NDoc, RigaD, SubRiga, CPrestazione) VALUES "
         "(12, 100, 1, 1, 4), (12, 100, 1, 2, 5), (12, 101, 1, 1, 4)");
}

QStringList Chiavi(const RecordsetPtr& rs) {
  QStringList k;
  for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext())
    k << rs->Value(QStringLiteral("CProject")).toString() + QLatin1Char('/') + rs->Value(QStringLiteral("CDisp")).toString();
  return k;
}

QStringList Campi(const RecordsetPtr& rs) {
  QStringList c;
  for (const FieldDef& f : rs->FieldDefs()) c << f.Name;
  return c;
}

}  // namespace

// The open dispositions of open models; those the document uses come again
// behind them, and a closed one it uses is not offered.
TEST(IniTab4Doc, OpenDispositionsAndTheDocumentsOnesTwice) {
  TestDb t;
  Officina(t);
  Collega(t);
  RecordsetPtr d, fd, fdd;
  int causale = -1;
  IniTab4Doc(d, fd, fdd, causale, 12, 100, false);
  ASSERT_TRUE(d && fd && fdd);
  EXPECT_EQ(Campi(d), QStringList({"CProject", "CDisp", "DProject", "CPrjTipo", "DPrjTipo", "TAnag", "CAnag",
                                   "RagSoc1", "Stato", "DtIni", "DDisp", "DPrjDispTipo", "CStato", "Qta",
                                   "CPrjDispTipo"}));
  EXPECT_EQ(Chiavi(d), QStringList({"202500001/1", "202500001/3", "202500001/1"}));
  d->MoveFirst();
  EXPECT_EQ(d->Value(QStringLiteral("RagSoc1")).toString(), "Officina Rossi");
  EXPECT_EQ(d->Value(QStringLiteral("DPrjDispTipo")).toString(), "Oraria");
  // The document's own lines and their service kinds.
  EXPECT_EQ(fd->RecordCount(), 2);
  EXPECT_EQ(fdd->RecordCount(), 2);
  EXPECT_EQ(Chiavi(fd), QStringList({"202500001/1", "202500001/2"}));
  EXPECT_EQ(causale, 7);
  EXPECT_TRUE(t.LogLines("ModDoc", "IniTab4Doc").isEmpty());
}

// A new document: the lines' structure alone, whatever the tables hold under its number.
TEST(IniTab4Doc, NewDocumentGetsTheStructureAlone) {
  TestDb t;
  Officina(t);
  Collega(t);
  RecordsetPtr d, fd, fdd;
  int causale = 0;
  IniTab4Doc(d, fd, fdd, causale, 12, 100, true);
  ASSERT_TRUE(fd && fdd);
  EXPECT_EQ(fd->RecordCount(), 0);
  EXPECT_EQ(fdd->RecordCount(), 0);
  EXPECT_EQ(Campi(fdd), QStringList({"TipoDoc", "NDoc", "RigaD", "SubRiga", "CPrestazione"}));
  EXPECT_EQ(fd->FieldDefs().size(), 18u);
}

// A database without the link tables gets both at the first document, with
// their keys; the lines are empty and vNewDoc plays no part.
TEST(IniTab4Doc, DatabaseWithoutTheLinkTablesGetsBoth) {
  for (const bool nuovo : {false, true}) {
    TestDb t(false);
    Officina(t);
    ASSERT_FALSE(t.db->TableExists("ProjectsDocDett"));
    RecordsetPtr d, fd, fdd;
    int causale = 0;
    IniTab4Doc(d, fd, fdd, causale, 12, 100, nuovo);
    EXPECT_TRUE(t.db->TableExists("ProjectsDocDett")) << nuovo;
    EXPECT_TRUE(t.db->TableExists("ProjectsDocDettPrest")) << nuovo;
    ASSERT_TRUE(fd && fdd);
    EXPECT_EQ(fd->RecordCount(), 0);
    EXPECT_EQ(fdd->RecordCount(), 0);
    EXPECT_EQ(Campi(fd), QStringList({"TipoDoc", "NDoc", "Scheda", "Riga", "RigaD", "CProject", "CDisp", "Ctipo",
                                      "CArt", "CVar", "CodTesto", "CodForn", "DArt", "NotaArt", "Qta", "CCaus",
                                      "Importo", "CIva"}));
    EXPECT_EQ(fdd->FieldInfo(0).Type, adTinyInt);
    EXPECT_EQ(fdd->FieldInfo(1).Type, adBigInt);
    EXPECT_EQ(fdd->FieldInfo(4).Type, adInteger);
    EXPECT_EQ(Chiavi(d), QStringList({"202500001/1", "202500001/3"}));
    // The tables work and their keys hold.
    t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp) VALUES "
           "(12, 100, 0, 1, 1, 202500001, 1)");
    EXPECT_THROW(t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD) VALUES (12, 100, 0, 1, 1)"),
                 VbError);
    t.Exec("INSERT INTO ProjectsDocDettPrest (TipoDoc, NDoc, RigaD, SubRiga, CPrestazione) VALUES (12, 100, 1, 1, 4)");
    EXPECT_THROW(
        t.Exec("INSERT INTO ProjectsDocDettPrest (TipoDoc, NDoc, RigaD, SubRiga, CPrestazione) VALUES (12, 100, 1, 1, 5)"),
        VbError);
    // The read of the dispositions the document uses came before the tables, and failed.
    EXPECT_EQ(t.LogLines("ModDoc", "IniTab4Doc").size(), 1);
  }
}

// The test looks at the first table only: without the second, its read fails
// and is logged, and nothing makes it.
TEST(IniTab4Doc, FirstLinkTableAloneLeavesTheSecondMissingAndLogs) {
  TestDb t(false);
  Officina(t);
  CreaTabella(*t.db, "ProjectsDocDett");
  RecordsetPtr d, fd, fdd;
  int causale = 0;
  IniTab4Doc(d, fd, fdd, causale, 12, 100, false);
  EXPECT_FALSE(t.db->TableExists("ProjectsDocDettPrest"));
  ASSERT_TRUE(fd);
  EXPECT_EQ(fd->RecordCount(), 0);
  EXPECT_FALSE(fdd);
  EXPECT_EQ(t.LogLines("ModDoc", "IniTab4Doc").size(), 1);
  EXPECT_EQ(causale, 7);  // the rest went on
}

TEST(CercaCausCLav, TheFirstNameFoundExactlyOnceWins) {
  TestDb t;
  const auto causali = [&](const QString& valori) {
    t.Exec("DELETE FROM TabGen");
    if (!valori.isEmpty()) t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen) VALUES " + valori);
    return CercaCausCLav();
  };
  EXPECT_EQ(causali("(1, 4, 'C/Lavoro'), (1, 9, 'C/Lavorazione')"), 9);
  // Two of the first name: the second step decides.
  EXPECT_EQ(causali("(1, 4, 'C/Lavoro'), (1, 8, 'C/Lavorazione'), (1, 9, 'C/Lavorazione')"), 4);
  // Neither name: the one reason whose name holds "Lavor".
  EXPECT_EQ(causali("(1, 2, 'Vendita'), (1, 6, 'Lavorazioni esterne')"), 6);
  // Two that hold it: no step finds exactly one.
  EXPECT_EQ(causali("(1, 5, 'Lavorazione A'), (1, 6, 'Lavorazione B')"), 0);
  EXPECT_EQ(causali("(1, 2, 'Vendita')"), 0);
  EXPECT_EQ(causali(""), 0);
  // Other tables' rows don't count.
  EXPECT_EQ(causali("(12, 1, 'C/Lavorazione'), (1, 3, 'C/Lavoro')"), 3);
  EXPECT_TRUE(t.LogLines("ModDoc", "CercaCausCLav").isEmpty());
}

// The reason goes into a byte: 255 fits, 256 fails the assignment, which is
// logged, and the reason stays as it was.
TEST(IniTab4Doc, ReasonAboveAByteIsAFailureAndLeavesTheReason) {
  TestDb t;
  Officina(t);
  RecordsetPtr d, fd, fdd;
  t.Exec("UPDATE TabGen SET CTabGen=255 WHERE CTabGen=7");
  int causale = -1;
  IniTab4Doc(d, fd, fdd, causale, 12, 100, true);
  EXPECT_EQ(causale, 255);
  EXPECT_TRUE(t.LogLines("ModDoc", "IniTab4Doc").isEmpty());
  t.Exec("UPDATE TabGen SET CTabGen=256 WHERE CTabGen=255");
  causale = 42;
  IniTab4Doc(d, fd, fdd, causale, 12, 100, true);
  EXPECT_EQ(causale, 42);
  const QStringList log = t.LogLines("ModDoc", "IniTab4Doc");
  ASSERT_EQ(log.size(), 1);
  EXPECT_TRUE(log[0].endsWith("(6)")) << log[0].toStdString();
  ASSERT_TRUE(fd);  // the rest went on
}

// The lines collected for a new document (numbered 0 until it is saved) go in
// under its final numbers, and replace what the document had.
TEST(SaveDataDoc, LinksOfTheDocumentAreReplacedUnderItsFinalNumbers) {
  TestDb t;
  Officina(t);
  Collega(t);
  RecordsetPtr d, fd, fdd;
  int causale = 0;
  IniTab4Doc(d, fd, fdd, causale, 12, 0, true);
  fd->AddNew();
  for (const auto& [campo, valore] : std::vector<std::pair<QString, QVariant>>{
           {"TipoDoc", 12}, {"NDoc", 0}, {"Scheda", 0}, {"Riga", 1}, {"RigaD", 1}, {"CProject", 202500001},
           {"CDisp", 3}, {"Qta", 6.0}, {"Importo", 2.75}})
    fd->SetValue(campo, valore);
  fd->Update();
  fdd->AddNew();
  for (const auto& [campo, valore] : std::vector<std::pair<QString, QVariant>>{
           {"TipoDoc", 12}, {"NDoc", 0}, {"RigaD", 1}, {"SubRiga", 1}, {"CPrestazione", 8}})
    fdd->SetValue(campo, valore);
  fdd->Update();
  SaveDataDoc(12, 100, fd, fdd);
  EXPECT_EQ(t.Elenco("SELECT CDisp FROM ProjectsDocDett WHERE TipoDoc=12 AND NDoc=100"), "3");
  EXPECT_EQ(t.Scalar("SELECT Qta FROM ProjectsDocDett WHERE TipoDoc=12 AND NDoc=100").toDouble(), 6.0);
  EXPECT_EQ(t.Scalar("SELECT Importo FROM ProjectsDocDett WHERE TipoDoc=12 AND NDoc=100").toDouble(), 2.75);
  EXPECT_EQ(t.Elenco("SELECT CPrestazione FROM ProjectsDocDettPrest WHERE TipoDoc=12 AND NDoc=100"), "8");
  // Other documents keep theirs; nothing stays under the provisional number.
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDett WHERE NDoc=101").toInt(), 1);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDett WHERE NDoc=0").toInt(), 0);
  EXPECT_TRUE(t.LogLines("ModDoc", "SaveDataDoc").isEmpty());
}

TEST(SaveDataDoc, EmptyLinesRemoveTheDocumentsLinks) {
  TestDb t;
  Officina(t);
  Collega(t);
  RecordsetPtr d, fd, fdd;
  int causale = 0;
  IniTab4Doc(d, fd, fdd, causale, 12, 100, true);
  SaveDataDoc(12, 100, fd, fdd);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDett WHERE NDoc=100").toInt(), 0);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDettPrest WHERE NDoc=100").toInt(), 0);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDett WHERE NDoc=101").toInt(), 1);
}

// A write that fails takes the deletion back with it: the old links stay, and the failure is logged.
TEST(SaveDataDoc, FailedWriteKeepsTheOldLinks) {
  TestDb t;
  Officina(t);
  Collega(t);
  RecordsetPtr d, fd, fdd;
  int causale = 0;
  IniTab4Doc(d, fd, fdd, causale, 12, 100, false);
  ASSERT_EQ(fd->RecordCount(), 2);
  fd->MoveFirst();
  fd->SetValue("Qta", 99.0);
  fd->Update();
  t.RifiutaScritture("ProjectsDocDett");
  SaveDataDoc(12, 100, fd, fdd);
  EXPECT_EQ(t.Elenco("SELECT Qta FROM ProjectsDocDett WHERE NDoc=100 ORDER BY Riga"), "10,4");
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDettPrest WHERE NDoc=100").toInt(), 2);
  EXPECT_FALSE(t.LogLines("ModADO", "ADO2DAO").isEmpty());
  EXPECT_EQ(t.db->TransactionDepth(), 0);
  t.AccettaScritture("ProjectsDocDett");
  SaveDataDoc(12, 100, fd, fdd);
  EXPECT_EQ(t.Elenco("SELECT Qta FROM ProjectsDocDett WHERE NDoc=100 ORDER BY Riga"), "99,4");
}

// The time of each disposition of the models asked for, on which time was recorded.
TEST(PreparaDati, TimeOfTheDispositionsWithActivities) {
  TestDb t;
  Officina(t);
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd) VALUES "
         "(202500001, 202500001, 1, 1, 1, '2025-02-03 08:00:00', '2025-02-03 09:00:00'), "
         "(202500002, 202500001, 1, 1, 1, '2025-02-04 10:00:00', '2025-02-04 10:15:00'), "
         "(202500003, 202500001, 3, 1, 1, '2025-02-05 10:00:00', '2025-02-05 10:00:00'), "
         "(202500004, 202500002, 1, 1, 1, '2025-03-01 08:00:00', '2025-03-01 08:30:00')");
  RecordsetPtr rs = PreparaDati({202500001});
  ASSERT_TRUE(rs);
  EXPECT_EQ(Campi(rs), QStringList({"CProject", "CDisp", "RagSoc", "Modello", "TipoMod", "Disposizione", "TipoDisp",
                                    "Tempo", "Minuti", "DataMax", "Qta"}));
  ASSERT_EQ(rs->RecordCount(), 2);  // disposition 2 has no activities
  rs->MoveFirst();
  EXPECT_EQ(rs->Value("CDisp").toInt(), 1);
  EXPECT_EQ(rs->Value("Tempo").toString(), "01:15:00");
  EXPECT_EQ(rs->Value("Minuti").toInt(), 75);
  EXPECT_EQ(rs->Value("DataMax").toDateTime().date(), QDate(2025, 2, 4));
  EXPECT_EQ(rs->Value("RagSoc").toString(), "Officina Rossi");
  EXPECT_EQ(rs->Value("Disposizione").toString(), "Aperta");
  rs->MoveNext();
  EXPECT_EQ(rs->Value("CDisp").toInt(), 3);
  EXPECT_EQ(rs->Value("Tempo").toString(), "00:00:00");
  // Two models, in the order given.
  EXPECT_EQ(PreparaDati({202500002, 202500001})->RecordCount(), 3);
  EXPECT_TRUE(t.LogLines("ModDoc", "PreparaDati").isEmpty());
}

TEST(PreparaDati, NoModelGivesTheEmptyStructure) {
  TestDb t;
  Officina(t);
  RecordsetPtr rs = PreparaDati({});
  ASSERT_TRUE(rs) << t.LogLines("ModDoc", "PreparaDati").join('\n').toStdString()
                  << t.LogLines("ModADO", "ADO2ADO").join('\n').toStdString();
  EXPECT_EQ(rs->RecordCount(), 0);
  EXPECT_EQ(rs->FieldDefs().size(), 11u);
  EXPECT_EQ(rs->FieldInfo(7).Name, "Tempo");
  EXPECT_EQ(CTempo(0), "00:00");
}

// A host that hands over no lines: the failures are logged, nothing crashes,
// and the transaction keeps the document's links.
TEST(SaveDataDoc, NoRecordsetsAreLoggedAndKeepTheLinks) {
  TestDb t;
  Officina(t);
  Collega(t);
  SaveDataDoc(12, 100, nullptr, nullptr);
  EXPECT_FALSE(t.LogLines("ModDoc", "SaveDataDoc").isEmpty());
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDett WHERE NDoc=100").toInt(), 2);
  EXPECT_EQ(t.db->TransactionDepth(), 0);
}

// Totals: each line's amount to the cent after its surcharge and the header's
// discount, its tax rounded again, the header's VAT code over the lines'.
TEST(CalcolaTotali, LinesRoundedOneByOneAndTheHeadersCodeFirst) {
  const auto aliquote = [](int codice) -> std::optional<double> {
    if (codice == 2) return 22.0;
    if (codice == 3) return 10.0;
    return std::nullopt;
  };
  // 2 x 10.125 = 20.25; less 20%: 16.20, tax 22%: 3.564 -> 3.56. 1 x 0.125: a tie, to the even 0.12; 10%: 0.012 -> 0.01.
  std::vector<RigaTotali> righe = {{2, 10.125, 20, 2}, {1, 0.125, 0, 3}};
  Totali t = CalcolaTotali(righe, 0, 0, aliquote);
  EXPECT_DOUBLE_EQ(t.imponibile, 16.32);
  EXPECT_DOUBLE_EQ(t.iva, 3.57);
  EXPECT_DOUBLE_EQ(t.totale(), 16.32 + 3.57);
  // The header's code 3 for every line: 1.62 + 0.01.
  t = CalcolaTotali(righe, 0, 3, aliquote);
  EXPECT_DOUBLE_EQ(t.iva, 1.63);
  // A code of no rate: its line's tax is left out, its amount stays.
  righe[1].cIva = 9;
  t = CalcolaTotali(righe, 0, 0, aliquote);
  EXPECT_DOUBLE_EQ(t.imponibile, 16.32);
  EXPECT_DOUBLE_EQ(t.iva, 3.56);
  // A discount of 100 leaves nothing; no lines, nothing.
  t = CalcolaTotali(righe, 100, 2, aliquote);
  EXPECT_DOUBLE_EQ(t.imponibile, 0);
  EXPECT_DOUBLE_EQ(t.iva, 0);
  EXPECT_DOUBLE_EQ(CalcolaTotali({}, 5, 2, aliquote).totale(), 0);
  // Negative quantities (a return) count against the total.
  t = CalcolaTotali({{-1, 10, 0, 2}}, 0, 0, aliquote);
  EXPECT_DOUBLE_EQ(t.imponibile, -10);
  EXPECT_DOUBLE_EQ(t.iva, -2.2);
}
