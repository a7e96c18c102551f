// The demo workshop (DemoData.h): the codes, states, documents and links that
// the component relies on, determinism, and the size of the large database.
#include <gtest/gtest.h>
#include <QCryptographicHash>
#include <QTemporaryDir>

#include <map>
#include <set>

#include "Database.h"
#include "DemoData.h"
#include "ModPrestKT.h"
#include "Schema.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

const QDate kOggi(2025, 3, 14);

// The demo of one day; every check runs on a few days, weekends and holidays among them.
class DemoDataTest : public ::testing::TestWithParam<QDate> {
 protected:
  void SetUp() override {
    ASSERT_TRUE(dir_.isValid());
    oggi_ = GetParam();
    db_ = ApriDatabaseDiProva(dir_.filePath(QStringLiteral("demo.db")));
    CreaDatiDemo(*db_, oggi_);
  }
  void TearDown() override {
    gRcsProjects.reset();
    gDB.reset();
    db_.reset();
    CancellaDatabaseDiProva(dir_.filePath(QStringLiteral("demo.db")));
  }

  std::vector<Row> Rows(const QString& sql) { return db_->Select(Sql(sql)).rows; }
  int Count(const QString& sql) { return Rows(sql).front().front().toInt(); }

  QTemporaryDir dir_;
  QDate oggi_;
  DatabasePtr db_;
};

// Every row of every table of the schema, in key order, as one digest.
QByteArray Digest(Database& db) {
  QCryptographicHash h(QCryptographicHash::Sha256);
  for (const TableDef& t : SchemaTables()) {
    const auto r = db.Select(
        Sql(QStringLiteral("SELECT * FROM %1 ORDER BY %2").arg(t.name, t.key.join(", "))));
    h.addData(t.name.toUtf8());
    for (const Row& row : r.rows)
      for (const QVariant& v : row)
        h.addData((v.isValid() ? v.toString() : QStringLiteral("<Null>")).toUtf8() + '|');
  }
  return h.result();
}

}  // namespace

TEST_P(DemoDataTest, ReferenceTables) {
  EXPECT_EQ(Count("SELECT Count(*) FROM AnagTipo"), 3);
  EXPECT_GE(Count("SELECT Count(*) FROM Anagrafica WHERE TAnag=1"), 10);
  EXPECT_GE(Count("SELECT Count(*) FROM Anagrafica WHERE TAnag=2"), 5);
  EXPECT_GE(Count("SELECT Count(*) FROM Anagrafica WHERE TAnag=10"), 6);
  // CAnag runs from 1 within each kind of record.
  for (const Row& r :
       Rows("SELECT TAnag, Min(CAnag), Max(CAnag), Count(*) FROM Anagrafica GROUP BY TAnag")) {
    EXPECT_EQ(r[1].toInt(), 1) << r[0].toInt();
    EXPECT_EQ(r[2].toInt(), r[3].toInt()) << r[0].toInt();
  }
  EXPECT_EQ(Count("SELECT Count(*) FROM Anagrafica WHERE TAnag=10 AND Eliminato=-1"), 1);
  EXPECT_EQ(Count("SELECT Count(*) FROM Anagrafica WHERE TAnag=10 AND CostoH=0"), 1);
  EXPECT_EQ(Count("SELECT Count(*) FROM Anagrafica WHERE TAnag=10 AND CostoH<>0 AND (CostoH<18 OR "
                  "CostoH>32)"),
            0);
  EXPECT_EQ(Count("SELECT Count(*) FROM [ABC:Causfatt] WHERE Sigla='CL' AND Bool8=-1"), 1);
  EXPECT_EQ(Count("SELECT Count(*) FROM [ABC:Causfatt] WHERE Sigla='OM' AND Bool8=0"), 1);
  EXPECT_EQ(Count("SELECT Count(*) FROM TabGen WHERE CTipTabGen=4 AND CTabGen=2 AND Num1=22"), 1);
  EXPECT_GE(Count("SELECT Count(*) FROM [ABC:Prestazioni]"), 10);
  EXPECT_EQ(Count("SELECT Count(*) FROM ProjectsTipo WHERE GestForfSempl=-1"), 1);
  EXPECT_EQ(Count("SELECT Count(*) FROM ProjectsDispTipo WHERE Forfait=-1"), 1);
  for (int tf : {0, 1, 2})
    EXPECT_GE(
        Count(QStringLiteral("SELECT Count(*) FROM ProjectsDispTipo WHERE TipoFatt=%1").arg(tf)),
        1);
  // Each disposition type allows three to six service kinds, all of them existing.
  for (const Row& r :
       Rows("SELECT CPrjDispTipo, Count(*) FROM ProjectsDisp2Prest GROUP BY CPrjDispTipo")) {
    EXPECT_GE(r[1].toInt(), 3);
    EXPECT_LE(r[1].toInt(), 6);
  }
  EXPECT_EQ(Count("SELECT Count(*) FROM ProjectsDisp2Prest p LEFT JOIN [ABC:Prestazioni] s ON "
                  "p.CPrestazione=s.CTabGen "
                  "WHERE s.CTabGen IS NULL"),
            0);
  EXPECT_EQ(Count("SELECT Count(*) FROM ProjectsDispTar WHERE TarH<>0 AND (TarH<30 OR TarH>55)"),
            0);
  EXPECT_EQ(Count("SELECT Count(*) FROM ProjectsDispTar t INNER JOIN ProjectsDispTipo d ON "
                  "t.CPrjDispTipo=d.CPrjDispTipo "
                  "WHERE d.Forfait=-1 AND t.TarMin=22 AND t.TarMax=30"),
            1);
  EXPECT_GE(
      Count("SELECT Count(*) FROM (SELECT DISTINCT CAnag FROM ProjectsDispTarDett WHERE TAnag=1)"),
      2);
}

TEST_P(DemoDataTest, ModelsAreNumberedByYearInDateOrder) {
  const auto rows =
      Rows("SELECT CProject, DtIni, TAnag, CAnag FROM Projects ORDER BY DtIni, CProject");
  ASSERT_GE(rows.size(), 50u);
  std::map<int, int> ultimo;
  for (const Row& r : rows) {
    const int codice = r[0].toInt();
    const QDate data = r[1].toDateTime().date();
    EXPECT_EQ(codice / 100000, data.year()) << codice;
    EXPECT_EQ(codice % 100000, ++ultimo[data.year()]) << codice;
    EXPECT_LT(data, oggi_);
    EXPECT_GE(data, oggi_.addYears(-2));
    EXPECT_EQ(r[2].toInt(), 1);
  }
  // Every model belongs to an existing customer, so the register's join keeps them all.
  EXPECT_EQ(Count("SELECT Count(*) FROM Projects p INNER JOIN Anagrafica a ON p.TAnag=a.TAnag AND "
                  "p.CAnag=a.CAnag"),
            static_cast<int>(rows.size()));
  EXPECT_EQ(Count("SELECT Count(*) FROM Projects WHERE Stato=10"), 1);
  EXPECT_GE(Count("SELECT Count(*) FROM Projects WHERE Stato=9"), 1);
  EXPECT_GT(Count("SELECT Count(*) FROM Projects WHERE Stato=0"),
            static_cast<int>(rows.size()) / 2);
  EXPECT_GE(
      Count("SELECT Count(*) FROM Projects p INNER JOIN ProjectsTipo t ON p.CPrjTipo=t.CPrjTipo "
            "WHERE t.GestForfSempl=-1"),
      2);
}

TEST_P(DemoDataTest, DispositionsHaveEveryState) {
  std::set<int> stati;
  for (const Row& r : Rows("SELECT DISTINCT CStato FROM ProjectsDisp")) stati.insert(r[0].toInt());
  EXPECT_EQ(stati, (std::set<int>{0, 9, 10, 19}));
  EXPECT_EQ(Count("SELECT Count(*) FROM ProjectsDisp WHERE CStato=9 AND DtEnd IS NULL"), 0);
  // One to four per model, numbered from 1.
  for (const Row& r :
       Rows("SELECT p.CProject, Count(d.CDisp), Max(d.CDisp) FROM Projects p "
            "LEFT JOIN ProjectsDisp d ON p.CProject=d.CProject GROUP BY p.CProject")) {
    EXPECT_GE(r[1].toInt(), 1) << r[0].toInt();
    EXPECT_LE(r[1].toInt(), 4) << r[0].toInt();
    EXPECT_EQ(r[1].toInt(), r[2].toInt()) << r[0].toInt();
  }
  // The service kinds of a disposition are among those its type allows.
  EXPECT_EQ(
      Count("SELECT Count(*) FROM (ProjectsDispDett dd INNER JOIN ProjectsDisp d ON "
            "dd.CProject=d.CProject "
            "AND dd.CDisp=d.CDisp) LEFT JOIN ProjectsDisp2Prest a ON a.CPrjDispTipo=d.CPrjDispTipo "
            "AND a.CPrestazione=dd.CPrestazione WHERE a.CPrjDispTipo IS NULL"),
      0);
  EXPECT_EQ(Count("SELECT Count(*) FROM ProjectsDisp d LEFT JOIN ProjectsDispDett dd ON "
                  "dd.CProject=d.CProject "
                  "AND dd.CDisp=d.CDisp WHERE dd.CProject IS NULL"),
            0);
  // The price by the piece is set for the dispositions invoiced by the piece.
  EXPECT_EQ(Count("SELECT Count(*) FROM ProjectsDisp d INNER JOIN ProjectsDispTipo t ON "
                  "d.CPrjDispTipo=t.CPrjDispTipo "
                  "WHERE t.TipoFatt=2 AND NOT d.PzVend>0"),
            0);
  EXPECT_GE(Count("SELECT Count(*) FROM ProjectsDisp WHERE NStampa>0"), 1);
}

TEST_P(DemoDataTest, ActivitiesAreNumberedByTheYearOfTheirStart) {
  const auto rows = Rows(
      "SELECT CAttivita, DtIni, DtEnd, DtRealIni, DtRealEnd FROM ActivitiesProd "
      "ORDER BY DtIni, CAttivita");
  ASSERT_GE(rows.size(), 200u);
  std::map<int, int> ultimo;
  int inCorso = 0;
  for (const Row& r : rows) {
    const int codice = r[0].toInt();
    const QDateTime ini = r[1].toDateTime();
    EXPECT_EQ(codice / 100000, ini.date().year()) << codice;
    EXPECT_EQ(codice % 100000, ++ultimo[ini.date().year()]) << codice;
    EXPECT_EQ(r[3].toDateTime(), ini) << codice;
    EXPECT_LE(ini.date(), oggi_) << codice;
    if (!r[2].isValid()) {
      ++inCorso;
      EXPECT_FALSE(r[4].isValid()) << codice;
      continue;
    }
    const qint64 minuti = ini.secsTo(r[2].toDateTime()) / 60;
    EXPECT_GE(minuti, 30) << codice;
    EXPECT_LE(minuti, 480) << codice;
    EXPECT_EQ(r[4].toDateTime(), r[2].toDateTime()) << codice;
  }
  EXPECT_EQ(inCorso, 1);
  // The office card records at midnight; the forfait jobs record the clock.
  EXPECT_GT(Count("SELECT Count(*) FROM ActivitiesProd WHERE DtIni LIKE '% 00:00:00'"), 150);
  EXPECT_GE(
      Count("SELECT Count(*) FROM ActivitiesProd a INNER JOIN Projects p ON a.CProject=p.CProject "
            "INNER JOIN ProjectsTipo t ON p.CPrjTipo=t.CPrjTipo "
            "WHERE t.GestForfSempl=-1 AND NOT a.DtIni LIKE '% 00:00:00'"),
      3);
  // Each activity works on a disposition and a service kind of it, by an operator.
  EXPECT_EQ(
      Count("SELECT Count(*) FROM ActivitiesProd a LEFT JOIN ProjectsDispDett dd ON "
            "dd.CProject=a.CProject "
            "AND dd.CDisp=a.CDisp AND dd.CPrestazione=a.CPrestazione WHERE dd.CProject IS NULL"),
      0);
  EXPECT_EQ(Count("SELECT Count(*) FROM ActivitiesProd a LEFT JOIN Anagrafica o ON o.TAnag=10 AND "
                  "o.CAnag=a.CUtente "
                  "WHERE o.CAnag IS NULL"),
            0);
  EXPECT_GT(Count("SELECT Count(*) FROM ActivitiesProd WHERE CostoH=0"),
            Count("SELECT Count(*) FROM ActivitiesProd WHERE CostoH<>0"));
  EXPECT_GE(Count("SELECT Count(*) FROM ActivitiesProd WHERE CostoH<>0"), 1);
  EXPECT_GE(Count("SELECT Count(*) FROM ActivitiesProd WHERE Annot1 IS NOT NULL"), 1);
  EXPECT_EQ(Count("SELECT Count(*) FROM ActivitiesProd WHERE Stato<>0 OR TDocRif<>0 OR NDocRif<>0"),
            0);
}

TEST_P(DemoDataTest, SupplierOrdersAndDeliveries) {
  EXPECT_EQ(Count("SELECT Count(*) FROM DocForn WHERE TipoDoc=12"), 12);
  EXPECT_EQ(Count("SELECT Count(*) FROM DocForn WHERE TipoDoc=15"), 15);
  EXPECT_EQ(Count("SELECT Count(*) FROM DocForn WHERE (TipoDoc=12 OR TipoDoc=15) AND TAnag<>2"), 0);
  EXPECT_EQ(Count("SELECT Count(*) FROM [Doc:Forniture]"), 27);
  EXPECT_GE(Count("SELECT Count(*) FROM [Doc:FornitureDett] WHERE TipoDoc=12"), 12);
  EXPECT_GE(Count("SELECT Count(*) FROM [Doc:FornitureDett] WHERE TipoDoc=15"), 15);
  // Every delivery line points to an order line of the same supplier.
  EXPECT_EQ(Count("SELECT Count(*) FROM DocFornDett c WHERE c.TipoDoc=15 AND NOT EXISTS (SELECT 1 FROM "
                  "DocFornDett o "
                  "INNER JOIN DocForn od ON od.TipoDoc=o.TipoDoc AND od.NDoc=o.NDoc "
                  "INNER JOIN DocForn cd ON cd.TipoDoc=c.TipoDoc AND cd.NDoc=c.NDoc "
                  "WHERE o.TipoDoc=c.TipoDocRif AND o.NDoc=c.NDocRif AND o.Riga=c.RigaRif AND "
                  "c.TipoDocRif=12 "
                  "AND od.CAnag=cd.CAnag AND cd.Data>=od.Data)"),
            0);
  // What arrived on each order line is the sum of its deliveries.
  for (const Row& r :
       Rows("SELECT o.NDoc, o.Riga, o.Qta, o.QtaArr, (SELECT Sum(c.Qta) FROM DocFornDett c WHERE "
            "c.TipoDoc=15 AND c.TipoDocRif=12 AND c.NDocRif=o.NDoc AND c.RigaRif=o.Riga) "
            "FROM DocFornDett o WHERE o.TipoDoc=12")) {
    EXPECT_DOUBLE_EQ(r[3].toDouble(), r[4].isValid() ? r[4].toDouble() : 0.0)
        << r[0].toInt() << '/' << r[1].toInt();
    EXPECT_LE(r[3].toDouble(), r[2].toDouble()) << r[0].toInt() << '/' << r[1].toInt();
  }
  // Partial lines, one line never delivered, one line in two lots at different prices.
  EXPECT_GE(Count("SELECT Count(*) FROM DocFornDett WHERE TipoDoc=12 AND QtaArr>0 AND QtaArr<Qta"), 1);
  EXPECT_EQ(Count("SELECT Count(*) FROM DocFornDett WHERE TipoDoc=12 AND QtaArr=0"), 1);
  const auto lotti = Rows(
      "SELECT NDocRif, RigaRif, Count(*), Sum(Qta), Sum(Qta*PzVend) FROM DocFornDett "
      "WHERE TipoDoc=15 GROUP BY NDocRif, RigaRif HAVING Count(*)=2 AND Min(PzVend)=10 "
      "AND Max(PzVend)=14");
  ASSERT_EQ(lotti.size(), 1u);
  EXPECT_DOUBLE_EQ(lotti[0][3].toDouble(), 4.0);
  EXPECT_DOUBLE_EQ(lotti[0][4].toDouble(), 44.0);
  // One delivery under a causal that is not billed.
  EXPECT_EQ(
      Count(
          "SELECT Count(*) FROM (SELECT DISTINCT c.NDoc FROM DocFornDett c INNER JOIN [ABC:Causfatt] k "
          "ON c.CCaus=k.CTabGen WHERE c.TipoDoc=15 AND k.Bool8=0)"),
      1);
  // The order lines are tied to dispositions, with their service kinds.
  EXPECT_GE(Count("SELECT Count(*) FROM ProjectsDocDett WHERE TipoDoc=12"), 12);
  EXPECT_EQ(Count("SELECT Count(*) FROM ProjectsDocDett l LEFT JOIN ProjectsDisp d ON "
                  "l.CProject=d.CProject "
                  "AND l.CDisp=d.CDisp WHERE d.CProject IS NULL"),
            0);
  EXPECT_EQ(
      Count("SELECT Count(*) FROM ProjectsDocDett l LEFT JOIN DocFornDett r ON r.TipoDoc=l.TipoDoc "
            "AND r.NDoc=l.NDoc AND r.Scheda=l.Scheda AND r.Riga=l.Riga LEFT JOIN DocDett v ON v.TipoDoc=l.TipoDoc "
            "AND v.NDoc=l.NDoc AND v.Scheda=l.Scheda AND v.Riga=l.Riga WHERE r.TipoDoc IS NULL AND v.TipoDoc IS NULL"),
      0);
  for (const Row& r :
       Rows("SELECT TipoDoc, NDoc, Min(RigaD), Max(RigaD), Count(*) FROM ProjectsDocDett "
            "GROUP BY TipoDoc, NDoc")) {
    EXPECT_EQ(r[2].toInt(), 1);
    EXPECT_EQ(r[3].toInt(), r[4].toInt());
  }
  EXPECT_EQ(
      Count(
          "SELECT Count(*) FROM ProjectsDocDett l WHERE l.TipoDoc=12 AND NOT EXISTS (SELECT 1 FROM "
          "ProjectsDocDettPrest p WHERE p.TipoDoc=l.TipoDoc AND p.NDoc=l.NDoc AND p.RigaD=l.RigaD "
          "AND p.SubRiga=1)"),
      0);
}

TEST_P(DemoDataTest, DeliveryNotesInvoiceAndCustomerOrders) {
  const auto bolle =
      Rows("SELECT NDoc, Data, TAnag, ImpDoc, IVADoc, TotDoc FROM Doc WHERE TipoDoc=5");
  ASSERT_EQ(bolle.size(), 5u);
  for (const Row& b : bolle) {
    EXPECT_GE(b[1].toDateTime().date(), oggi_.addMonths(-2));
    EXPECT_EQ(b[2].toInt(), 1);
    EXPECT_GT(b[3].toDouble(), 0);
    EXPECT_NEAR(b[5].toDouble(), b[3].toDouble() + b[4].toDouble(), 0.005);
  }
  // The lines are billable and tied to dispositions invoiced by the piece of the note's customer.
  EXPECT_EQ(Count("SELECT Count(*) FROM DocDett r INNER JOIN [ABC:Causfatt] k ON r.CCaus=k.CTabGen "
                  "WHERE r.TipoDoc=5 AND k.Bool8<>-1"),
            0);
  EXPECT_EQ(
      Count(
          "SELECT Count(*) FROM ProjectsDocDett l INNER JOIN ProjectsDisp d ON "
          "l.CProject=d.CProject "
          "AND l.CDisp=d.CDisp INNER JOIN ProjectsDispTipo t ON d.CPrjDispTipo=t.CPrjDispTipo "
          "INNER JOIN Projects p ON p.CProject=l.CProject INNER JOIN Doc b ON b.TipoDoc=l.TipoDoc "
          "AND b.NDoc=l.NDoc WHERE l.TipoDoc=5 AND t.TipoFatt=2 AND p.CAnag=b.CAnag"),
      Count("SELECT Count(*) FROM DocDett WHERE TipoDoc=5"));
  // One note invoiced: the invoice lists it.
  const auto schede = Rows(
      "SELECT s.NDoc, s.NDocAss FROM DocSchede s INNER JOIN Doc f ON f.TipoDoc=s.TipoDoc "
      "AND f.NDoc=s.NDoc INNER JOIN Doc b ON b.TipoDoc=s.TipoDocAss AND b.NDoc=s.NDocAss "
      "WHERE s.TipoDoc=9 AND s.TipoDocAss=5 AND f.CAnag=b.CAnag AND f.TotDoc=b.TotDoc");
  ASSERT_EQ(schede.size(), 1u);
  EXPECT_EQ(Count("SELECT Count(*) FROM Doc WHERE TipoDoc=9"), 1);
  EXPECT_EQ(Count("SELECT Count(*) FROM DocSchede"), 1);
  // The deferred invoice refers to it and names an hourly disposition.
  const auto diff = Rows(
      "SELECT f.NDocRif, d.ID FROM FattDiff f INNER JOIN FattDiffDett d ON "
      "f.Progressivo=d.Progressivo WHERE f.TipoDocRif=9");
  ASSERT_EQ(diff.size(), 1u);
  EXPECT_EQ(diff[0][0].toInt(), schede[0][0].toInt());
  const QString id = diff[0][1].toString();
  ASSERT_EQ(id.size(), 12);
  EXPECT_EQ(
      Count(QStringLiteral(
                "SELECT Count(*) FROM ProjectsDisp d INNER JOIN ProjectsDispTipo t ON "
                "d.CPrjDispTipo=t.CPrjDispTipo WHERE t.TipoFatt=1 AND d.CProject=%1 AND d.CDisp=%2")
                .arg(id.left(9).toInt())
                .arg(id.mid(9).toInt())),
      1);
  // Two customer orders of the last 300 days; one model comes from one of their lines.
  const auto ordini = Rows("SELECT NDoc, Data FROM Doc WHERE TipoDoc=2");
  ASSERT_EQ(ordini.size(), 2u);
  for (const Row& o : ordini) EXPECT_GE(o[1].toDateTime().date(), oggi_.addDays(-300));
  EXPECT_EQ(
      Count("SELECT Count(*) FROM Projects p INNER JOIN DocDett r ON r.TipoDoc=p.TipoDocRif AND "
            "r.NDoc=p.NDocRif AND r.Riga=p.RigaRif INNER JOIN Doc o ON o.TipoDoc=r.TipoDoc AND "
            "o.NDoc=r.NDoc "
            "WHERE p.TipoDocRif=2 AND o.CAnag=p.CAnag AND r.Scheda=0"),
      1);
  EXPECT_EQ(Count("SELECT Count(*) FROM Projects WHERE TipoDocRif<>0"), 1);
  EXPECT_GE(Count("SELECT Count(*) FROM DocDett WHERE TipoDoc=2 AND Annullato>0"), 1);
}

// The component's loaders read the demo as a host would hand it over.
TEST_P(DemoDataTest, LoadersReadTheDemo) {
  gDB = db_;
  gDtIni = QDateTime(oggi_.addYears(-2), QTime(0, 0));
  gDTEnd = QDateTime(oggi_, QTime(0, 0));
  gStatus = -1;
  CaricaModelli(gDtIni, gDTEnd, gStatus);
  ASSERT_TRUE(gRcsProjects);
  EXPECT_EQ(gRcsProjects->RecordCount(), Count("SELECT Count(*) FROM Projects"));

  // The model tied to the order line that arrived in two lots: 3 at 10.00 and 1 at 14.00.
  const auto lotto = Rows(
      "SELECT l.CProject, l.CDisp FROM ProjectsDocDett l INNER JOIN DocFornDett c ON "
      "c.TipoDocRif=l.TipoDoc AND c.NDocRif=l.NDoc AND c.RigaRif=l.Riga "
      "WHERE l.TipoDoc=12 AND c.TipoDoc=15 AND c.PzVend=14");
  ASSERT_EQ(lotto.size(), 1u);
  RecordsetPtr lavExt, forn;
  CaricaLavEsterne(lavExt, lotto[0][0].toInt(), lotto[0][1].toInt());
  ASSERT_TRUE(lavExt);
  bool trovata = false;
  for (lavExt->MoveFirst(); !lavExt->Eof(); lavExt->MoveNext())
    if (CDbl(lavExt->Value("Importo")) == 10.0 && CDbl(lavExt->Value("QtaArr")) == 4.0) {
      trovata = true;
      EXPECT_DOUBLE_EQ(CDbl(lavExt->Value("ImpEff")), 11.0);
    }
  EXPECT_TRUE(trovata);
  CaricaForniture(forn, lavExt);
  ASSERT_TRUE(forn);
  EXPECT_GE(forn->RecordCount(), 2);
}

INSTANTIATE_TEST_SUITE_P(Giorni, DemoDataTest,
                         ::testing::Values(kOggi, QDate(2024, 1, 2), QDate(2025, 12, 27),
                                           QDate(2026, 8, 16)),
                         [](const ::testing::TestParamInfo<QDate>& giorno) {
                           return giorno.param.toString(QStringLiteral("yyyyMMdd")).toStdString();
                         });

TEST(DemoData, SameDaySameData) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  auto a = ApriDatabaseDiProva(dir.filePath("a.db"));
  auto b = ApriDatabaseDiProva(dir.filePath("b.db"));
  auto c = ApriDatabaseDiProva(dir.filePath("c.db"));
  CreaDatiDemo(*a, kOggi);
  CreaDatiDemo(*b, kOggi);
  CreaDatiDemo(*c, kOggi.addDays(1));
  EXPECT_EQ(Digest(*a), Digest(*b));
  EXPECT_NE(Digest(*a), Digest(*c));
  a.reset();
  b.reset();
  c.reset();
  for (const char* f : {"a.db", "b.db", "c.db"}) CancellaDatabaseDiProva(dir.filePath(f));
}

TEST(DemoData, LargeDatabaseHasTheCountsAsked) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  auto db = ApriDatabaseDiProva(dir.filePath("grande.db"));
  CreaDatiGrandi(*db, 2000, 20000, kOggi);
  auto count = [&](const char* sql) { return db->Select(Sql(sql)).rows.front().front().toInt(); };
  EXPECT_EQ(count("SELECT Count(*) FROM Projects"), 2000);
  EXPECT_EQ(count("SELECT Count(*) FROM ActivitiesProd"), 20000);
  const int disp = count("SELECT Count(*) FROM ProjectsDisp");
  EXPECT_GE(disp, 2000);
  EXPECT_LE(disp, 6000);
  EXPECT_EQ(count("SELECT Count(*) FROM Anagrafica WHERE TAnag=10 AND Eliminato=-1"), 1);
  // Activities sit on existing dispositions and service kinds, numbered by year in date order.
  EXPECT_EQ(
      count("SELECT Count(*) FROM ActivitiesProd a LEFT JOIN ProjectsDispDett dd ON "
            "dd.CProject=a.CProject "
            "AND dd.CDisp=a.CDisp AND dd.CPrestazione=a.CPrestazione WHERE dd.CProject IS NULL"),
      0);
  std::map<int, int> ultimo;
  for (const Row& r :
       db->Select(Sql("SELECT CAttivita, DtIni FROM ActivitiesProd ORDER BY DtIni, CAttivita"))
           .rows) {
    const int anno = r[1].toDateTime().date().year();
    ASSERT_EQ(r[0].toInt(), anno * 100000 + ++ultimo[anno]);
  }
  ultimo.clear();
  for (const Row& r :
       db->Select(Sql("SELECT CProject, DtIni FROM Projects ORDER BY DtIni, CProject")).rows) {
    const int anno = r[1].toDateTime().date().year();
    ASSERT_EQ(r[0].toInt(), anno * 100000 + ++ultimo[anno]);
  }
  // A few models gather many activities.
  EXPECT_GE(
      count("SELECT Max(n) FROM (SELECT Count(*) AS n FROM ActivitiesProd GROUP BY CProject)"),
      100);
  db.reset();
  CancellaDatabaseDiProva(dir.filePath("grande.db"));
}
