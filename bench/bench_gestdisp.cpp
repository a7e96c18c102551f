// The invoicing list on the large database: the screen opened and shown
// (Form_Load, then the first CaricaDati and CaricaList over every open
// disposition), and the same list with a year chosen (the period of each row's
// latest activity), each beside a bare read through the engine's own interface.
//
//   bench_gestdisp [folder]     (default /tmp/prestkt-bench)
#include <QApplication>
#include <QComboBox>

#include "BenchCommon.h"
#include "ListView.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "frmGestDisp.h"

using namespace prestkt;

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QString cartella;
  DatabasePtr db = bench::ApriDbGrande(argc, argv, &cartella);
  if (!db) return 1;
  const auto nudo = bench::Nudo::Di(*db);
  gDB = db;
  gPathDB = cartella + QLatin1Char('/');

  // The screen's own statements, as each engine reads them.
  const QString anni = db->Adapt(frmGestDisp::SqlAnni());
  const QString anag = db->Adapt(frmGestDisp::SqlAnag());
  const QString disp = db->Adapt(frmGestDisp::SqlDisposizioni(0, -1));
  const QString forfait = db->Adapt(frmGestDisp::SqlForfait(0, -1));
  const auto nudoApertura = [&] {
    nudo->Leggi(anni);
    nudo->Leggi(anag);
    return nudo->Leggi(disp) + nudo->Leggi(forfait);
  };

  bench::Caso(
      "frmGestDisp open (Form_Load + CaricaDati + CaricaList)",
      [] {
        frmGestDisp f;
        f.Form_Load();
        f.show();
        QApplication::processEvents();
        return static_cast<qint64>(f.ListView1->Count());
      },
      nudoApertura);

  // A year chosen: each open disposition asks for its latest activity. The
  // bare side reads the same rows and runs the same statement per row.
  const int anno = QDate::currentDate().year();
  frmGestDisp f;
  f.Form_Load();
  f.show();
  QApplication::processEvents();
  QStringList perRiga;
  for (const QString& sql : {disp, forfait})
    for (const Row& r : db->Select(Sql(sql)).rows)
      perRiga << db->Adapt(frmGestDisp::SqlUltimaAttivita(r[2].toInt(), r[3].toInt()));
  int giro = 0;
  bench::Caso(
      "frmGestDisp year in state 0 (CaricaDati + ShowDisp per row)",
      [&] {
        // From one year to the other, so that every round changes the choice.
        f.CBAnno->setCurrentIndex(f.CBAnno->findData(anno - (giro++ % 2)));
        QApplication::processEvents();
        return static_cast<qint64>(f.ListView1->Count());
      },
      [&] {
        qint64 trovate = 0;
        nudo->Leggi(disp);
        nudo->Leggi(forfait);
        for (const QString& sql : perRiga) trovate += nudo->Leggi(sql);
        return trovate;
      },
      "listed");
  gDB.reset();
  return 0;
}
