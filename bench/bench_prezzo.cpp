// The selling price on a large disposition: the calculator opened with both
// tabs shown, and the proposed price for the host, each beside a bare read of
// the same rows through the engine's own interface.
//
//   bench_prezzo [folder]     (default /tmp/prestkt-bench)
//
// The database (one model whose disposition has 10 000 activities and 500
// delivered order lines) is made on the first run: prezzo.db in the folder,
// or the schema bench_prezzo on the server of PRESTKT_BENCH_PG.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <cstdio>

#include "BenchCommon.h"
#include "CalcDatiDisp.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "Schema.h"
#include "frmCalcPzVend.h"

using namespace prestkt;

namespace {

constexpr int kModello = 202500001;
constexpr int kAttivita = 10000;
constexpr int kRighe = 500;

void Riempi(Database& db) {
  CreaSchema(db, true);
  db.Execute(Sql("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, CostoH, Eliminato) VALUES "
                 "(1, 1, 'Officina Rossi', 0, 0), (2, 1, 'Zincatura Lombarda', 0, 0)"));
  db.InsertMany("Anagrafica", {"TAnag", "CAnag", "RagSoc1", "CostoH", "Eliminato"}, [n = 0](Row& r) mutable {
    if (++n > 40) return false;
    r = {10, n, QStringLiteral("Operatore %1").arg(n), 15.0 + n % 20, 0};
    return true;
  });
  db.InsertMany("TabGen", {"CTipTabGen", "CTabGen", "DTabGen", "Sigla", "Bool8"}, [n = 0](Row& r) mutable {
    if (++n > 30) return false;
    r = {12, n, QStringLiteral("Prestazione %1").arg(n), QStringLiteral("P%1").arg(n), 0};
    return true;
  });
  db.Execute(Sql("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla, Bool8) VALUES (1, 1, 'C/Lavorazione', 'CL', -1)"));
  db.Execute(Sql("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo')"));
  db.Execute(Sql("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, Forfait, TipoFatt) VALUES (1, 'Oraria', 0, 2)"));
  db.Execute(Sql("INSERT INTO ProjectsDispTar (CPrjTipo, CPrjDispTipo, TarMin, TarMax, TarH) VALUES (1, 1, 0, 0, 38)"));
  db.Execute(Sql("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
                 "(202500001, 'Stampo grande', 1, 1, 1, '2025-01-10 00:00:00')"));
  db.Execute(Sql("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato) VALUES "
                 "(202500001, 1, 'Serie', 1, '2025-01-11 00:00:00', 1000, 0)"));
  const QDateTime inizio(QDate(2025, 1, 13), QTime(0, 0));
  db.InsertMany("ActivitiesProd",
                {"CAttivita", "CProject", "CDisp", "CUtente", "CPrestazione", "DtIni", "DtEnd", "CostoH"},
                [&, n = 0](Row& r) mutable {
                  if (++n > kAttivita) return false;
                  const QDateTime giorno = inizio.addDays(n / 20);
                  r = {202500000 + n, kModello, 1, 1 + n % 40, 1 + n % 30, giorno,
                       giorno.addSecs(60 * (15 + n % 240)), n % 7 == 0 ? 0.0 : 15.0 + n % 20};
                  return true;
                });
  // One supplier order with kRighe lines, each delivered once and tied to the disposition.
  db.Execute(Sql("INSERT INTO DocForn (TipoDoc, NDoc, Data, Riferimento, TAnag, CAnag) VALUES "
                 "(12, 100, '2025-01-15 00:00:00', 'Ordine', 2, 1), (15, 200, '2025-02-15 00:00:00', 'DDT', 2, 1)"));
  db.InsertMany("DocFornDett", {"TipoDoc", "NDoc", "Scheda", "Riga", "Qta", "QtaArr", "PzVend", "CCaus"},
                [n = 0](Row& r) mutable {
                  if (++n > kRighe) return false;
                  r = {12, 100, 0, n, 10.0, 10.0, 1.0 + n % 13, 1};
                  return true;
                });
  db.InsertMany("DocFornDett",
                {"TipoDoc", "NDoc", "Scheda", "Riga", "Qta", "PzVend", "CCaus", "TipoDocRif", "NDocRif", "RigaRif"},
                [n = 0](Row& r) mutable {
                  if (++n > kRighe) return false;
                  r = {15, 200, 0, n, 10.0, 1.0 + n % 13, 1, 12, 100, n};
                  return true;
                });
  db.InsertMany("ProjectsDocDett", {"TipoDoc", "NDoc", "Scheda", "Riga", "RigaD", "CProject", "CDisp", "Qta", "Importo"},
                [n = 0](Row& r) mutable {
                  if (++n > kRighe) return false;
                  r = {12, 100, 0, n, n, kModello, 1, 10.0, 1.0 + n % 13};
                  return true;
                });
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  const QString cartella = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/prestkt-bench");
  QDir().mkpath(cartella);
  DatabasePtr db = bench::ApriDb(cartella, QStringLiteral("prezzo"), false);
  if (!db->TableExists(QStringLiteral("Projects"))) Riempi(*db);
  const auto motore = bench::Nudo::Di(*db);
  gDB = db;
  gPathDB = db->PathDB();
  ScriviConfig(false, QStringLiteral("PrestKT_PercRicLExt"), QStringLiteral("0.5"));
  ScriviConfig(false, QStringLiteral("PrestKT_PercRicMin"), QStringLiteral("0.2"));
  ScriviConfig(false, QStringLiteral("PrestKT_CoeffStd"), QStringLiteral("5"));
  ScriviConfig(false, QStringLiteral("PrestKT_CoeffRange"), QStringLiteral("1"));

  // What both read, the same rows through the engine alone: the model's
  // dispositions, its activities (as the working set reads them, with their
  // formatted dates), its order lines with their supplier, and the deliveries
  // against them with their causal.
  const QStringList stessiDati = {
      QStringLiteral("SELECT * FROM ProjectsDisp WHERE CProject=202500001"),
      QStringLiteral("SELECT * FROM ProjectsDispDett WHERE CProject=202500001"),
      QStringLiteral("SELECT CAttivita, CProject, CDisp, CUtente, CPrestazione, "
                     "Format([ActivitiesProd]![DtIni],\"dd/mm/yyyy\") AS DataIni, "
                     "Format([ActivitiesProd]![DtIni],\"hh:nn\") AS OraIni, DtIni, "
                     "Format([ActivitiesProd]![DtEnd],\"dd/mm/yyyy\") AS DataEnd, "
                     "Format([ActivitiesProd]![DtEnd],\"hh:nn\") AS OraEnd, DtEnd, "
                     "DtRealIni, DtRealEnd, Stato, TDocRif, NDocRif, CostoH, Annot1, Annot2 "
                     "FROM ActivitiesProd WHERE CProject=202500001"),
      QStringLiteral("SELECT ProjectsDocDett.CDisp, ProjectsDocDett.RigaD, [Doc:Forniture].TipoDoc, "
                     "[Doc:Forniture].NDoc, [Doc:Forniture].DataDoc, Anagrafica.RagSoc1, [Doc:Forniture].DataCons, "
                     "[Doc:FornitureDett].Riga, [Doc:FornitureDett].Qta, [Doc:FornitureDett].QtaArr, "
                     "[Doc:FornitureDett].Annullato, [Doc:FornitureDett].Importo, [Doc:FornitureDett].CCaus "
                     "FROM (([Doc:Forniture] INNER JOIN Anagrafica ON ([Doc:Forniture].CAnag = Anagrafica.CAnag) AND "
                     "([Doc:Forniture].TAnag = Anagrafica.TAnag)) INNER JOIN [Doc:FornitureDett] ON "
                     "([Doc:Forniture].NDoc = [Doc:FornitureDett].NDoc) AND ([Doc:Forniture].TipoDoc = "
                     "[Doc:FornitureDett].TipoDoc)) INNER JOIN ProjectsDocDett ON (ProjectsDocDett.TipoDoc = "
                     "[Doc:FornitureDett].TipoDoc) AND (ProjectsDocDett.NDoc = [Doc:FornitureDett].NDoc) AND "
                     "(ProjectsDocDett.Riga = [Doc:FornitureDett].Riga) WHERE ProjectsDocDett.TipoDoc=12 AND "
                     "ProjectsDocDett.CProject=202500001"),
      QStringLiteral("SELECT [Doc:FornitureDett].TipoDocRif, [Doc:FornitureDett].NDocRif, "
                     "[Doc:FornitureDett].RigaRif, [Doc:Forniture].TipoDoc, [Doc:Forniture].NDoc, "
                     "[Doc:FornitureDett].Riga, [Doc:Forniture].DataDoc, [Doc:Forniture].Riferimento, "
                     "Anagrafica.RagSoc1, [Doc:FornitureDett].Qta, [Doc:FornitureDett].Importo, "
                     "[ABC:Causfatt].Sigla, [ABC:Causfatt].Bool8 FROM (([Doc:Forniture] INNER JOIN "
                     "[Doc:FornitureDett] ON ([Doc:Forniture].TipoDoc = [Doc:FornitureDett].TipoDoc) AND "
                     "([Doc:Forniture].NDoc = [Doc:FornitureDett].NDoc)) INNER JOIN Anagrafica ON "
                     "([Doc:Forniture].TAnag = Anagrafica.TAnag) AND ([Doc:Forniture].CAnag = Anagrafica.CAnag)) "
                     "INNER JOIN [ABC:Causfatt] ON [Doc:FornitureDett].CCaus = [ABC:Causfatt].CTabGen "
                     "WHERE [Doc:Forniture].TipoDoc=15 AND [Doc:FornitureDett].TipoDocRif=12")};
  QStringList adattati;
  for (const QString& s : stessiDati) adattati << db->Adapt(s);
  const auto nudo = [&] {
    qint64 righe = 0;
    for (const QString& s : adattati) righe += motore->Leggi(s);
    return righe;
  };
  bench::Caso(
      "frmCalcPzVend apertura",
      [] {
        frmCalcPzVend f;
        f.CProject = kModello;
        f.CDisp = 1;
        f.Qta = 1000;
        if (!f.Form_Load()) return qint64(-1);
        f.SSTab1->setCurrentIndex(1);  // the external tab shown: the whole chain again
        // The rows of the working set that the screen read.
        return static_cast<qint64>(gRcsDisp->RecordCount() + gRcsDispDett->RecordCount() + gRcsAct->RecordCount() +
                                   gRcsLavExt->RecordCount() + gRcsForn->RecordCount());
      },
      nudo);
  bench::Caso(
      "CalcDatiDisp", [] { return static_cast<qint64>(Round(CalcDatiDisp(kModello, 1) * 100)); }, nudo,
      "price_cents");
  RilasciaRiferimenti();
  return 0;
}
