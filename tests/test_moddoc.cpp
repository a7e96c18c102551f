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
