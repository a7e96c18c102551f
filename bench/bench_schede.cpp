// The cards on large models: the disposition card of a disposition with
// 10 000 activities and 1 000 supplier order lines, opened and each of its
// tabs shown, and the model card of a model with 500 dispositions; each
// beside a bare read of the rows the card shows.
//
//   bench_schede [folder]     (default /tmp/prestkt-bench; PRESTKT_BENCH_PG for a server)
#include <QApplication>
#include <QDir>
#include <QTabWidget>
#include <cstdio>

#include "BenchCommon.h"
#include "DemoData.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "frmDisp.h"
#include "frmModelli.h"

using namespace prestkt;

namespace {

constexpr int kAttivita = 10000;
constexpr int kRigheOrdine = 1000;
constexpr int kDisposizioni = 500;

// The model of the first disposition gets the activities and the order lines;
// another model gets 500 dispositions.
void Riempi(Database& db, int* cProject, int* cDisp, int* cModello) {
  const auto r = db.Select(Sql("SELECT d.CProject, d.CDisp, p.CAnag FROM ProjectsDisp d INNER JOIN Projects p ON "
                               "p.CProject=d.CProject WHERE p.TAnag=1 ORDER BY d.CProject, d.CDisp"))
                     .rows;
  *cProject = r.at(0).at(0).toInt();
  *cDisp = r.at(0).at(1).toInt();
  *cModello = r.at(r.size() / 2).at(0).toInt();
  const auto operatori = db.Select(Sql("SELECT CAnag FROM Anagrafica WHERE TAnag=10")).rows;
  const auto fornitore = db.Select(Sql("SELECT CAnag FROM Anagrafica WHERE TAnag=2")).rows.at(0).at(0).toInt();
  db.BeginTrans();
  const QDate giorno(2020, 1, 1);
  for (int i = 0; i < kAttivita; ++i) {
    const QString inizio = giorno.addDays(i / 20).toString(QStringLiteral("yyyy-MM-dd 08:00:00"));
    const QString fine = giorno.addDays(i / 20).toString(QStringLiteral("yyyy-MM-dd 09:30:00"));
    db.Execute(Sql(QStringLiteral("INSERT INTO ActivitiesProd (CAttivita, CProject, CDisp, CUtente, CPrestazione, DtIni, "
                                  "DtEnd, CostoH) VALUES (%1, %2, %3, %4, %5, '%6', '%7', 20)")
                       .arg(900000000 + i)
                       .arg(*cProject)
                       .arg(*cDisp)
                       .arg(operatori.at(static_cast<size_t>(i) % operatori.size()).at(0).toInt())
                       .arg(1 + i % 5)
                       .arg(inizio, fine)));
  }
  db.Execute(Sql(QStringLiteral("INSERT INTO DocForn (TipoDoc, NDoc, Data, TAnag, CAnag) VALUES (12, 900001, "
                                "'2020-01-02 00:00:00', 2, %1)")
                     .arg(fornitore)));
  for (int i = 1; i <= kRigheOrdine; ++i) {
    db.Execute(Sql(QStringLiteral("INSERT INTO DocFornDett (TipoDoc, NDoc, Scheda, Riga, Qta, PzVend, CCaus) VALUES "
                                  "(12, 900001, 0, %1, 10, 2.5, 1)")
                       .arg(i)));
    db.Execute(Sql(QStringLiteral("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, Qta, "
                                  "Importo, CCaus) VALUES (12, 900001, 0, %1, %1, %2, %3, 10, 2.5, 1)")
                       .arg(i)
                       .arg(*cProject)
                       .arg(*cDisp)));
  }
  const int giaPresenti =
      db.Select(Sql(QStringLiteral("SELECT Max(CDisp) FROM ProjectsDisp WHERE CProject=%1").arg(*cModello))).rows.at(0).at(0).toInt();
  for (int d = giaPresenti + 1; d <= kDisposizioni; ++d)
    db.Execute(Sql(QStringLiteral("INSERT INTO ProjectsDisp (CProject, CDisp, CPrjDispTipo, DDisp, Data, Qta, CStato) "
                                  "VALUES (%1, %2, 1, 'Disposizione %2', '2020-01-05 00:00:00', 1, 0)")
                       .arg(*cModello)
                       .arg(d)));
  db.CommitTrans();
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  const QString cartella = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/prestkt-bench");
  QDir().mkpath(cartella);
  DatabasePtr db;
  int cProject = 0, cDisp = 0, cModello = 0;
  try {
    db = bench::ApriDb(cartella, QStringLiteral("schede"), true);
    CreaDatiGrandi(*db, 2000, 20000, QDate::currentDate());
    Riempi(*db, &cProject, &cDisp, &cModello);
    db->Execute(Sql("ANALYZE"));
  } catch (const VbError& e) {
    std::fprintf(stderr, "database: %s\n", qPrintable(e.Description()));
    return 1;
  }
  const auto nudo = bench::Nudo::Di(*db);
  gDB = db;
  gPathDB = QDir::toNativeSeparators(cartella) + QDir::separator();
  bench::SenzaMessaggi();

  const QString attivita =
      db->Adapt(QStringLiteral("SELECT * FROM ActivitiesProd WHERE CProject=%1 AND CDisp=%2").arg(cProject).arg(cDisp));
  const QString righe =
      db->Adapt(QStringLiteral("SELECT * FROM ProjectsDocDett WHERE CProject=%1 AND CDisp=%2").arg(cProject).arg(cDisp));
  bench::Caso(
      "frmDisp, 10 000 activities and 1 000 order lines: opened, every tab shown",
      [&] {
        CaricaDatiModello(cProject);
        gCProject = cProject;
        frmDisp f;
        f.Azione = 1;
        f.CProject = cProject;
        f.CDisp = cDisp;
        f.Form_Load();
        f.show();
        for (int t = 1; t <= 3; ++t) {
          f.SSTab1->setCurrentIndex(t);
          QApplication::processEvents();
        }
        const qint64 n = f.lvwEsecInt->Count() + f.lvwEsecExt->Count();
        f.hide();
        return n;
      },
      [&] { return nudo->Leggi(attivita) + nudo->Leggi(righe); });

  const QString disposizioni = db->Adapt(QStringLiteral("SELECT * FROM ProjectsDisp WHERE CProject=%1").arg(cModello));
  // The register holds the model, as when the card opens from it.
  CaricaModelli(QDateTime(QDate(1900, 1, 1), QTime(0, 0)), QDateTime(QDate(2999, 12, 31), QTime(0, 0)), -1);
  bench::Caso(
      "frmModelli, a model of 500 dispositions: opened",
      [&] {
        CaricaDatiModello(cModello);
        gCProject = cModello;
        frmModelli m;
        m.Azione = 1;
        m.CProject = cModello;
        m.Form_Load();
        m.show();
        QApplication::processEvents();
        const qint64 n = m.ListView1->Count();
        m.hide();
        return n;
      },
      [&] { return nudo->Leggi(disposizioni); });
  RilasciaRiferimenti();
  return 0;
}
