// The DDT check on a month of 10 000 delivery notes with 50 000 lines: the
// reading of the notes and their summary, and the price of a disposition
// written into its 200 lines with the notes' totals; each beside the same
// statements run bare.
//
//   bench_ctrlddt [folder]     (default /tmp/prestkt-bench; PRESTKT_BENCH_PG for a server)
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <cstdio>

#include "BenchCommon.h"
#include "DemoData.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "frmCtrlDDTxFatt.h"

using namespace prestkt;

namespace {

constexpr int kNote = 10000;
constexpr int kRighe = 5;            // lines per note
constexpr int kRigheBersaglio = 200;  // lines of the disposition priced

// The notes of the month of oggi: each of a customer, its lines on the
// dispositions in turn; the first line of the first 200 notes is the target's.
void CreaNote(Database& db, const QDate& oggi, std::pair<int, int>* bersaglio) {
  const auto disp = db.Select(Sql("SELECT d.CProject, d.CDisp, p.CAnag FROM ProjectsDisp d INNER JOIN Projects p ON "
                                  "p.CProject=d.CProject WHERE p.TAnag=1 ORDER BY d.CProject, d.CDisp"))
                        .rows;
  *bersaglio = {disp[0][0].toInt(), disp[0][1].toInt()};
  db.BeginTrans();
  const QDate primo(oggi.year(), oggi.month(), 1);
  size_t k = 1;
  for (int n = 1; n <= kNote; ++n) {
    const Row& cliente = disp[k % disp.size()];
    const QString data = primo.addDays(n % primo.daysInMonth()).toString(QStringLiteral("yyyy-MM-dd 00:00:00"));
    db.Execute(Sql(QStringLiteral("INSERT INTO Doc (TipoDoc, NDoc, Data, TAnag, CAnag, CIva) VALUES (5, %1, '%2', 1, %3, 0)")
                       .arg(n)
                       .arg(data)
                       .arg(cliente[2].toInt())));
    for (int r = 1; r <= kRighe; ++r) {
      const Row& d = (r == 1 && n <= kRigheBersaglio) ? disp[0] : disp[k++ % disp.size()];
      const double qta = 1 + (n + r) % 7;
      db.Execute(Sql(QStringLiteral("INSERT INTO DocDett (TipoDoc, NDoc, Scheda, Riga, CodTesto, DArt, Qta, CCaus, "
                                    "PzVend, CIVA) VALUES (5, %1, 0, %2, '>', 'Lavorazione', %3, 1, 0, 2)")
                         .arg(n)
                         .arg(r)
                         .arg(qta)));
      db.Execute(Sql(QStringLiteral("INSERT INTO ProjectsDocDett (TipoDoc, NDoc, Scheda, Riga, RigaD, CProject, CDisp, "
                                    "Ctipo, CArt, CVar, CodTesto, CodForn, DArt, Qta, CCaus, Importo, CIva) VALUES (5, "
                                    "%1, 0, %2, %2, %3, %4, 0, 0, 0, '>', '>', 'Lavorazione', %5, 1, 0, 2)")
                         .arg(n)
                         .arg(r)
                         .arg(d[0].toInt())
                         .arg(d[1].toInt())
                         .arg(qta)));
    }
  }
  db.CommitTrans();
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  const QString cartella = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/prestkt-bench");
  QDir().mkpath(cartella);
  const QDate oggi = QDate::currentDate();
  DatabasePtr db;
  std::pair<int, int> bersaglio;
  try {
    db = bench::ApriDb(cartella, QStringLiteral("ddt"), true);
    QElapsedTimer t;
    t.start();
    CreaDatiGrandi(*db, 5000, 0, oggi);
    CreaNote(*db, oggi, &bersaglio);
    db->Execute(Sql("ANALYZE"));
    std::fprintf(stderr, "created %s: %d notes, %d lines in %.1f s\n", qPrintable(db->Name()), kNote, kNote * kRighe,
                 t.elapsed() / 1000.0);
  } catch (const VbError& e) {
    std::fprintf(stderr, "database: %s\n", qPrintable(e.Description()));
    return 1;
  }
  const auto nudo = bench::Nudo::Di(*db);
  gDB = db;
  gPathDB = QDir::toNativeSeparators(cartella) + QDir::separator();

  frmCtrlDDTxFatt f;
  f.Form_Load();
  const QDate primo(oggi.year(), oggi.month(), 1);
  f.DTPicker1->setDate(primo);
  f.DTPicker2->setDate(primo.addMonths(1).addDays(-1));

  // The statements CaricaDati runs, as the engine reads them.
  const QString documenti = db->Adapt(
      QStringLiteral("SELECT Doc.TipoDoc, Doc.NDoc, Doc.Data, Doc.Riferimento, Anagrafica.RagSoc1 FROM (Doc INNER "
                     "JOIN Anagrafica ON (Doc.TAnag = Anagrafica.TAnag) AND (Doc.CAnag = Anagrafica.CAnag)) LEFT JOIN "
                     "DocSchede ON (Doc.TipoDoc = DocSchede.TipoDocAss) AND (Doc.NDoc = DocSchede.NDocAss) WHERE "
                     "(((DocSchede.TipoDoc) Is Null)) GROUP BY Doc.TipoDoc, Doc.NDoc, Doc.Data, Doc.Riferimento, "
                     "Anagrafica.RagSoc1 HAVING Doc.TipoDoc=5 AND (Doc.Data Between ") +
      DataSql(QDateTime(f.DTPicker1->date(), QTime(0, 0))) + QStringLiteral(" And ") +
      DataSql(QDateTime(f.DTPicker2->date(), QTime(0, 0))) + QStringLiteral(") "));
  const auto righe = [&](int n) {
    return db->Adapt(QStringLiteral(
                         "SELECT Anagrafica.RagSoc1, ProjectsDocDett.CProject, Projects.DProject, ProjectsTipo.DPrjTipo, "
                         "ProjectsDocDett.CDisp, ProjectsDisp.DDisp, ProjectsDispTipo.DPrjDispTipo, ProjectsDocDett.Qta, "
                         "ProjectsDocDett.Importo, ProjectsDocDett.TipoDoc, ProjectsDocDett.NDoc, "
                         "ProjectsDocDett.Scheda, ProjectsDocDett.Riga FROM (((((ProjectsDocDett INNER JOIN "
                         "[ABC:Causfatt] ON ProjectsDocDett.CCaus = [ABC:Causfatt].CTabGen) INNER JOIN ProjectsDisp ON "
                         "(ProjectsDocDett.CDisp = ProjectsDisp.CDisp) AND (ProjectsDocDett.CProject = "
                         "ProjectsDisp.CProject)) INNER JOIN Projects ON ProjectsDocDett.CProject = Projects.CProject) "
                         "INNER JOIN ProjectsTipo ON Projects.CPrjTipo = ProjectsTipo.CPrjTipo) INNER JOIN "
                         "ProjectsDispTipo ON ProjectsDisp.CPrjDispTipo = ProjectsDispTipo.CPrjDispTipo) INNER JOIN "
                         "Anagrafica ON (Projects.CAnag = Anagrafica.CAnag) AND (Projects.TAnag = Anagrafica.TAnag) "
                         "WHERE ProjectsDocDett.TipoDoc=5 AND ProjectsDocDett.NDoc=") +
                     QString::number(n) + QStringLiteral(" AND [ABC:Causfatt].Bool8=-1; "));
  };
  bench::Caso(
      "DDT check CaricaDati, 10 000 notes of 50 000 lines",
      [&] {
        f.CaricaDati();
        return static_cast<qint64>(f.Righe()->RecordCount());
      },
      [&] {
        nudo->Leggi(documenti);
        qint64 n = 0;
        for (int d = 1; d <= kNote; ++d) n += nudo->Leggi(righe(d));
        return n;
      });

  // The price of the disposition on 200 lines: two updates and the totals of each note.
  f.CProject = bersaglio.first;
  f.CDisp = bersaglio.second;
  const QString iva = db->Adapt(QStringLiteral("SELECT CTabGen AS CIVA, Num1 AS IVA FROM TabGen WHERE CTipTabGen=4 AND CTabGen=2; "));
  bench::Caso(
      "DDT check AssegnaPZ, a disposition on 200 lines",
      [&] {
        f.AssegnaPZ(12.5);
        return static_cast<qint64>(kRigheBersaglio);
      },
      [&] {
        for (int n = 1; n <= kRigheBersaglio; ++n) {
          const QString chiave = QStringLiteral(" WHERE TipoDoc=5 AND NDoc=%1").arg(n);
          nudo->Esegui(db->Adapt(QStringLiteral("UPDATE DocDett SET PzVend = 12.5, PzVendP = 12.5, Manifattura = 12.5") +
                                 chiave + QStringLiteral(" AND Scheda=0 AND Riga=1")));
          nudo->Esegui(db->Adapt(QStringLiteral("UPDATE ProjectsDocDett SET Importo = 12.5") + chiave +
                                 QStringLiteral(" AND Scheda=0 AND Riga=1")));
          nudo->Leggi(iva);
          nudo->Leggi(db->Adapt(QStringLiteral("SELECT TipoDoc, NDoc, ImpDoc, IVADoc, TotDoc, ValSconto, CIva FROM Doc") + chiave));
          nudo->Leggi(db->Adapt(QStringLiteral("SELECT TipoDoc, NDoc, PzVend, Qta, ValRic, CIVA FROM DocDett") + chiave));
          nudo->Esegui(db->Adapt(QStringLiteral("UPDATE Doc SET ImpDoc = 1, IVADoc = 1, TotDoc = 2") + chiave));
        }
        return static_cast<qint64>(kRigheBersaglio);
      },
      "lines");
  RilasciaRiferimenti();
  return 0;
}
