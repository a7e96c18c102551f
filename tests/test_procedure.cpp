// Data access and runtime services: the SQL of the system on the engine,
// recordsets of the database, action queries, copies, quoting, the error log,
// the configuration file, folders and the environment.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QXmlStreamReader>

#include "ModADO.h"
#include "SqlAdapt.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Models(TestDb& t) {
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH) VALUES (1, 1, 'Officina Rossi', 0), "
         "(1, 2, 'Carrozzeria Bianchi', 0), (10, 1, 'Mario Verdi', 21.5), (10, 2, 'Luca Neri', 18)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Stampo', 0), (2, 'Forfait', -1)");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00', 0), "
         "(202500002, 'Coperchio', 1, 1, 2, '2025-02-10 00:00:00', 9), "
         "(202500003, 'Staffa', 1, 1, 1, '2025-03-10 00:00:00', 10), "
         "(202400001, 'Vecchio stampo', 1, 1, 2, '2024-05-10 00:00:00', 0)");
}

}  // namespace

TEST(SqlAdapt, OldDialectBecomesTheEngines) {
  TestDb t;
  const bool pg = t.db->engine() == Engine::PostgreSQL;
  // On PostgreSQL every name goes quoted, spelled as the schema spells it.
  const auto atteso = [&](const char* sqlite, const char* postgres) {
    return QString::fromUtf8(pg ? postgres : sqlite);
  };
  EXPECT_EQ(t.db->Adapt("SELECT [Doc:Forniture].NDoc FROM [Doc:Forniture]"),
            atteso("SELECT \"Doc:Forniture\".NDoc FROM \"Doc:Forniture\"",
                   "SELECT \"Doc:Forniture\".\"NDoc\" FROM \"Doc:Forniture\""));
  EXPECT_EQ(t.db->Adapt("Format([ActivitiesProd]![DtIni],\"dd/mm/yyyy\")"),
            atteso("Format(\"ActivitiesProd\".\"DtIni\",'dd/mm/yyyy')",
                   "\"Format\"(\"ActivitiesProd\".\"DtIni\",'dd/mm/yyyy')"));
  EXPECT_EQ(t.db->Adapt("DELETE * FROM Projects WHERE CProject=1"),
            atteso("DELETE FROM Projects WHERE CProject=1", "DELETE FROM \"Projects\" WHERE \"CProject\"=1"));
  EXPECT_EQ(t.db->Adapt("DELETE ActivitiesProd.CAttivita FROM ActivitiesProd WHERE (((ActivitiesProd.CAttivita)=5))"),
            atteso("DELETE FROM ActivitiesProd WHERE (((ActivitiesProd.CAttivita)=5))",
                   "DELETE FROM \"ActivitiesProd\" WHERE (((\"ActivitiesProd\".\"CAttivita\")=5))"));
  EXPECT_EQ(t.db->Adapt("WHERE DtIni Between #01/31/2025# And #12/31/2025 23:59:00#"),
            atteso("WHERE DtIni Between '2025-01-31 00:00:00' And '2025-12-31 23:59:00'",
                   "WHERE \"DtIni\" Between TIMESTAMP '2025-01-31 00:00:00' And TIMESTAMP '2025-12-31 23:59:00'"));
  EXPECT_EQ(t.db->Adapt("WHERE DArt Like \"*Lavor?\""),
            atteso("WHERE DArt Like '%Lavor_'", "WHERE \"DArt\" ILIKE '%Lavor_'"));
  EXPECT_EQ(t.db->Adapt("UPDATE Projects SET Projects.Stato = 9 WHERE (((Projects.CProject)=1)); "),
            atteso("UPDATE Projects SET Stato = 9 WHERE (((Projects.CProject)=1)); ",
                   "UPDATE \"Projects\" SET \"Stato\" = 9 WHERE (((\"Projects\".\"CProject\")=1)); "));
  EXPECT_EQ(t.db->Adapt("UPDATE DocDett SET DocDett.PzVend = 2, [DocDett].[PzVendP] = 2 WHERE DocDett.Riga=1"),
            atteso("UPDATE DocDett SET PzVend = 2, \"PzVendP\" = 2 WHERE DocDett.Riga=1",
                   "UPDATE \"DocDett\" SET \"PzVend\" = 2, \"PzVendP\" = 2 WHERE \"DocDett\".\"Riga\"=1"));
  EXPECT_EQ(t.db->Adapt("SELECT \"It's\" AS X"), atteso("SELECT 'It''s' AS X", "SELECT 'It''s' AS \"X\""));
  // Constants among the terms of GROUP BY stay constants, not places of columns.
  EXPECT_EQ(t.db->Adapt("SELECT NDoc, \"\" AS T, 0 AS M FROM Doc GROUP BY NDoc, \"\", 0 HAVING NDoc=1"),
            atteso("SELECT NDoc, '' AS T, 0 AS M FROM Doc GROUP BY NDoc, CAST('' AS TEXT), CAST(0 AS INTEGER) HAVING NDoc=1",
                   "SELECT \"NDoc\", '' AS \"T\", 0 AS \"M\" FROM \"Doc\" GROUP BY \"NDoc\", CAST('' AS TEXT), "
                   "CAST(0 AS INTEGER) HAVING \"NDoc\"=1"));
  const QString oggi = t.db->DateLiteral(Today().addDays(-1000));
  EXPECT_EQ(t.db->Adapt("WHERE ((Doc.Data)>Date()-1000)"),
            atteso("WHERE ((Doc.Data)>", "WHERE ((\"Doc\".\"Data\")>") + oggi + ")");
}

// What only PostgreSQL needs: numbered values, IIf as CASE, the schema's
// spelling of a name written in another case, the engine's own functions left
// bare, and Nulls where SQLite puts them in an order.
TEST(SqlAdapt, PostgreSQLsOwnForms) {
  TestDb t;
  if (t.db->engine() != Engine::PostgreSQL) GTEST_SKIP() << "for PostgreSQL";
  EXPECT_EQ(t.db->Adapt("SELECT cproject FROM projects WHERE DProject=? AND CAnag=?"),
            "SELECT \"CProject\" FROM \"Projects\" WHERE \"DProject\"=$1 AND \"CAnag\"=$2");
  EXPECT_EQ(t.db->Adapt("SELECT IIf([Doc]![TipoDoc]=5,\"D\",IIf(X>1,\"F\",\"G\")) AS T"),
            "SELECT  CASE  WHEN (\"Doc\".\"TipoDoc\"=5) THEN 'D' ELSE  CASE  WHEN (\"X\">1) THEN 'F' ELSE 'G' END "
            " END  AS \"T\"");
  EXPECT_EQ(t.db->Adapt("SELECT Count(*), Max(CAttivita) FROM ActivitiesProd"),
            "SELECT Count(*), Max(\"CAttivita\") FROM \"ActivitiesProd\"");
  EXPECT_EQ(t.db->Adapt("SELECT NDoc FROM Doc ORDER BY NDoc LIMIT 1"),
            "SELECT \"NDoc\" FROM \"Doc\" ORDER BY \"NDoc\"  NULLS FIRST LIMIT 1");
  EXPECT_EQ(t.db->Adapt("SELECT * FROM Doc ORDER BY Data DESC, NDoc"),
            "SELECT * FROM \"Doc\" ORDER BY \"Data\" DESC NULLS LAST, \"NDoc\" NULLS FIRST");
  EXPECT_EQ(t.db->Adapt("SELECT (SELECT Max(Riga) FROM DocDett ORDER BY Riga) AS R FROM Doc ORDER BY NDoc;"),
            "SELECT (SELECT Max(\"Riga\") FROM \"DocDett\" ORDER BY \"Riga\" NULLS FIRST) AS \"R\" FROM \"Doc\" "
            "ORDER BY \"NDoc\" NULLS FIRST;");
  EXPECT_EQ(t.db->Adapt("INSERT INTO AnagTipo (TAnag) VALUES (1)"), "INSERT INTO \"AnagTipo\" (\"TAnag\") VALUES (1)");
  // A query in FROM gets a name when it has none.
  EXPECT_EQ(t.db->Adapt("SELECT Max(n) FROM (SELECT Count(*) AS n FROM Doc GROUP BY TAnag)"),
            "SELECT Max(\"n\") FROM (SELECT Count(*) AS \"n\" FROM \"Doc\" GROUP BY \"TAnag\") AS \"q1\"");
  EXPECT_EQ(t.db->Adapt("SELECT x.n FROM (SELECT 1 AS n) x"), "SELECT \"x\".\"n\" FROM (SELECT 1 AS \"n\") \"x\"");
}

TEST(SqlAdapt, FunctionsOfTheSystemRunInTheEngine) {
  TestDb t;
  Models(t);
  EXPECT_EQ(t.Scalar("SELECT Format([Projects]![DtIni],\"dd/mm/yyyy\") FROM Projects WHERE CProject=202500002")
                .toString(),
            "10/02/2025");
  EXPECT_EQ(t.Scalar("SELECT Year(DtIni) FROM Projects WHERE CProject=202400001").toInt(), 2024);
  EXPECT_EQ(t.Scalar("SELECT Month(DtIni) FROM Projects WHERE CProject=202500003").toInt(), 3);
  EXPECT_EQ(t.Scalar("SELECT DateDiff(\"n\", #01/01/2025 09:50#, #01/01/2025 10:10#)").toInt(), 20);
  EXPECT_EQ(t.Scalar("SELECT DateDiff(\"ww\", #12/29/2023#, #01/25/2024#)").toInt(), 4);
  EXPECT_EQ(t.Scalar("SELECT Format(202500001, \"0000-00000\")").toString(), "2025-00001");
  EXPECT_EQ(t.Scalar("SELECT IIf(Stato=9,\"D\",\"F\") FROM Projects WHERE CProject=202500002").toString(), "D");
  // Texts compare without regard to case, as the host's database does.
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE DProject=\"STAMPO POMPA\"").toInt(), 1);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE DProject Like \"stampo*\"").toInt(), 1);
  // Like on a date or a number reads its text as the file stores it.
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE DtIni Like \"2025-0?-10 00:00:00\"").toInt(), 3);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE CProject Like \"2024*\"").toInt(), 1);
}

// The type of a computed column is read through calls inside calls up to a
// bound; deeper, the type is left to the values.
TEST(SqlAdapt, TypesOfCallsNestedDeeperThanTheBoundAreUnknown) {
  const auto annidata = [](int livelli) {
    QString e = "Qta";
    for (int i = 0; i < livelli; ++i) e = "Max(" + e + ")";
    return e + " AS M";
  };
  int size = 0;
  EXPECT_EQ(DaoTypeOfExpression(annidata(3), &size), dbDouble);
  // Texts joined are a text, whatever signs the texts hold.
  EXPECT_EQ(DaoTypeOfExpression("TipoDoc & '/' & NDoc AS K", &size), dbText);
  EXPECT_EQ(DaoTypeOfExpression("Qta * 2", &size), dbDouble);
  EXPECT_EQ(DaoTypeOfExpression(annidata(1000), &size), 0);
}

TEST(ApriRecordset, TypesComeFromTheTablesAndTheExpressions) {
  TestDb t;
  Models(t);
  RecordsetPtr rs;
  ApriRecordset(rs, "SELECT CProject, DProject, DtIni, Stato, 0 AS Zero, \"\" AS Vuoto, Format(DtIni,\"yyyy\") AS Anno "
                    "FROM Projects WHERE CProject=-1",
                nullptr, dbOpenSnapshot);
  ASSERT_TRUE(rs);
  EXPECT_EQ(rs->RecordCount(), 0);
  EXPECT_EQ(rs->FieldInfo(0).DaoType, dbLong);
  EXPECT_EQ(rs->FieldInfo(1).DaoType, dbText);
  EXPECT_EQ(rs->FieldInfo(1).DefinedSize, 255);
  EXPECT_EQ(rs->FieldInfo(2).DaoType, dbDate);
  EXPECT_EQ(rs->FieldInfo(3).DaoType, dbInteger);
  EXPECT_EQ(rs->FieldInfo(4).DaoType, dbLong);
  EXPECT_EQ(rs->FieldInfo(5).DaoType, dbText);
  EXPECT_EQ(rs->FieldInfo(6).DaoType, dbText);
  ApriRecordset(rs, "SELECT Max(DtIni) AS MaxDt, Sum(CProject) AS S FROM Projects", nullptr, dbOpenSnapshot);
  EXPECT_EQ(rs->FieldInfo(0).DaoType, dbDate);
  EXPECT_EQ(rs->Value(QStringLiteral("MaxDt")).toDateTime(), D(2025, 3, 10));
}

TEST(ApriRecordset, EmptyTextLeavesNothingAndThreeFailuresLeaveNull) {
  TestDb t;
  RecordsetPtr rs;
  ApriRecordset(rs, QString(), nullptr, dbOpenSnapshot);
  EXPECT_FALSE(rs);
  const int before = t.db->StatementCount();
  ApriRecordset(rs, "SELECT * FROM Nowhere", nullptr, dbOpenSnapshot);
  EXPECT_FALSE(rs);
  EXPECT_EQ(t.db->StatementCount() - before, 3);
  // Nothing of these attempts reaches the log.
  EXPECT_FALSE(QDir(t.db->PathDB() + "ErrLogs").exists());
}

// The recordset of a query, checked against the engine's own reading of it:
// as many rows, each value of the same type and value. Null when it isn't.
RecordsetPtr LettoComeDalMotore(TestDb& t, const Sql& testo, size_t righe) {
  const Database::Result atteso = t.db->Select(testo);
  EXPECT_EQ(atteso.rows.size(), righe);
  RecordsetPtr rs;
  ApriRecordset(rs, testo, nullptr, dbOpenSnapshot);
  if (!rs || atteso.rows.size() != righe || rs->RecordCount() != static_cast<int>(righe)) {
    ADD_FAILURE() << "the recordset is not the engine's reading";
    return {};
  }
  size_t r = 0;
  for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext(), ++r)
    for (int f = 0; f < rs->FieldCount(); ++f) {
      EXPECT_EQ(rs->Value(f).typeId(), atteso.rows[r][f].typeId()) << r << ' ' << f;
      EXPECT_EQ(rs->Value(f), atteso.rows[r][f]) << r << ' ' << f;
    }
  return rs;
}

// Texts and dates that repeat over many rows, more different ones than the
// reader keeps at hand, read back as each row holds them; the engine's own
// reading of the same rows is the reference.
TEST(ApriRecordset, ManyRowsOfRepeatedAndDifferentTextsReadAsTheyAre) {
  TestDb t;
  const QString lungo(300, QLatin1Char('z'));
  t.db->BeginTrans();
  for (int i = 0; i < 3000; ++i) {
    Sql s("INSERT INTO Projects (CProject, DProject, TAnag, CAnag, DtIni, Stato, Annot) VALUES (");
    s += Sql::Param(i + 1) + Sql(", ") + Sql::Param(QString("modello %1").arg(i % 700)) + Sql(", 1, 1, ") +
         Sql::Param(D(2024, 1, 1 + i % 31, i % 24, 0)) + Sql(", 0, ") +
         (i % 5 ? Sql::Param(i % 2 ? lungo + QString::number(i) : QString("nota '%1'").arg(i % 3)) : Sql("Null")) +
         Sql(")");
    t.db->Execute(s);
  }
  t.db->CommitTrans();
  RecordsetPtr rs =
      LettoComeDalMotore(t, Sql("SELECT CProject, DProject, DtIni, Annot FROM Projects ORDER BY CProject"), 3000);
  ASSERT_TRUE(rs);
  int i = 0;
  for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext(), ++i) {
    ASSERT_EQ(rs->Value("CProject").toInt(), i + 1);
    EXPECT_EQ(rs->Value("DProject"), QVariant(QString("modello %1").arg(i % 700))) << i;
    EXPECT_EQ(rs->Value("DtIni").toDateTime(), D(2024, 1, 1 + i % 31, i % 24, 0)) << i;
    if (i % 5 == 0) EXPECT_FALSE(rs->Value("Annot").isValid()) << i;
    else EXPECT_EQ(rs->Value("Annot").toString(), i % 2 ? lungo + QString::number(i) : QString("nota '%1'").arg(i % 3)) << i;
  }
}

// Each kind of column, Null and not, and computed columns whose type only
// their values tell, read into a recordset exactly as the engine's own
// reading gives them.
TEST(ApriRecordset, EveryKindOfValueReadsAsTheEngineGivesIt) {
  TestDb t;
  Models(t);
  t.db->Execute(Sql("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, Data, Qta, PzVend, DefPzVend, CStato, DtEnd, "
                    "NStampa, Annot) VALUES (202500002, 1, 'Prima', '2025-02-28 23:59:59', 2.5, 0, -1, 3, Null, 0, "
                    "'nota'), (202500002, 2, Null, Null, -0.125, 1234567.8912, 0, 0, '2025-12-31 00:00:00', 32767, "
                    "Null)"));
  RecordsetPtr rs = LettoComeDalMotore(
      t,
      Sql("SELECT CProject, CDisp, DDisp, Data, Qta, PzVend, DefPzVend, CStato, DtEnd, NStampa, Annot, "
          "Coalesce(DtEnd, Data) AS Quando, Coalesce(Annot, DDisp) AS Testo, Coalesce(NStampa, CStato) AS N "
          "FROM ProjectsDisp ORDER BY CDisp"),
      2);
  ASSERT_TRUE(rs);
  rs->MoveFirst();
  EXPECT_EQ(rs->Value("DefPzVend"), QVariant(true));
  EXPECT_EQ(rs->Value("CStato"), QVariant(3));
  EXPECT_EQ(rs->Value("Qta"), QVariant(2.5));
  EXPECT_EQ(rs->Value("Data"), QVariant(D(2025, 2, 28, 23, 59, 59)));
  EXPECT_FALSE(rs->Value("DtEnd").isValid());
  EXPECT_EQ(rs->Value("Quando"), QVariant(D(2025, 2, 28, 23, 59, 59)));
  EXPECT_EQ(rs->Value("Testo"), QVariant(QString("nota")));
  rs->MoveNext();
  EXPECT_EQ(rs->Value("DefPzVend"), QVariant(false));
  EXPECT_EQ(rs->Value("PzVend"), QVariant(1234567.8912));
  EXPECT_EQ(rs->Value("NStampa"), QVariant(32767));
  EXPECT_FALSE(rs->Value("DDisp").isValid());
  EXPECT_FALSE(rs->Value("Testo").isValid());
  EXPECT_EQ(rs->Value("Quando"), QVariant(D(2025, 12, 31)));
  EXPECT_EQ(rs->Value("N"), QVariant(32767));
  // The computed columns in the forms of their fields, whichever way the engine came to them.
  EXPECT_EQ(rs->Value("N").typeId(), QMetaType::Int);
  EXPECT_EQ(rs->Value("Quando").typeId(), QMetaType::QDateTime);
  rs->MoveFirst();
  EXPECT_EQ(rs->Value("Testo").typeId(), QMetaType::QString);
  EXPECT_EQ(rs->Value("N").typeId(), QMetaType::Int);
}

// A statement that fails after its first rows were read leaves no recordset,
// counts as a failure, and leaves the connection, and the transaction
// around it if any, as they were. SQLite gives Null for a division by zero instead.
TEST(ApriRecordset, AFailureAfterTheFirstRowsLeavesTheConnectionAsItWas) {
  TestDb t;
  Models(t);
  const Sql testo("SELECT CProject, 1 / (CProject - 202500002) AS X FROM Projects");
  t.db->BeginTrans();
  t.db->Execute(Sql("UPDATE Projects SET DProject='Dentro' WHERE CProject=202400001"));
  const int prima = t.db->Failures();
  RecordsetPtr rs;
  ApriRecordset(rs, testo, nullptr, dbOpenSnapshot);
  if (t.db->engine() == Engine::PostgreSQL) {
    EXPECT_FALSE(rs);
    EXPECT_GT(t.db->Failures(), prima);
  } else {
    ASSERT_TRUE(rs);
    rs->SetFilter("CProject = 202500002");
    EXPECT_FALSE(rs->Value("X").isValid());
  }
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202400001").toString(), "Dentro");
  t.db->CommitTrans();
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202400001").toString(), "Dentro");
  // Outside a transaction too, and the connection answers the next query.
  ApriRecordset(rs, testo, nullptr, dbOpenSnapshot);
  EXPECT_EQ(static_cast<bool>(rs), t.db->engine() != Engine::PostgreSQL);
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202400001").toString(), "Dentro");
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects").toInt(),
            static_cast<int>(t.db->Select(Sql("SELECT CProject FROM Projects")).rows.size()));
}

// A query whose fields a recordset can't take (two of one name) fails as
// the recordset's, not as the engine's: no failed statement is counted.
TEST(ApriRecordset, FieldsARecordsetCannotTakeAreNotAFailureOfTheEngine) {
  TestDb t;
  Models(t);
  RecordsetPtr rs;
  const int prima = t.db->Failures();
  ApriRecordset(rs, "SELECT CProject, CProject FROM Projects", nullptr, dbOpenSnapshot);
  EXPECT_FALSE(rs);
  EXPECT_EQ(t.db->Failures(), prima);
  EXPECT_EQ(t.db->Select(Sql("SELECT CProject, CProject FROM Projects")).fields.size(), 2u);
}

TEST(ApriRecordset, DynasetWritesToItsTable) {
  TestDb t;
  Models(t);
  RecordsetPtr rs;
  ApriRecordset(rs, "SELECT * FROM Projects WHERE CProject=202600001", nullptr, dbOpenDynaset);
  ASSERT_TRUE(rs && rs->HasWriteCursor());
  rs->AddNew();
  rs->SetValue("CProject", 202600001);
  rs->SetValue("DProject", "Nuovo modello");
  rs->SetValue("DtIni", D(2026, 1, 5));
  rs->Update();
  // Stato was never written: the table's default gives 0.
  EXPECT_EQ(t.Scalar("SELECT Stato FROM Projects WHERE CProject=202600001").toInt(), 0);
  if (t.db->engine() == Engine::PostgreSQL)
    EXPECT_EQ(t.Scalar("SELECT pg_typeof(DtIni) || ':' || DtIni FROM Projects WHERE CProject=202600001").toString(),
              "timestamp without time zone:2026-01-05 00:00:00");
  else EXPECT_EQ(t.Scalar("SELECT typeof(DtIni) || ':' || DtIni FROM Projects WHERE CProject=202600001").toString(),
            "text:2026-01-05 00:00:00");

  ApriRecordset(rs, "SELECT * FROM Projects WHERE CProject=202500001", nullptr, dbOpenDynaset);
  rs->Edit();
  rs->SetValue("DProject", "Stampo pompa grande");
  rs->Update();
  EXPECT_EQ(t.Scalar("SELECT DProject FROM Projects WHERE CProject=202500001").toString(), "Stampo pompa grande");
  rs->Delete();
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE CProject=202500001").toInt(), 0);

  // Without the key in the recordset the row is found by the statement's condition.
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CStato) VALUES (202500002, 1, 'A', 0), (202500002, 2, 'B', 0)");
  ApriRecordset(rs, "SELECT DtEnd, CStato FROM ProjectsDisp WHERE CProject=202500002 AND CDisp=2 ", nullptr,
                dbOpenDynaset);
  rs->Edit();
  rs->SetValue("DtEnd", D(2025, 6, 30));
  rs->SetValue("CStato", 9);
  rs->Update();
  EXPECT_EQ(t.Scalar("SELECT CStato FROM ProjectsDisp WHERE CProject=202500002 AND CDisp=2").toInt(), 9);
  EXPECT_EQ(t.Scalar("SELECT CStato FROM ProjectsDisp WHERE CProject=202500002 AND CDisp=1").toInt(), 0);
}

TEST(QueryExe, FailingStatementCommitsAnEmptyTransactionAndLogs) {
  TestDb t;
  const QString r = QueryExe("UPDATE Nowhere SET X=1");
  EXPECT_EQ(r, "");
  EXPECT_EQ(t.db->TransactionDepth(), 0);
  const QStringList lines = t.LogLines("Procedure", "QueryExe");
  ASSERT_EQ(lines.size(), 1) << lines.join('\n').toStdString();
  EXPECT_TRUE(lines.at(0).contains(t.SuPostgres() ? " - QueryExe: relation \"Nowhere\" does not exist"
                                                  : " - QueryExe: no such table: Nowhere"))
      << lines.at(0).toStdString();
  EXPECT_TRUE(lines.at(0).endsWith("(3078)")) << lines.at(0).toStdString();
  // The engine is free again: a later statement works.
  QueryExe("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
  EXPECT_EQ(t.Scalar("SELECT Descrizione FROM AnagTipo").toString(), "Clienti");
}

// An inner level goes back alone; the outer one commits what it wrote.
TEST(Transactions, InnerRollbackLeavesTheOuterLevel) {
  TestDb t;
  t.db->BeginTrans();
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
  t.db->BeginTrans();
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (2, 'Fornitori')");
  t.db->Rollback();
  EXPECT_EQ(t.db->TransactionDepth(), 1);
  t.db->CommitTrans();
  EXPECT_EQ(t.db->TransactionDepth(), 0);
  EXPECT_EQ(t.Elenco("SELECT Descrizione FROM AnagTipo"), "Clienti");
}

// A statement the engine refuses in the middle of a Transazione takes the
// whole of it back; a clean one commits.
TEST(Transazione, AFailedStatementTakesBackEverythingSinceTheStart) {
  TestDb t;
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
  Guard g("Prova", "Salva");
  {
    Transazione tr(g);
    QueryExe("DELETE * FROM AnagTipo");
    QueryExe("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Nuovi'), (1, 'Doppi')");  // key repeated
    EXPECT_FALSE(tr.Fine());
  }
  EXPECT_EQ(t.Elenco("SELECT Descrizione FROM AnagTipo"), "Clienti");
  EXPECT_EQ(t.LogLines("Procedure", "QueryExe").size(), 1);
  {
    Transazione tr(g);
    QueryExe("DELETE * FROM AnagTipo");
    QueryExe("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Nuovi')");
    EXPECT_TRUE(tr.Fine());
  }
  EXPECT_EQ(t.Elenco("SELECT Descrizione FROM AnagTipo"), "Nuovi");
  EXPECT_EQ(t.db->TransactionDepth(), 0);
}

// The engine ends the transaction by itself when the database can't grow:
// the failure is logged once with the engine's words, and the commit that
// follows has nothing to end.
TEST(QueryExe, DatabaseThatCannotGrowLogsTheEnginesMessageOnce) {
  TestDb t;
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202500001, 'Stampo', 1, 1, 1, '2025-01-10 00:00:00')");
  t.DatabasePieno("Projects");
  QueryExe(Sql("UPDATE Projects SET Annot=") + Sql::Param(QString(200000, 'a')));
  const QStringList lines = t.LogLines("Procedure", "QueryExe");
  ASSERT_EQ(lines.size(), 1);
  EXPECT_TRUE(lines[0].contains(t.MessaggioPieno())) << lines[0].toStdString();
  EXPECT_EQ(t.db->TransactionDepth(), 0);
  EXPECT_TRUE(IsNull(t.Scalar("SELECT Annot FROM Projects")));
}

// A write that fails on a full disk still leaves its line in the log, with
// the engine's own words. The disk is a small file system in a mount
// namespace of the test's own; where the machine doesn't allow one, the test
// can't run and says so.
TEST(ErrLog, FullDiskStillGetsTheEnginesMessage) {
  QTemporaryDir dir;
  QProcess p;
  p.start(QStringLiteral("unshare"),
          {"--mount", "--propagation", "private", "sh", "-c",
           "mount -t tmpfs -o size=512k tmpfs \"$1\" || exit 77; exec \"$2\" \"$1\"", "sh", dir.path(),
           QStringLiteral(DISCO_PIENO)});
  ASSERT_TRUE(p.waitForFinished(60000));
  const QString out = QString::fromLocal8Bit(p.readAllStandardOutput());
  if (!out.contains("esito: fine")) {
    ASSERT_TRUE(p.exitCode() == 77 || p.exitCode() == 1) << out.toStdString() << p.readAllStandardError().toStdString();
    GTEST_SKIP() << "no private file system here: " << p.readAllStandardError().toStdString();
  }
  EXPECT_TRUE(out.contains("riserva: 65536")) << out.toStdString();
  EXPECT_TRUE(out.contains(" - QueryExe: database or disk is full [")) << out.toStdString();
}

// A closed database refuses statements instead of reaching a connection that is gone.
TEST(Database, ClosedRefusesStatements) {
  TestDb t;
  t.db->Close();
  EXPECT_FALSE(t.db->IsOpen());
  EXPECT_THROW(t.db->Execute(Sql("SELECT 1")), VbError);
  EXPECT_FALSE(t.db->TableExists("Projects"));
  EXPECT_TRUE(t.db->KeyOf("Estranea").isEmpty());
  QueryExe("DELETE * FROM Projects");
  EXPECT_EQ(t.LogLines("Procedure", "QueryExe").size(), 3);  // begin, statement, commit
}

TEST(TestoSql, EmptyTextIsNullAndFindsNothing) {
  TestDb t;
  Models(t);
  EXPECT_EQ(TestoSql("").Text(), "Null");
  RecordsetPtr rs;
  t.Exec("UPDATE Projects SET DProject='' WHERE CProject=202500003");
  ApriRecordset(rs, Sql("SELECT CProject FROM Projects WHERE DProject=") + TestoSql(""), nullptr, dbOpenSnapshot);
  EXPECT_EQ(rs->RecordCount(), 0);
  ApriRecordset(rs, Sql("SELECT CProject FROM Projects WHERE DProject=") + TestoSql("Coperchio"), nullptr,
                dbOpenSnapshot);
  EXPECT_EQ(rs->RecordCount(), 1);
  // A double quote becomes two single quotes, and an apostrophe stays a plain character.
  EXPECT_EQ(TestoSql("Pezzo 3\" d'acciaio").Literal(), "'Pezzo 3'''' d''acciaio'");
  t.Exec("UPDATE Projects SET DProject='L''anello' WHERE CProject=202500003");
  ApriRecordset(rs, Sql("SELECT CProject FROM Projects WHERE DProject=") + TestoSql("L'anello"), nullptr,
                dbOpenSnapshot);
  EXPECT_EQ(rs->RecordCount(), 1);
}

TEST(DataSql, DayAtMidnightOrEmpty) {
  TestDb t;
  // The engine's literal of the day at midnight.
  EXPECT_EQ(DataSql(D(2025, 12, 31, 15, 30)), t.db->engine() == Engine::PostgreSQL
                                                  ? "TIMESTAMP '2025-12-31 00:00:00'"
                                                  : "'2025-12-31 00:00:00'");
  EXPECT_EQ(DataSql(QVariant("not a date")), "");
  EXPECT_EQ(DataSql(QVariant()), "");
  EXPECT_EQ(DataSqlIso(D(2025, 3, 7, 10, 0)), "'2025-03-07'");
}

TEST(DAO2ADO, MapsTheTypesAndCopiesTheRows) {
  TestDb t;
  Models(t);
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, Sigla, GestForfSempl) VALUES (3, 'Prova', 'PR', 0)");
  RecordsetPtr dao, ado;
  ApriRecordset(dao, "SELECT * FROM Projects ORDER BY CProject", nullptr, dbOpenSnapshot);
  DAO2ADO(dao, ado, {}, false, false, true);
  ASSERT_TRUE(ado);
  EXPECT_EQ(ado->RecordCount(), 4);
  auto type = [&](const char* f) { return ado->FieldInfo(ado->FieldIndex(f)).Type; };
  EXPECT_EQ(type("CProject"), adBigInt);
  EXPECT_EQ(type("CPrjTipo"), adInteger);
  EXPECT_EQ(type("TAnag"), adInteger);
  EXPECT_EQ(type("DtIni"), adDate);
  EXPECT_EQ(type("DProject"), adVarChar);
  EXPECT_EQ(type("Annot"), adVarChar);
  EXPECT_EQ(ado->FieldInfo(ado->FieldIndex("Annot")).DefinedSize, 5000);
  EXPECT_EQ(ado->FieldInfo(ado->FieldCount() - 1).Name, "RecStat");
  EXPECT_EQ(ado->Value("CProject").toLongLong(), 202400001);
  EXPECT_EQ(ado->Value("RecStat").toInt(), 0);
  RecordsetPtr tipi;
  ApriRecordset(dao, "SELECT * FROM ProjectsTipo", nullptr, dbOpenSnapshot);
  DAO2ADO(dao, tipi);
  EXPECT_EQ(tipi->FieldInfo(tipi->FieldIndex("GestForfSempl")).Type, adBoolean);
  tipi->SetFilter("CPrjTipo=2");
  EXPECT_EQ(tipi->Value("GestForfSempl").toBool(), true);
  // Appending keeps the rows that were there.
  ApriRecordset(dao, "SELECT * FROM Projects WHERE CProject=202500001", nullptr, dbOpenSnapshot);
  DAO2ADO(dao, ado, {}, true);
  EXPECT_EQ(ado->RecordCount(), 5);
}

TEST(DAO2ADO, NoRowsGivesTheEmptyStructure) {
  TestDb t;
  RecordsetPtr dao, ado;
  ApriRecordset(dao, "SELECT * FROM ProjectsDisp WHERE CProject=0", nullptr, dbOpenSnapshot);
  DAO2ADO(dao, ado);
  ASSERT_TRUE(ado);
  EXPECT_EQ(ado->RecordCount(), 0);
  EXPECT_EQ(ado->FieldCount(), 12);
  EXPECT_GE(ado->FieldIndex("NStampa"), 0);
}

TEST(DAO2ADO, MemoOf6000CharactersDoesNotFit) {
  TestDb t;
  Models(t);
  const QString lunga(6000, QLatin1Char('x'));
  t.db->Execute(Sql("UPDATE Projects SET Annot=") + Sql::Param(lunga) + Sql(" WHERE CProject=202500001"));
  RecordsetPtr dao, ado;
  ApriRecordset(dao, "SELECT * FROM Projects WHERE CProject=202500001", nullptr, dbOpenSnapshot);
  EXPECT_EQ(dao->Value("Annot").toString().size(), 6000);
  DAO2ADO(dao, ado);
  // The copy fails at that row, and the failure is logged.
  const QStringList lines = t.LogLines("Procedure", "DAO2ADO");
  ASSERT_EQ(lines.size(), 1);
  EXPECT_TRUE(lines.at(0).endsWith("(-2147217887)")) << lines.at(0).toStdString();
  RecordsetPtr mem = Recordset::Create();
  mem->Append("Annot", adVarChar, 5000);
  mem->Open();
  mem->AddNew();
  try {
    mem->SetValue("Annot", lunga);
    FAIL() << "a text of 6000 characters went into a field of 5000";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number(), err::MultipleStep);
  }
}

TEST(ErrLog, PathAndLineAsTheSystemWritesThem) {
  TestDb t;
  const QDateTime when = D(2026, 3, 4, 9, 5, 7);
  EXPECT_EQ(ErrLogFile("frmModelli", "Salva", when), t.db->PathDB() + "/ErrLogs/2026/03/frmModelli_Salva.log");
  EXPECT_TRUE(t.db->PathDB().endsWith('/'));
  bool mostra = false;
  ScriviErrLog("frmModelli", "Salva", "Division by zero (11)", mostra);
  ScriviErrLog("frmModelli", "Salva", "Type mismatch (13)", mostra);
  const QStringList lines = t.LogLines("frmModelli", "Salva");
  ASSERT_EQ(lines.size(), 2);
  const QRegularExpression shape("^\\d\\d \\d\\d:\\d\\d:\\d\\d - Salva: Division by zero \\(11\\)$");
  EXPECT_TRUE(shape.match(lines.at(0)).hasMatch()) << lines.at(0).toStdString();
  EXPECT_TRUE(lines.at(1).endsWith(" - Salva: Type mismatch (13)"));
  EXPECT_TRUE(lines.at(0).startsWith(Format(Now(), "dd ")));
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(ErrLog, GuardLogsAndGoesOn) {
  TestDb t;
  Guard g("ModTest", "Prova");
  int after = 0;
  g([&] { Raise(err::DivisionByZero); });
  g([&] { after = 1; });
  EXPECT_TRUE(g.If([&] { return CDbl(QVariant()) > 0; }));  // a failed test enters its block
  EXPECT_EQ(after, 1);
  const QStringList lines = t.LogLines("ModTest", "Prova");
  ASSERT_EQ(lines.size(), 2);
  EXPECT_TRUE(lines.at(0).endsWith("Prova: Division by zero (11)"));
  EXPECT_TRUE(lines.at(1).endsWith("Prova: Invalid use of Null (94)"));
  Guard silent("ModTest", "Zitto", Guard::Silent);
  silent([&] { Raise(err::TypeMismatch); });
  EXPECT_EQ(silent.LastNumber(), 13);
  EXPECT_TRUE(t.LogLines("ModTest", "Zitto").isEmpty());
}

TEST(ErrLog, FailureOnAFolderThatCannotBeWrittenIsSilent) {
  TestDb t;
  // A file where the folder should be: no folder can be made under it.
  QFile blocco(t.Path() + "/blocco");
  ASSERT_TRUE(blocco.open(QIODevice::WriteOnly));
  blocco.close();
  gPathDB = t.Path() + "/blocco/";
  bool mostra = false;
  ScriviErrLog("Procedure", "QueryExe", "x (1)", mostra);
  EXPECT_FALSE(QFileInfo(gPathDB + "/ErrLogs").exists());
  EXPECT_TRUE(t.messages->asked.empty());
}

TEST(EsisteCartella, CreatesEveryLevel) {
  TestDb t;
  const QString p = t.Path() + "/a/b/c";
  EXPECT_FALSE(EsisteCartella(p));
  EXPECT_TRUE(EsisteCartella(p, true));
  EXPECT_TRUE(QFileInfo(p).isDir());
  // A path that can never be made still answers true, and the log writer then fails silently.
  EXPECT_TRUE(EsisteCartella("/proc/nessuna/cartella", true));
  EXPECT_FALSE(QFileInfo("/proc/nessuna/cartella").exists());
  gPathDB = "/proc/nessuna/";
  bool mostra = false;
  ScriviErrLog("Procedure", "Prova", "x (1)", mostra);
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_TRUE(EsisteFile(t.Path() + "/Vorn.def") || QFile(t.Path() + "/Vorn.def").open(QIODevice::WriteOnly));
  EXPECT_TRUE(EsisteFile(t.Path() + "/Vorn.def"));
  EXPECT_FALSE(EsisteFile(t.Path()));
}

TEST(Environment, IndexFromOneAndZeroFails) {
  qputenv("PRESTKT_PROVA_ENV", "valore=uno");
  const int i = GetEnvironIdx("prestkt_prova_env");
  ASSERT_GT(i, 0);
  EXPECT_EQ(Environ(i), "PRESTKT_PROVA_ENV=valore=uno");
  EXPECT_EQ(GetEnvironIdx("PRESTKT_NESSUNA_VARIABILE"), 0);
  TestDb t;
  Guard g("ModTest", "Ambiente");
  QString letto = "prima";
  g([&] { letto = Environ(GetEnvironIdx("PRESTKT_NESSUNA_VARIABILE")); });
  EXPECT_EQ(letto, "prima");
  EXPECT_EQ(g.LastNumber(), err::InvalidProcedureCall);
  EXPECT_EQ(t.LogLines("ModTest", "Ambiente").size(), 1);
}

TEST(Config, ReaderAndWriterNameTheSameFile) {
  TestDb t;
  gCurUtente = 3;
  EXPECT_EQ(LeggiConfig(true, "Magnify"), "");
  ScriviConfig(true, "Magnify", "18");
  ScriviConfig(false, "PrestKT_PercRicMin", "0.25");
  EXPECT_EQ(LeggiConfig(true, "MAGNIFY"), "18");
  EXPECT_EQ(LeggiConfig(false, "PrestKT_PercRicMin"), "0.25");
  EXPECT_TRUE(QFile::exists(t.db->PathDB() + "Vorn.def"));
  gCurUtente = 4;
  EXPECT_EQ(LeggiConfig(true, "Magnify"), "");
  ScriviConfig(false, "Lunga", QString(300, QLatin1Char('z')));
  EXPECT_EQ(LeggiConfig(false, "Lunga").size(), 255);
}

TEST(Config, PriceSettingsFallBackOnlyWhenTheSumIsZero) {
  TestDb t;
  {
    // A fresh installation: each key fails its conversion once, and the fallback follows.
    Guard g("ModTest", "Impostazioni");
    const ImpostazioniPrezzo v = LeggiImpostazioniPrezzo(g, kFallbackCalcolo);
    EXPECT_EQ(v.PercRicLExt, 0.5);
    EXPECT_EQ(v.PercRicMin, 0.2);
    EXPECT_EQ(v.CoeffStd, 5);
    EXPECT_EQ(v.CoeffRange, 1);
    EXPECT_EQ(g.Failures(), 4);
    EXPECT_EQ(t.LogLines("ModTest", "Impostazioni").size(), 4);
    const ImpostazioniPrezzo s = LeggiImpostazioniPrezzo(g, kFallbackImpostazioni);
    EXPECT_EQ(s.CoeffStd, 1);
    EXPECT_EQ(s.CoeffRange, 5);
  }
  {
    // One key set and three missing: the one value and three zeros.
    ScriviConfig(false, "PrestKT_PercRicMin", "0,3");
    Guard g("ModTest", "Impostazioni", Guard::Silent);
    const ImpostazioniPrezzo v = LeggiImpostazioniPrezzo(g, kFallbackCalcolo);
    EXPECT_EQ(v.PercRicLExt, 0);
    EXPECT_DOUBLE_EQ(v.PercRicMin, 0.3);
    EXPECT_EQ(v.CoeffStd, 0);
    EXPECT_EQ(v.CoeffRange, 0);
  }
  {
    // All four saved as 0: the zeros can't be held.
    for (const char* k : {"PrestKT_PercRicLExt", "PrestKT_PercRicMin", "PrestKT_CoeffStd", "PrestKT_CoeffRange"})
      ScriviConfig(false, k, "0");
    Guard g("ModTest", "Impostazioni", Guard::Silent);
    const ImpostazioniPrezzo v = LeggiImpostazioniPrezzo(g, kFallbackCalcolo);
    EXPECT_EQ(v.PercRicLExt, 0.5);
    EXPECT_EQ(g.Failures(), 0);
  }
  {
    // A negative value that makes the sum exactly 0 triggers the fallback as well.
    ScriviConfig(false, "PrestKT_PercRicLExt", "-2");
    ScriviConfig(false, "PrestKT_CoeffStd", "2");
    Guard g("ModTest", "Impostazioni", Guard::Silent);
    const ImpostazioniPrezzo v = LeggiImpostazioniPrezzo(g, kFallbackCalcolo);
    EXPECT_EQ(v.PercRicLExt, 0.5);
    EXPECT_EQ(v.CoeffStd, 5);
  }
}

TEST(ADO2ADO, CopiesUnderAFilterAndRestoresTheSource) {
  TestDb t;
  auto src = Recordset::Create();
  src->Append("N", adInteger, 4);
  src->Append("T", adVarChar, 20);
  src->Open();
  for (int i = 1; i <= 5; ++i) {
    src->AddNew();
    src->SetValue("N", i);
    src->SetValue("T", QString("riga %1").arg(i));
    src->Update();
  }
  src->SetFilter("N>1");
  RecordsetPtr dst;
  ADO2ADO(src, dst, true, false, QVariant("N<=2"));
  ASSERT_TRUE(dst);
  EXPECT_EQ(dst->RecordCount(), 2);
  EXPECT_EQ(src->Filter(), "N>1");
  EXPECT_EQ(src->RecordCount(), 4);
  // A structure-only copy: a filter that takes nothing.
  RecordsetPtr vuota;
  ADO2ADO(src, vuota, true, false, QVariant("N=0"));
  EXPECT_EQ(vuota->RecordCount(), 0);
  EXPECT_EQ(vuota->FieldCount(), 2);
  EXPECT_EQ(vuota->FieldInfo(1).DefinedSize, 20);
  // Replacing: the rows under the filter go first.
  ADO2ADO(src, dst, true, true, QVariant("N=2"), true);
  dst->SetFilter("N=2");
  EXPECT_EQ(dst->RecordCount(), 1);
  dst->SetFilter("");
  EXPECT_EQ(dst->RecordCount(), 2);
}

TEST(ADO2DAO, CreatesTheTableWithKeyAndAppendsRowByRow) {
  TestDb t(false);
  EXPECT_FALSE(TabellaEsiste("ProjectsDocDettPrest"));
  auto rs = Recordset::Create();
  rs->Append("TipoDoc", adTinyInt, 1);
  rs->Append("NDoc", adBigInt, 8);
  rs->Append("RigaD", adInteger, 4);
  rs->Append("SubRiga", adInteger, 4);
  rs->Append("CPrestazione", adInteger, 4);
  rs->Open();
  EXPECT_TRUE(ADO2DAO(rs, "ProjectsDocDettPrest", false, {"TipoDoc", "NDoc", "RigaD", "SubRiga"}));
  EXPECT_TRUE(TabellaEsiste("projectsdocdettprest"));
  for (int i = 1; i <= 3; ++i) {
    rs->AddNew();
    rs->SetValue("TipoDoc", 12);
    rs->SetValue("NDoc", 5);
    rs->SetValue("RigaD", 1);
    rs->SetValue("SubRiga", i == 3 ? 1 : i);  // the third repeats the key of the first
    rs->SetValue("CPrestazione", 10 + i);
    rs->Update();
  }
  EXPECT_TRUE(ADO2DAO(rs, "ProjectsDocDettPrest", true));
  // The failing row is logged and the others stay written.
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ProjectsDocDettPrest").toInt(), 2);
  EXPECT_EQ(t.LogLines("ModADO", "ADO2DAO").size(), 1);
  EXPECT_EQ(t.db->TransactionDepth(), 0);
}

// A table the built-in schema doesn't know, made a moment earlier by the
// same routine or by anybody else, takes the rows all the same.
TEST(ADO2DAO, WritesIntoATableOutsideTheBuiltInSchema) {
  TestDb t;
  auto rs = Recordset::Create();
  rs->Append("Codice", adInteger, 4);
  rs->Append("Testo", adVarChar, 40);
  rs->Append("Quando", adDate, 8);
  rs->Open();
  for (int i = 1; i <= 3; ++i) {
    rs->AddNew();
    rs->SetValue("Codice", i);
    rs->SetValue("Testo", QString("riga \"%1\" d'esempio").arg(i));
    rs->SetValue("Quando", D(2025, 12, 31, 23, 59, 59));
    rs->Update();
  }
  // Created now, by the routine itself.
  EXPECT_TRUE(ADO2DAO(rs, "LinkNuovi", true, {"Codice"}));
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM LinkNuovi").toInt(), 3);
  EXPECT_EQ(t.Scalar("SELECT Testo FROM LinkNuovi WHERE Codice=2").toString(), "riga \"2\" d'esempio");
  EXPECT_EQ(t.Scalar("SELECT Quando FROM LinkNuovi WHERE Codice=3").toDateTime(), D(2025, 12, 31, 23, 59, 59));
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM LinkNuovi WHERE Quando='2025-12-31 23:59:59'").toInt(), 3);

  // Made by someone else, with its fields in another order: each field goes
  // by its index, and the table's own fields decide the types.
  t.Exec(QString("CREATE TABLE Estranea (Numero INTEGER PRIMARY KEY, Nota VARCHAR(40), Giorno %1)")
             .arg(t.SuPostgres() ? "TIMESTAMP" : "DATETIME"));
  EXPECT_TRUE(ADO2DAO(rs, "Estranea", true));
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Estranea").toInt(), 3);
  EXPECT_EQ(t.Scalar("SELECT Nota FROM Estranea WHERE Numero=1").toString(), "riga \"1\" d'esempio");
  EXPECT_TRUE(t.LogLines("ModADO", "ADO2DAO").isEmpty());

  // A second copy repeats the keys: each row fails on its own, with the engine's words in the log.
  EXPECT_TRUE(ADO2DAO(rs, "Estranea", true));
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Estranea").toInt(), 3);
  const QStringList log = t.LogLines("ModADO", "ADO2DAO");
  ASSERT_EQ(log.size(), 3);
  EXPECT_TRUE(log[0].contains(t.SuPostgres() ? "duplicate key value violates unique constraint \"Estranea_pkey\""
                                             : "UNIQUE constraint failed: Estranea.Numero"))
      << log[0].toStdString();
  EXPECT_EQ(t.db->TransactionDepth(), 0);
}

TEST(ScriviXML, NothingLeavesAnOlderFileInPlace) {
  TestDb t;
  const QString file = t.Path() + "/dati.xml";
  QFile f(file);
  ASSERT_TRUE(f.open(QIODevice::WriteOnly));
  f.write("vecchio");
  f.close();
  EXPECT_FALSE(ScriviXML(nullptr, file, true));
  ASSERT_TRUE(f.open(QIODevice::ReadOnly));
  EXPECT_EQ(f.readAll(), QByteArray("vecchio"));
  f.close();

  auto rs = Recordset::Create();
  rs->Append("N", adInteger, 4);
  rs->Open();
  for (int i = 1; i <= 3; ++i) {
    rs->AddNew();
    rs->SetValue("N", i);
    rs->Update();
  }
  rs->SetFilter("N=2");
  EXPECT_TRUE(ScriviXML(rs, file, true));
  EXPECT_EQ(rs->Filter(), "N=2");
  ASSERT_TRUE(f.open(QIODevice::ReadOnly));
  QXmlStreamReader xml(&f);
  int rows = 0;
  while (!xml.atEnd())
    if (xml.readNext() == QXmlStreamReader::StartElement && xml.qualifiedName() == QLatin1String("z:row")) ++rows;
  EXPECT_EQ(rows, 3);
}
