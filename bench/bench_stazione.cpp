// The shop floor on the large database: a save at the station (the day's
// numbering and the insert, in one transaction) beside the same statements
// through the engine alone, and a production sheet made into a PDF beside a
// bare read of the rows it shows.
//
//   bench_stazione [folder]     (default /tmp/prestkt-bench)
//
// The activities the station adds are removed at the end, so the database
// stays the one the other benchmarks expect.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <cstdio>

#include "BenchCommon.h"
#include "ModPrestKT.h"
#include "ModStampe.h"
#include "Procedure.h"
#include "ProcedureUi.h"
#include "Stampa.h"
#include "frmInputData.h"

using namespace prestkt;

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QString cartella;
  DatabasePtr db = bench::ApriDbGrande(argc, argv, &cartella);
  if (!db) return 1;
  const auto nudo = bench::Nudo::Di(*db);
  gDB = db;
  gPathDB = QDir::toNativeSeparators(cartella) + QDir::separator();
  qputenv("TEMP", QDir(cartella).absolutePath().toLocal8Bit());

  // A disposition of the busiest year, with the most service kinds, and an operator.
  const auto scelta = db->Select(Sql("SELECT CProject, CDisp, Count(*) AS n FROM ProjectsDispDett "
                                     "GROUP BY CProject, CDisp ORDER BY n DESC, CProject DESC LIMIT 1"))
                          .rows.front();
  const int cProject = scelta[0].toInt(), cDisp = scelta[1].toInt();
  const int operatore = db->Select(Sql("SELECT Min(CAnag) FROM Anagrafica WHERE TAnag=10 AND Eliminato=0"))
                            .rows.front()[0]
                            .toInt();
  const int prestazione = db->Select(Sql(QStringLiteral("SELECT Min(CPrestazione) FROM ProjectsDispDett WHERE "
                                                        "CProject=%1 AND CDisp=%2")
                                             .arg(cProject)
                                             .arg(cDisp)))
                              .rows.front()[0]
                              .toInt();
  const QDate giorno = CDate(db->Select(Sql("SELECT Max(DtIni) FROM ActivitiesProd")).rows.front()[0]).date();
  const qint64 primoNuovo =
      db->Select(Sql("SELECT Max(CAttivita) FROM ActivitiesProd")).rows.front()[0].toLongLong() + 1;

  // The station as the operator leaves it after scanning: sheet, badge, service kind.
  frmInputData f;
  f.Form_Load();
  f.show();
  f.CProject = cProject;
  f.CDisp = cDisp;
  f.Operatore = operatore;
  f.DTPicker1->setDate(giorno);
  const QString numerazione =
      db->Adapt(QStringLiteral("SELECT Max(CAttivita) AS MaxDiCAttivita FROM ActivitiesProd WHERE (((DtIni)>=") +
                DataSql(QDateTime(QDate(giorno.year(), 1, 1), QTime(0, 0))) + QStringLiteral(" And (DtIni)<") +
                DataSql(QDateTime(QDate(giorno.year() + 1, 1, 1), QTime(0, 0))) + QStringLiteral(")); "));
  bench::Caso(
      "frmInputData salvataggio",
      [&] {
        SetCBValue(f.CBPrest, prestazione, 0);
        f.OptOre_Click(1);
        f.OptMin_Click(6);
        // The rows it added (counted by their codes, which the key finds at once).
        const Sql nuove(QStringLiteral("SELECT Count(*) FROM ActivitiesProd WHERE CAttivita>=%1").arg(primoNuovo));
        const qint64 prima = gDB->Select(nuove).rows.front()[0].toLongLong();
        f.cmdSave_Click();
        return gDB->Select(nuove).rows.front()[0].toLongLong() - prima;
      },
      [&] {
        // The same work through the engine: the number of the year, then the row.
        nudo->Esegui(QStringLiteral("BEGIN"));
        const qint64 codice = nudo->Primo(numerazione) + 1;
        const QString d = giorno.toString(QStringLiteral("yyyy-MM-dd"));
        const qint64 n = nudo->Esegui(db->Adapt(QStringLiteral("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, "
                                                  "CUtente, CPrestazione, DtIni, DtEnd, DtRealIni, DtRealEnd, "
                                                  "Stato, TDocRif, NDocRif) VALUES (%1, %2, %3, %4, %5, '%6 "
                                                  "00:00:00', '%6 01:30:00', '%6 00:00:00', '%6 01:30:00', 0, 0, 0)")
                                       .arg(codice)
                                       .arg(cProject)
                                       .arg(cDisp)
                                       .arg(operatore)
                                       .arg(prestazione)
                                       .arg(d)));
        nudo->Esegui(QStringLiteral("COMMIT"));
        return n;
      });
  f.hide();

  // The sheet: the component needs the register and the model's working set.
  gDtIni = QDateTime(QDate(1900, 1, 1), QTime(0, 0));
  gDTEnd = QDateTime(QDate(2100, 1, 1), QTime(0, 0));
  CaricaModelli(gDtIni, gDTEnd, -1);
  CaricaDatiModello(cProject);
  const QString pdf = QDir(cartella).filePath(QStringLiteral("scheda.pdf"));
  const QVariant nStampa = db->Select(Sql(QStringLiteral("SELECT NStampa FROM ProjectsDisp WHERE CProject=%1 AND "
                                                         "CDisp=%2")
                                              .arg(cProject)
                                              .arg(cDisp)))
                               .rows.front()[0];
  const QStringList righeScheda = {
      db->Adapt(QStringLiteral("SELECT CProject, CDisp, NStampa FROM ProjectsDisp WHERE CProject=%1 AND CDisp=%2")
                    .arg(cProject)
                    .arg(cDisp)),
      db->Adapt(QStringLiteral("SELECT Projects.*, Anagrafica.RagSoc1, ProjectsTipo.DPrjTipo FROM (Projects INNER "
                               "JOIN Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND (Projects.TAnag = "
                               "Anagrafica.TAnag)) LEFT JOIN ProjectsTipo ON Projects.CPrjTipo = "
                               "ProjectsTipo.CPrjTipo WHERE Projects.CProject=%1")
                    .arg(cProject)),
      db->Adapt(QStringLiteral("SELECT d.*, t.DPrjDispTipo FROM ProjectsDisp d LEFT JOIN ProjectsDispTipo t ON "
                               "d.CPrjDispTipo = t.CPrjDispTipo WHERE d.CProject=%1 AND d.CDisp=%2")
                    .arg(cProject)
                    .arg(cDisp)),
      db->Adapt(QStringLiteral("SELECT x.CPrestazione, g.DTabGen FROM ProjectsDispDett x INNER JOIN TabGen g ON "
                               "g.CTipTabGen=12 AND g.CTabGen=x.CPrestazione WHERE x.CProject=%1 AND x.CDisp=%2")
                    .arg(cProject)
                    .arg(cDisp))};
  bench::Caso(
      "StpSchedaProd PDF",
      [&] {
        StampantePdf stampante(pdf);
        StpSchedaProd(stampante, cProject, cDisp);
        return static_cast<qint64>(QFileInfo(pdf).size() > 0 ? 1 : 0);
      },
      [&] {
        qint64 n = 0;
        for (const QString& s : righeScheda) n += nudo->Leggi(s);
        return n;
      },
      "pdf_made");

  // What the station added goes, and the sheet's print count goes back.
  nudo->Esegui(db->Adapt(QStringLiteral("DELETE FROM ActivitiesProd WHERE CAttivita>=%1").arg(primoNuovo)));
  nudo->Esegui(db->Adapt(QStringLiteral("UPDATE ProjectsDisp SET NStampa=%1 WHERE CProject=%2 AND CDisp=%3")
                .arg(nStampa.isNull() ? QStringLiteral("NULL") : nStampa.toString())
                .arg(cProject)
                .arg(cDisp)));
  RilasciaRiferimenti();
  return 0;
}
