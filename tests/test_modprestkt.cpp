// The loaders of the register and of a model's working set, the lookups by
// key and the tariff lookup.
#include <gtest/gtest.h>

#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Registro(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH, Eliminato) VALUES (1, 1, 'Officina Rossi', 0, 0), "
         "(1, 2, 'Carrozzeria Bianchi', 0, 0), (10, 1, 'Mario Verdi', 21.5, 0), (10, 2, 'Luca Neri', 18, -1), "
         "(2, 1, 'Zincatura Lombarda', 0, 0)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Stampo', 0), (2, 'Forfait', -1)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500001, 'Aperto', 1, 1, 1, '2025-01-10 00:00:00', 0), "
         "(202500002, 'Chiuso', 1, 1, 2, '2025-02-10 00:00:00', 9), "
         "(202500003, 'Chiuso host', 1, 1, 1, '2025-03-10 00:00:00', 10), "
         "(202500004, 'Senza tipo', 7, 1, 1, '2025-04-10 00:00:00', 0), "
         "(202400001, 'Fuori periodo', 1, 1, 2, '2024-05-10 00:00:00', 0)");
}

QStringList Codici(const RecordsetPtr& rs) {
  QStringList out;
  auto c = rs->Clone();
  c->SetSort("CProject");
  for (; !c->Eof(); c->MoveNext()) out << QString::number(c->Value("CProject").toLongLong());
  return out;
}

void Lavori(TestDb& t) {
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla, Bool8) VALUES "
         "(1, 1, 'C/Lavorazione', 'CL', -1), (1, 2, 'Omaggio', 'OM', 0), (12, 1, 'Saldatura', '', 0)");
  t.Exec("INSERT INTO DocForn (TipoDoc, NDoc, Data, Riferimento, TAnag, CAnag) VALUES "
         "(12, 100, '2025-01-15 00:00:00', 'Ord. 100', 2, 1), (15, 200, '2025-01-20 00:00:00', 'DDT 7', 2, 1), "
         "(15, 201, '2025-01-25 00:00:00', 'DDT 9', 2, 1), (15, 202, '2025-01-26 00:00:00', 'DDT 10', 2, 1)");
  // Order 100: line 1 delivered twice (3 at 10.00, 1 at 14.00), line 2 never, line 3 only with quantity 0.
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, QtaArr, PzVend, CCaus) VALUES "
         "(12, 100, 0, 1, 4, 4, 9.5, 1), (12, 100, 0, 2, 10, 0, 3.4, 1), (12, 100, 0, 3, 5, 0, 2, 1)");
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus, TipoDocRif, NDocRif, RigaRif) VALUES "
         "(15, 200, 0, 1, 3, 10, 1, 12, 100, 1), (15, 201, 0, 1, 1, 14, 2, 12, 100, 1), "
         "(15, 202, 0, 1, 0, 50, 1, 12, 100, 3)");
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, Importo) VALUES "
         "(12, 100, 0, 1, 1, 202500001, 1, 4, 9.5), (12, 100, 0, 2, 2, 202500001, 1, 10, 3.4), "
         "(12, 100, 0, 3, 3, 202500001, 2, 5, 2)");
}

}  // namespace

TEST(CaricaModelli, NoQueryWhileTheEndIsZero) {
  TestDb t;
  Registro(t);
  gDtIni = D(2025, 1, 1);
  for (int stato : {-1, 0, 9, 10}) {
    const int before = t.db->StatementCount();
    CaricaModelli(gDtIni, QDateTime(), stato);
    EXPECT_FALSE(gRcsProjects);
    EXPECT_EQ(t.db->StatementCount(), before);
  }
}

TEST(CaricaModelli, StatusChoosesTheStates) {
  TestDb t;
  Registro(t);
  gDtIni = D(2025, 1, 1);
  gDTEnd = D(2025, 12, 31);
  CaricaModelli(gDtIni, gDTEnd, -1);
  EXPECT_EQ(Codici(gRcsProjects), QStringList({"202500001", "202500002", "202500003", "202500004"}));
  CaricaModelli(gDtIni, gDTEnd, 0);
  EXPECT_EQ(Codici(gRcsProjects), QStringList({"202500001", "202500004"}));
  CaricaModelli(gDtIni, gDTEnd, 9);
  EXPECT_EQ(Codici(gRcsProjects), QStringList({"202500002", "202500003"}));
  CaricaModelli(gDtIni, gDTEnd, 10);
  EXPECT_EQ(Codici(gRcsProjects), QStringList({"202500003"}));
  // The fields of Projects with the party's name and the type's description; an unknown type reads Null.
  gRcsProjects->SetFilter("CProject=202500003");
  EXPECT_EQ(gRcsProjects->Value("RagSoc1").toString(), "Officina Rossi");
  EXPECT_EQ(gRcsProjects->Value("DPrjTipo").toString(), "Stampo");
  CaricaModelli(gDtIni, gDTEnd, -1);
  gRcsProjects->SetFilter("CProject=202500004");
  EXPECT_TRUE(IsNull(gRcsProjects->Value("DPrjTipo")));
}

// Notes longer than the memo field in memory (5000): the model stays in the
// register with its notes cut, and the failure lands in the log once.
TEST(CaricaModelli, NotesLongerThanTheMemoFieldKeepEveryModel) {
  TestDb t;
  Registro(t);
  const QString lunghe = QString(4999, 'a') + "bcd" + QString(998, 'z');  // 6000
  t.db->Execute(Sql("UPDATE Projects SET Annot=") + Sql::Param(lunghe) + Sql(" WHERE CProject=202500002"));
  t.db->Execute(Sql("UPDATE Projects SET Annot=") + Sql::Param(QString(5000, 'x')) + Sql(" WHERE CProject=202500003"));
  gDtIni = D(2025, 1, 1);
  gDTEnd = D(2025, 12, 31);
  CaricaModelli(gDtIni, gDTEnd, -1);
  ASSERT_TRUE(gRcsProjects);
  EXPECT_EQ(Codici(gRcsProjects), QStringList({"202500001", "202500002", "202500003", "202500004"}));
  gRcsProjects->SetFilter("CProject=202500002");
  EXPECT_EQ(gRcsProjects->Value("Annot").toString(), lunghe.left(5000));
  gRcsProjects->SetFilter("CProject=202500003");
  EXPECT_EQ(gRcsProjects->Value("Annot").toString().size(), 5000);  // exactly the size fits
  EXPECT_EQ(t.LogLines("Procedure", "DAO2ADO").size(), 1);
  // The table keeps the whole text.
  EXPECT_EQ(t.Scalar("SELECT Annot FROM Projects WHERE CProject=202500002").toString(), lunghe);
}

TEST(AggiornaModello, RefreshedLineHasNoTypeUntilTheNextFullLoad) {
  TestDb t;
  Registro(t);
  gDtIni = D(2025, 1, 1);
  gDTEnd = D(2025, 12, 31);
  CaricaModelli(gDtIni, gDTEnd, -1);
  t.Exec("UPDATE Projects SET DProject='Aperto e cambiato' WHERE CProject=202500001");
  AggiornaModello(202500001, gRcsProjects);
  EXPECT_EQ(gRcsProjects->Filter(), "CProject=202500001");
  ASSERT_EQ(gRcsProjects->RecordCount(), 1);
  EXPECT_EQ(gRcsProjects->Value("DProject").toString(), "Aperto e cambiato");
  EXPECT_TRUE(IsNull(gRcsProjects->Value("DPrjTipo")));
  gRcsProjects->SetFilter("");
  EXPECT_EQ(gRcsProjects->RecordCount(), 4);
  // A new model is appended.
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202500005, 'Nuovo', 1, 1, 2, '2025-06-01 00:00:00')");
  AggiornaModello(202500005, gRcsProjects);
  gRcsProjects->SetFilter("");
  EXPECT_EQ(gRcsProjects->RecordCount(), 5);
  // With no recordset yet, the one row makes it.
  RecordsetPtr solo;
  AggiornaModello(202500005, solo);
  ASSERT_TRUE(solo);
  EXPECT_EQ(solo->RecordCount(), 1);
}

TEST(Lookups, ValuesOrDefaults) {
  TestDb t;
  Registro(t);
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo) VALUES (3, '  Oraria  ')");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen) VALUES (12, 4, 'Saldatura ')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, CStato) VALUES (202500001, 1, 0), (202500001, 2, 9)");
  EXPECT_EQ(DescrAnag(1, 2), "Carrozzeria Bianchi");
  EXPECT_EQ(DescrAnag(1, 99), "");
  EXPECT_EQ(DescrTipoPrj(2), "Forfait");
  EXPECT_EQ(DescrTipoPrj(99), "");
  EXPECT_EQ(DescrTipoDisp(3), "Oraria");
  EXPECT_EQ(DescrPrest(4), "Saldatura");
  EXPECT_EQ(DescrPrest(5), "");
  EXPECT_DOUBLE_EQ(CostoOraOperatore(1), 21.5);
  EXPECT_DOUBLE_EQ(CostoOraOperatore(9), 0);
  EXPECT_FALSE(AvvisaDispChiusa(202500001, 1));
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_TRUE(AvvisaDispChiusa(202500001, 2));
  ASSERT_EQ(t.messages->asked.size(), 1u);
  EXPECT_EQ(t.messages->asked[0].prompt, "Attenzione: questa disposizione risulta essere chiusa!");
  EXPECT_EQ(t.messages->asked[0].buttons, vbExclamation);
  // A failing query gives the default, silently.
  gDB.reset();
  EXPECT_EQ(DescrAnag(1, 2), "");
}

TEST(GetDatiDisp, CustomerRowWinsWholeAndBandOnlyForAForfait) {
  TestDb t;
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, Forfait, TipoFatt) VALUES "
         "(1, 'Oraria', 0, 1), (2, 'Forfait', -1, 2), (3, 'Forfait senza tariffa', -1, 2)");
  t.Exec("INSERT INTO ProjectsDispTar (CPrjTipo, CPrjDispTipo, TarMin, TarMax, TarH) VALUES "
         "(1, 1, 10, 20, 38), (1, 2, 22, 30, 40)");
  t.Exec("INSERT INTO ProjectsDispTarDett (CPrjTipo, CPrjDispTipo, TAnag, CAnag, TarMin, TarMax, TarH) VALUES "
         "(1, 1, 1, 7, 0, 0, 0)");
  tyDatiDisp d = GetDatiDisp(1, 1, 1, 1);
  // An hourly type keeps its band at 0 although the row has one.
  EXPECT_EQ(d.vMin, 0);
  EXPECT_EQ(d.vMax, 0);
  EXPECT_EQ(d.vTarH, 38);
  EXPECT_FALSE(d.vForfait);
  d = GetDatiDisp(1, 1, 1, 2);
  EXPECT_EQ(d.vMin, 22);
  EXPECT_EQ(d.vMax, 30);
  EXPECT_EQ(d.vTarH, 40);
  EXPECT_TRUE(d.vForfait);
  // The customer's row with TarH 0 wins over the general 38.
  d = GetDatiDisp(1, 7, 1, 1);
  EXPECT_EQ(d.vTarH, 0);
  // No tariff at all: the empty record, whatever the type says.
  d = GetDatiDisp(1, 1, 1, 3);
  EXPECT_EQ(d.vTarH, 0);
  EXPECT_FALSE(d.vForfait);
}

TEST(CaricaDatiModello, NewModelGivesTheStructuresOnly) {
  TestDb t;
  Registro(t);
  Lavori(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp) VALUES (202500001, 1, 'A')");
  CaricaDatiModello(0);
  ASSERT_TRUE(gRcsDisp && gRcsDispDett && gRcsAct && gRcsLavExt && gRcsForn);
  EXPECT_EQ(gRcsDisp->RecordCount(), 0);
  EXPECT_GE(gRcsDisp->FieldIndex("DDisp"), 0);
  EXPECT_EQ(gRcsDispDett->FieldCount(), 3);
  EXPECT_EQ(gRcsAct->RecordCount(), 0);
  EXPECT_GE(gRcsAct->FieldIndex("OraIni"), 0);
  EXPECT_EQ(gRcsLavExt->RecordCount(), 0);
  EXPECT_GE(gRcsLavExt->FieldIndex("ImpEff"), 0);
  EXPECT_GE(gRcsLavExt->FieldIndex("CDisp"), 0);
  EXPECT_EQ(gRcsForn->RecordCount(), 0);
  EXPECT_GE(gRcsForn->FieldIndex("Bool8"), 0);
  EXPECT_FALSE(gRcsProd);
  CaricaDatiModello(202500001);
  EXPECT_EQ(gRcsDisp->RecordCount(), 1);
}

TEST(CaricaDatiModello, DispositionNotesLongerThanTheMemoFieldKeepEveryDisposition) {
  TestDb t;
  Registro(t);
  t.db->Execute(Sql("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, Annot) VALUES (202500001, 1, 'A', ") +
                Sql::Param(QString(5001, 'n')) + Sql("), (202500001, 2, 'B', 'corta'), (202500001, 3, 'C', NULL)"));
  CaricaDatiModello(202500001);
  ASSERT_TRUE(gRcsDisp);
  EXPECT_EQ(gRcsDisp->RecordCount(), 3);
  gRcsDisp->SetFilter("CDisp=1");
  EXPECT_EQ(gRcsDisp->Value("Annot").toString(), QString(5000, 'n'));
  gRcsDisp->SetFilter("CDisp=3");
  EXPECT_EQ(gRcsDisp->Value("DDisp").toString(), "C");
  EXPECT_EQ(t.LogLines("Procedure", "DAO2ADO").size(), 1);
}

// A number stored far beyond the range of its integer column (1e54) is read
// as it is, refused by the field of the copy like any value that doesn't fit,
// and the disposition stays in the working set.
TEST(CaricaDatiModello, StoredNumberBeyondTheIntegerRangeIsAFailedConversion) {
  TestDb t;
  // Only a file written by another program holds such a value in a small-integer column.
  if (t.SuPostgres()) GTEST_SKIP() << "a PostgreSQL smallint column cannot hold 1e54";
  Registro(t);
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, NStampa) VALUES (202500001, 1, 'A', 1e54), "
         "(202500001, 2, 'B', 3), (202500001, 3, 'C', -9.3e18)");
  RecordsetPtr rs;
  ApriRecordset(rs, "SELECT CDisp, NStampa FROM ProjectsDisp ORDER BY CDisp", nullptr, dbOpenSnapshot);
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->Value("NStampa").toDouble(), 1e54);
  EXPECT_THROW(CInt(rs->Value("NStampa")), VbError);
  CaricaDatiModello(202500001);
  ASSERT_TRUE(gRcsDisp);
  EXPECT_EQ(gRcsDisp->RecordCount(), 3);
  gRcsDisp->SetFilter("CDisp=1");
  EXPECT_TRUE(IsNull(gRcsDisp->Value("NStampa")));
  gRcsDisp->SetFilter("CDisp=2");
  EXPECT_EQ(gRcsDisp->Value("NStampa").toInt(), 3);
  EXPECT_EQ(t.LogLines("Procedure", "DAO2ADO").size(), 2);
}

TEST(CaricaAttivita, StoredZeroCostTakesTheOperatorsPresentCost) {
  TestDb t;
  Registro(t);
  t.Exec("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, DtEnd, CostoH) VALUES "
         "(202500001, 202500001, 1, 1, 1, '2025-02-03 00:00:00', '2025-02-03 02:30:00', 0), "
         "(202500002, 202500001, 1, 1, 1, '2025-02-04 09:50:00', '2025-02-04 10:10:00', 30), "
         "(202500003, 202500001, 2, 9, 1, '2025-02-05 00:00:00', NULL, 0)");
  RecordsetPtr rs;
  CaricaAttivita(rs, 202500001, 0, 0, false);
  ASSERT_EQ(rs->RecordCount(), 3);
  EXPECT_EQ(rs->Filter(), "0");
  rs->SetFilter("CAttivita=202500001");
  EXPECT_DOUBLE_EQ(rs->Value("CostoH").toDouble(), 21.5);
  EXPECT_EQ(rs->Value("DataIni").toString(), "03/02/2025");
  EXPECT_EQ(rs->Value("OraEnd").toString(), "02:30");
  rs->SetFilter("CAttivita=202500002");
  EXPECT_DOUBLE_EQ(rs->Value("CostoH").toDouble(), 30);
  rs->SetFilter("CAttivita=202500003");
  EXPECT_DOUBLE_EQ(rs->Value("CostoH").toDouble(), 0);  // no such operator
  EXPECT_TRUE(IsNull(rs->Value("DtEnd")));
  // The table keeps its zero.
  EXPECT_EQ(t.Scalar("SELECT CostoH FROM ActivitiesProd WHERE CAttivita=202500001").toDouble(), 0);
  // Refreshing one activity replaces its row.
  t.Exec("UPDATE ActivitiesProd SET CPrestazione=5 WHERE CAttivita=202500002");
  CaricaAttivita(rs, 0, 0, 202500002, true);
  rs->SetFilter("");
  EXPECT_EQ(rs->RecordCount(), 3);
  rs->SetFilter("CAttivita=202500002");
  EXPECT_EQ(rs->Value("CPrestazione").toInt(), 5);
}

TEST(CaricaLavEsterne, EffectiveCostIsTheMeanOfTheDeliveries) {
  TestDb t;
  Registro(t);
  Lavori(t);
  RecordsetPtr rs;
  CaricaLavEsterne(rs, 202500001, 0);
  ASSERT_TRUE(rs);
  ASSERT_EQ(rs->RecordCount(), 3);
  rs->SetFilter("Riga=1");
  // Deliveries of 3 at 10.00 and 1 at 14.00: (30 + 14) / 4 = 11.00, whatever their causal.
  EXPECT_DOUBLE_EQ(rs->Value("ImpEff").toDouble(), 11.0);
  EXPECT_DOUBLE_EQ(rs->Value("Importo").toDouble(), 9.5);
  EXPECT_EQ(rs->Value("RagSoc1").toString(), "Zincatura Lombarda");
  EXPECT_EQ(rs->Value("CDisp").toInt(), 1);
  rs->SetFilter("Riga=2");
  // No delivery: the order's amount stays.
  EXPECT_DOUBLE_EQ(rs->Value("ImpEff").toDouble(), 3.4);
  rs->SetFilter("Riga=3");
  // A delivery of quantity 0 adds nothing.
  EXPECT_DOUBLE_EQ(rs->Value("ImpEff").toDouble(), 2.0);
  RecordsetPtr una;
  CaricaLavEsterne(una, 202500001, 2);
  EXPECT_EQ(una->RecordCount(), 1);
  RecordsetPtr nessuna;
  CaricaLavEsterne(nessuna, 202500002, 0);
  ASSERT_TRUE(nessuna);
  EXPECT_EQ(nessuna->RecordCount(), 0);
  EXPECT_GE(nessuna->FieldIndex("QtaArr"), 0);
}

TEST(CaricaForniture, OnlyBillableDeliveriesCount) {
  TestDb t;
  Registro(t);
  Lavori(t);
  RecordsetPtr lav, forn;
  CaricaLavEsterne(lav, 202500001, 0);
  CaricaForniture(forn, lav);
  ASSERT_TRUE(forn);
  // Delivery 200 (C/Lavorazione) and 202 count; 201 is under a causal that doesn't.
  EXPECT_EQ(forn->RecordCount(), 2);
  forn->SetFilter("NDoc=201");
  EXPECT_EQ(forn->RecordCount(), 0);
  forn->SetFilter("NDoc=200");
  EXPECT_EQ(forn->Value("CDisp").toInt(), 1);
  EXPECT_EQ(forn->Value("Sigla").toString(), "CL");
  EXPECT_EQ(forn->Value("Riferimento").toString(), "DDT 7");
  // The filter of the lines it walked is undisturbed.
  EXPECT_EQ(lav->Filter(), "0");
}

namespace {

// A recordset written out whole: each field with its type and size, then each
// row in the recordset's order, each value with the kind of value it holds.
QString Tabella(const RecordsetPtr& rs) {
  QStringList righe;
  QStringList campi;
  for (const FieldDef& f : rs->FieldDefs())
    campi << QStringLiteral("%1:%2:%3").arg(f.Name).arg(f.Type).arg(f.DefinedSize);
  righe << campi.join(QLatin1Char(' '));
  auto c = rs->Clone();
  for (c->MoveFirst(); !c->Eof(); c->MoveNext()) {
    QStringList valori;
    for (int i = 0; i < c->FieldCount(); ++i) {
      const QVariant v = c->Value(i);
      if (IsNull(v)) valori << QStringLiteral("Null");
      else if (v.typeId() == QMetaType::Double) valori << QStringLiteral("d") + QString::number(v.toDouble(), 'g', 17);
      else if (v.typeId() == QMetaType::QDateTime) valori << QStringLiteral("t") + v.toDateTime().toString(Qt::ISODate);
      else valori << QString::fromLatin1(v.typeName()).left(1) + v.toString();
    }
    righe << valori.join(QLatin1Char('|'));
  }
  return righe.join(QLatin1Char('\n'));
}

// Supplier orders linked to the dispositions of model 202500001, in an order
// of their own, with every case the lists meet: several lines of one
// disposition, a link to a line that doesn't exist, two links to one line, a
// line of an order whose supplier is missing, deliveries at two prices, of
// quantity 0, under a causal that isn't billed and under a causal that
// doesn't exist, and links of another disposition and of another model.
void Ordini(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH, Eliminato) VALUES "
         "(2, 1, 'Zincatura Lombarda', 0, 0), (2, 2, 'Verniciatura Sud', 0, 0)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla, Bool8) VALUES "
         "(1, 1, 'C/Lavorazione', 'CL', -1), (1, 2, 'Omaggio', 'OM', 0), (1, 3, 'Reso', 'RS', -1)");
  t.Exec("INSERT INTO DocForn (TipoDoc, NDoc, Data, DataCons, Riferimento, TAnag, CAnag) VALUES "
         "(12, 100, '2025-01-15 00:00:00', '2025-02-01 00:00:00', 'Ord. 100', 2, 1), "
         "(12, 101, '2025-01-10 00:00:00', NULL, 'Ord. 101', 2, 2), "
         "(12, 102, '2025-01-12 00:00:00', NULL, 'Ord. 102', 2, 9), "
         "(15, 200, '2025-01-20 00:00:00', NULL, 'DDT 7', 2, 1), (15, 201, '2025-01-25 00:00:00', NULL, 'DDT 9', 2, 1), "
         "(15, 202, '2025-01-26 00:00:00', NULL, 'DDT 10', 2, 1), (15, 203, '2025-01-27 00:00:00', NULL, 'DDT 3', 2, 2), "
         "(15, 204, '2025-01-28 00:00:00', NULL, 'DDT 4', 2, 2)");
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, QtaArr, Annullato, PzVend, CCaus) VALUES "
         "(12, 100, 0, 1, 4, 4, 0, 9.5, 1), (12, 100, 0, 2, 10, 0, 0, 3.4, 1), (12, 100, 0, 3, 5, 0, 0, 2, 2), "
         "(12, 101, 0, 1, 3, 2, 1, 1.1, 1), (12, 101, 0, 2, 7, 2, 0, 5, 3), (12, 102, 0, 1, 6, 0, 0, 8, 1)");
  // 100/1: 3 at 10.00 and 1 at 14.00 (not billed); 100/3: only quantity 0;
  // 101/1: 2 at 1.002 and 1 at 1.014; 101/2: 0 at 5 and 2 at 4.50 under no causal.
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus, TipoDocRif, NDocRif, RigaRif) VALUES "
         "(15, 200, 0, 1, 3, 10, 1, 12, 100, 1), (15, 201, 0, 1, 1, 14, 2, 12, 100, 1), "
         "(15, 202, 0, 1, 0, 50, 1, 12, 100, 3), (15, 203, 0, 1, 2, 1.002, 3, 12, 101, 1), "
         "(15, 203, 0, 2, 1, 1.014, 1, 12, 101, 1), (15, 204, 0, 1, 0, 5, 1, 12, 101, 2), "
         "(15, 204, 0, 2, 2, 4.5, 9, 12, 101, 2)");
  // Entered late under an earlier number: 2 more at 11.00 for 100/1.
  t.Exec("INSERT INTO DocForn (TipoDoc, NDoc, Data, Riferimento, TAnag, CAnag) VALUES "
         "(15, 150, '2025-01-18 00:00:00', 'DDT 2', 2, 1)");
  t.Exec("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus, TipoDocRif, NDocRif, RigaRif) VALUES "
         "(15, 150, 0, 1, 2, 11, 3, 12, 100, 1)");
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, Importo) VALUES "
         "(12, 101, 0, 1, 1, 202500001, 1, 3, 1.1), (12, 100, 0, 2, 2, 202500001, 1, 10, 3.4), "
         "(12, 100, 0, 1, 3, 202500001, 1, 4, 9.5), (12, 100, 0, 9, 4, 202500001, 1, 1, 1), "
         "(12, 101, 0, 1, 5, 202500001, 1, 3, 1.1), (12, 100, 0, 3, 6, 202500001, 2, 5, 2), "
         "(12, 102, 0, 1, 7, 202500001, 1, 6, 8), (12, 101, 0, 2, 8, 202500001, 2, 7, 5), "
         "(12, 100, 0, 1, 9, 202500001, 2, 4, 9.5), (5, 100, 0, 1, 10, 202500001, 1, 1, 1), "
         "(12, 100, 0, 2, 11, 202500002, 1, 10, 3.4)");
}

// The fields of the two lists, each with its type and size.
const char* const kCampiLavEsterne =
    "CDisp:20:8 RigaD:20:8 TipoDoc:3:4 NDoc:20:8 DataDoc:7:8 RagSoc1:200:100 DataCons:7:8 Riga:3:4 Qta:5:8 "
    "QtaArr:5:8 Annullato:5:8 Importo:5:8 ImpEff:5:8 CCaus:3:4";
const char* const kCampiForniture =
    "CDisp:20:8 TipoDoc:3:4 NDoc:20:8 Riga:3:4 DataDoc:7:8 Riferimento:200:100 RagSoc1:200:100 TipoDocRif:3:4 "
    "NDocRif:20:8 RigaRif:3:4 Qta:5:8 Importo:5:8 Sigla:200:10 Bool8:11:2";

}  // namespace

// One row of each link, in the links' order, the link's disposition and line
// first: a second link to a line gives it again, and links to a line that
// doesn't exist or whose supplier is missing give nothing.
TEST(CaricaLavEsterne, RowsFollowTheLinksWithEveryField) {
  TestDb t;
  Ordini(t);
  RecordsetPtr rs;
  CaricaLavEsterne(rs, 202500001, 0);
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->Filter(), "0");
  EXPECT_EQ(Tabella(rs),
            QStringList({kCampiLavEsterne,
                         "q1|q1|i12|q101|t2025-01-10T00:00:00|QVerniciatura Sud|Null|i1|d3|d2|d1|d1.1000000000000001|d1|i1",
                         "q1|q2|i12|q100|t2025-01-15T00:00:00|QZincatura Lombarda|t2025-02-01T00:00:00|i2|d10|d0|d0|"
                         "d3.3999999999999999|d3.3999999999999999|i1",
                         "q1|q3|i12|q100|t2025-01-15T00:00:00|QZincatura Lombarda|t2025-02-01T00:00:00|i1|d4|d4|d0|d9.5|"
                         "d11|i1",
                         "q1|q5|i12|q101|t2025-01-10T00:00:00|QVerniciatura Sud|Null|i1|d3|d2|d1|d1.1000000000000001|d1|i1",
                         "q2|q6|i12|q100|t2025-01-15T00:00:00|QZincatura Lombarda|t2025-02-01T00:00:00|i3|d5|d0|d0|d2|d2|"
                         "i2",
                         "q2|q8|i12|q101|t2025-01-10T00:00:00|QVerniciatura Sud|Null|i2|d7|d2|d0|d5|d4.5|i3",
                         "q2|q9|i12|q100|t2025-01-15T00:00:00|QZincatura Lombarda|t2025-02-01T00:00:00|i1|d4|d4|d0|d9.5|"
                         "d11|i1"})
                .join('\n'));
  // One disposition: its links alone.
  RecordsetPtr seconda;
  CaricaLavEsterne(seconda, 202500001, 2);
  ASSERT_TRUE(seconda);
  EXPECT_EQ(Tabella(seconda),
            QStringList({kCampiLavEsterne,
                         "q2|q6|i12|q100|t2025-01-15T00:00:00|QZincatura Lombarda|t2025-02-01T00:00:00|i3|d5|d0|d0|d2|d2|"
                         "i2",
                         "q2|q8|i12|q101|t2025-01-10T00:00:00|QVerniciatura Sud|Null|i2|d7|d2|d0|d5|d4.5|i3",
                         "q2|q9|i12|q100|t2025-01-15T00:00:00|QZincatura Lombarda|t2025-02-01T00:00:00|i1|d4|d4|d0|d9.5|"
                         "d11|i1"})
                .join('\n'));
  // No link: the same fields, no row.
  RecordsetPtr nessuna;
  CaricaLavEsterne(nessuna, 202500003, 0);
  ASSERT_TRUE(nessuna);
  EXPECT_EQ(Tabella(nessuna), kCampiLavEsterne);
  EXPECT_TRUE(t.LogLines("Procedure", "DAO2ADO").isEmpty());
}

// Each delivery line counts rounded to the cent before the mean: 2 at 1.002
// and 1 at 1.014 make (2.00 + 1.01) / 3 = 1.00, where the exact mean would
// round to 1.01. A delivery of quantity 0 adds nothing, one under any causal
// counts, and a line with nothing delivered keeps the order's amount.
TEST(CaricaLavEsterne, EffectiveCostRoundsEachDeliveryFirst) {
  TestDb t;
  Ordini(t);
  RecordsetPtr rs;
  CaricaLavEsterne(rs, 202500001, 0);
  ASSERT_TRUE(rs);
  QStringList costi;
  for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext())
    costi << QStringLiteral("%1/%2=%3")
                 .arg(rs->Value("NDoc").toInt())
                 .arg(rs->Value("Riga").toInt())
                 .arg(rs->Value("ImpEff").toDouble());
  EXPECT_EQ(costi.join(' '), "101/1=1 100/2=3.4 100/1=11 101/1=1 100/3=2 101/2=4.5 100/1=11");
}

// For each order line of the list, in its order, its billable deliveries as
// the engine gives them, with the line's disposition first: a line listed
// twice gives them twice.
TEST(CaricaForniture, DeliveriesFollowTheOrderLinesWithEveryField) {
  TestDb t;
  Ordini(t);
  RecordsetPtr lav, forn;
  CaricaLavEsterne(lav, 202500001, 0);
  CaricaForniture(forn, lav);
  ASSERT_TRUE(forn);
  const QString d203 = "i15|q203|i1|t2025-01-27T00:00:00|QDDT 3|QVerniciatura Sud|i12|q101|i1|d2|d1.002|QRS|btrue";
  const QString d203b = "i15|q203|i2|t2025-01-27T00:00:00|QDDT 3|QVerniciatura Sud|i12|q101|i1|d1|d1.014|QCL|btrue";
  const QString d200 = "i15|q200|i1|t2025-01-20T00:00:00|QDDT 7|QZincatura Lombarda|i12|q100|i1|d3|d10|QCL|btrue";
  const QString d150 = "i15|q150|i1|t2025-01-18T00:00:00|QDDT 2|QZincatura Lombarda|i12|q100|i1|d2|d11|QRS|btrue";
  const QString d202 = "i15|q202|i1|t2025-01-26T00:00:00|QDDT 10|QZincatura Lombarda|i12|q100|i3|d0|d50|QCL|btrue";
  const QString d204 = "i15|q204|i1|t2025-01-28T00:00:00|QDDT 4|QVerniciatura Sud|i12|q101|i2|d0|d5|QCL|btrue";
  EXPECT_EQ(Tabella(forn), QStringList({kCampiForniture, "q1|" + d203, "q1|" + d203b, "q1|" + d200, "q1|" + d150,
                                        "q1|" + d203, "q1|" + d203b, "q2|" + d202, "q2|" + d204, "q2|" + d200,
                                        "q2|" + d150})
                               .join('\n'));
  EXPECT_EQ(lav->Filter(), "0");
  RecordsetPtr seconda, fornSeconda;
  CaricaLavEsterne(seconda, 202500001, 2);
  CaricaForniture(fornSeconda, seconda);
  ASSERT_TRUE(fornSeconda);
  EXPECT_EQ(Tabella(fornSeconda),
            QStringList({kCampiForniture, "q2|" + d202, "q2|" + d204, "q2|" + d200, "q2|" + d150}).join('\n'));
  // A line with no billable delivery, and no lines at all: the fields alone.
  RecordsetPtr senza, fornSenza;
  CaricaLavEsterne(senza, 202500002, 0);  // 100/2 alone, never delivered
  ASSERT_EQ(senza->RecordCount(), 1);
  CaricaForniture(fornSenza, senza);
  ASSERT_TRUE(fornSenza);
  EXPECT_EQ(Tabella(fornSenza), kCampiForniture);
  RecordsetPtr nessuna, fornNessuna;
  CaricaLavEsterne(nessuna, 202500003, 0);
  CaricaForniture(fornNessuna, nessuna);
  ASSERT_TRUE(fornNessuna);
  EXPECT_EQ(Tabella(fornNessuna), kCampiForniture);
  EXPECT_TRUE(t.LogLines("Procedure", "DAO2ADO").isEmpty());
}

// However many links and lines, the links, the lines of their orders and the
// deliveries of those lines are three readings; the deliveries of the lines
// one more.
TEST(CaricaLavEsterne, ReadsLinksLinesAndDeliveriesOnceEach) {
  TestDb t;
  Ordini(t);
  RecordsetPtr lav, forn;
  int prima = t.db->StatementCount();
  CaricaLavEsterne(lav, 202500001, 0);
  EXPECT_EQ(t.db->StatementCount() - prima, 3);
  ASSERT_EQ(lav->RecordCount(), 7);
  prima = t.db->StatementCount();
  CaricaForniture(forn, lav);
  EXPECT_EQ(t.db->StatementCount() - prima, 1);
  EXPECT_EQ(forn->RecordCount(), 10);
  // No link: the links and the empty structure; no line: the empty structure alone.
  RecordsetPtr nessuna, fornNessuna;
  prima = t.db->StatementCount();
  CaricaLavEsterne(nessuna, 202500003, 0);
  EXPECT_EQ(t.db->StatementCount() - prima, 2);
  prima = t.db->StatementCount();
  CaricaForniture(fornNessuna, nessuna);
  EXPECT_EQ(t.db->StatementCount() - prima, 1);
}

// The fields don't hang on the first link: one whose line is gone, or one
// with no disposition, leaves CDisp and RigaD the numbers they always are, on
// either engine, and the deliveries still find their lines.
TEST(CaricaLavEsterne, FirstLinkWithoutALineOrADispositionKeepsTheFields) {
  TestDb t;
  Ordini(t);
  t.Exec("DELETE FROM ProjectsDocDett");
  t.Exec("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, Importo) VALUES "
         "(12, 100, 0, 9, 4, 202500001, 1, 1, 1), (12, 100, 0, 2, 2, 202500001, NULL, 10, 3.4), "
         "(12, 101, 0, 1, 1, 202500001, 1, 3, 1.1)");
  RecordsetPtr lav, forn;
  CaricaLavEsterne(lav, 202500001, 0);
  ASSERT_TRUE(lav);
  EXPECT_EQ(Tabella(lav),
            QStringList({kCampiLavEsterne,
                         "Null|q2|i12|q100|t2025-01-15T00:00:00|QZincatura Lombarda|t2025-02-01T00:00:00|i2|d10|d0|d0|"
                         "d3.3999999999999999|d3.3999999999999999|i1",
                         "q1|q1|i12|q101|t2025-01-10T00:00:00|QVerniciatura Sud|Null|i1|d3|d2|d1|d1.1000000000000001|d1|i1"})
                .join('\n'));
  CaricaForniture(forn, lav);
  ASSERT_TRUE(forn);
  EXPECT_EQ(Tabella(forn),
            QStringList({kCampiForniture,
                         "q1|i15|q203|i1|t2025-01-27T00:00:00|QDDT 3|QVerniciatura Sud|i12|q101|i1|d2|d1.002|QRS|btrue",
                         "q1|i15|q203|i2|t2025-01-27T00:00:00|QDDT 3|QVerniciatura Sud|i12|q101|i1|d1|d1.014|QCL|btrue"})
                .join('\n'));
  // The line without a disposition first.
  t.Exec("DELETE FROM ProjectsDocDett WHERE RigaD=4");
  CaricaLavEsterne(lav, 202500001, 0);
  ASSERT_TRUE(lav);
  EXPECT_EQ(lav->FieldInfo(0).Name, "CDisp");
  EXPECT_EQ(lav->FieldInfo(0).Type, adBigInt);
  lav->MoveFirst();
  EXPECT_TRUE(IsNull(lav->Value("CDisp")));
  EXPECT_TRUE(t.LogLines("Procedure", "DAO2ADO").isEmpty());
}
