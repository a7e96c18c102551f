// Two workstations saving at the same moment on one database: every save
// lands, under a code of its own, and no screen fails because the other
// workstation saved first.
#include <gtest/gtest.h>

#include <QProcess>

#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

void Officina(TestDb& t) {
  t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
  t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, Eliminato) VALUES (1, 1, 'Officina Rossi', 0), "
         "(10, 17, 'Mario Verdi', 0)");
  t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Stampo a iniezione', 0)");
  t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (1, 'Manutenzione', 1)");
  t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla) VALUES (12, 1, 'Tornitura', 'TO')");
  t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
         "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00')");
  t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
         "(202500001, 3, 'Ripristino matrice', 1, '2025-02-01 00:00:00', 10, 0)");
  t.Exec("INSERT INTO ProjectsDispDett (CProject, CDisp, CPrestazione) VALUES (202500001, 3, 1)");
}

// Starts both workstations together and waits for both.
void DuePostazioni(TestDb& t, const char* modo, int quanti) {
  QProcess a, b;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert("QT_QPA_PLATFORM", "offscreen");
  for (QProcess* p : {&a, &b}) p->setProcessEnvironment(env);
  const QString db = t.Path() + QStringLiteral("/vorn.db");
  a.start(QStringLiteral(POSTAZIONE), {db, QString::fromLatin1(modo), QString::number(quanti), "A"});
  b.start(QStringLiteral(POSTAZIONE), {db, QString::fromLatin1(modo), QString::number(quanti), "B"});
  for (QProcess* p : {&a, &b}) {
    ASSERT_TRUE(p->waitForFinished(300000));
    EXPECT_EQ(p->exitStatus(), QProcess::NormalExit) << p->readAllStandardError().toStdString();
    // The number of saves that failed at that workstation.
    EXPECT_EQ(p->exitCode(), 0) << p->readAllStandardError().toStdString();
  }
}

}  // namespace

TEST(DuePostazioni, FiveHundredActivitiesEachAllLandUnderCodesOfTheirOwn) {
  TestDb t;
  Officina(t);
  DuePostazioni(t, "attivita", 500);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd").toInt(), 1000);
  EXPECT_EQ(t.Scalar("SELECT Count(DISTINCT CAttivita) FROM ActivitiesProd").toInt(), 1000);
  // The numbers one workstation alone would have given: the year's first to its thousandth.
  EXPECT_EQ(t.Scalar("SELECT Min(CAttivita) FROM ActivitiesProd").toInt(), 202600001);
  EXPECT_EQ(t.Scalar("SELECT Max(CAttivita) FROM ActivitiesProd").toInt(), 202601000);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM ActivitiesProd WHERE CProject=202500001 AND CDisp=3 AND CUtente=17 "
                     "AND CPrestazione=1")
                .toInt(),
            1000);
}

TEST(DuePostazioni, NewModelsOfBothLandAndNoneReplacesTheOthers) {
  TestDb t;
  Officina(t);
  DuePostazioni(t, "modelli", 150);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE DProject Like 'Modello A %'").toInt(), 150);
  EXPECT_EQ(t.Scalar("SELECT Count(*) FROM Projects WHERE DProject Like 'Modello B %'").toInt(), 150);
  EXPECT_EQ(t.Scalar("SELECT Count(DISTINCT CProject) FROM Projects").toInt(), 301);
  EXPECT_EQ(t.Scalar("SELECT Max(CProject) FROM Projects").toInt(), 202500301);
}
