// The register on the component's surface with 100 000 models in the period:
// the full load (CaricaModelli and the list filled) and one change of the find
// text, each beside a bare query of the same rows.
//
//   bench_surface [folder]     (default /tmp/prestkt-bench)
#include <QApplication>
#include <QLineEdit>

#include "BenchCommon.h"
#include "Registro.h"
#include "ListView.h"
#include "ModPrestKT.h"
#include "OCPrestKT.h"
#include "Procedure.h"

using namespace prestkt;

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QString cartella;
  DatabasePtr db = bench::ApriDbGrande(argc, argv, &cartella);
  if (!db) return 1;
  const auto nudo = bench::Nudo::Di(*db);
  const auto [dal, al] = bench::PeriodoModelli(*db);
  gPathDB = cartella + QLatin1Char('/');
  // The register's text as the system writes it; each engine reads it adapted.
  const QString registroSistema = bench::TestoRegistro(dal, al);
  const QString registro = db->Adapt(registroSistema);

  OCPrestKT ctl;
  bench::ApriRegistro(ctl, db, cartella, dal);
  auto* list = ctl.findChild<ListView*>(QStringLiteral("ListView1"));
  auto* find = ctl.findChild<QLineEdit*>(QStringLiteral("TBFind"));

  // Setting the end of the period loads the models and fills the list.
  bench::Caso(
      "Register load (DTEnd: CaricaModelli + CaricaList)",
      [&] {
        ctl.SetDTEnd(al);
        QApplication::processEvents();
        return static_cast<qint64>(list->Count());
      },
      [&] { return nudo->Leggi(registro); });

  // One change of the find text filters the loaded models in memory.
  int giro = 0;
  bench::Caso(
      "Register filter (TBFind change)",
      [&] {
        find->setText(++giro % 2 ? QStringLiteral("stampo") : QStringLiteral("staffa"));
        QApplication::processEvents();
        return static_cast<qint64>(list->Count());
      },
      [&] {
        // The same rows, filtered by the engine.
        QString sql = registroSistema;
        sql.insert(sql.indexOf(QStringLiteral(" ORDER BY")),
                   QStringLiteral(" AND Projects.DProject LIKE '*") + find->text() + QStringLiteral("*'"));
        return nudo->Leggi(db->Adapt(sql));
      });
  gDB.reset();
  return 0;
}
