// The memory the register of 100 000 models holds: the program's resident
// size before the period is set, its peak while the models load and the list
// shows them, and what stays afterwards, beside the bytes of the rows' data
// as the engine hands them over.
//
//   bench_memoria [folder]     (default /tmp/prestkt-bench; PRESTKT_BENCH_PG for a server)
//
// The peak is the process's own (VmHWM), so the case runs once, first, in a
// process of its own.
#include <QApplication>
#include <QFile>
#include <cstdio>

#include "BenchCommon.h"
#include "Registro.h"
#include "ListView.h"
#include "ModPrestKT.h"
#include "OCPrestKT.h"
#include "Procedure.h"

using namespace prestkt;

namespace {

// A figure of /proc/self/status, in bytes.
qint64 Stato(const char* voce) {
  QFile f(QStringLiteral("/proc/self/status"));
  if (!f.open(QIODevice::ReadOnly)) return -1;
  for (const QByteArray& riga : f.readAll().split('\n'))
    if (riga.startsWith(voce)) return riga.mid(qstrlen(voce)).trimmed().split(' ').front().toLongLong() * 1024;
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  QString cartella;
  DatabasePtr db = bench::ApriDbGrande(argc, argv, &cartella);
  if (!db) return 1;
  const auto [dal, al] = bench::PeriodoModelli(*db);
  gPathDB = cartella + QLatin1Char('/');

  OCPrestKT ctl;
  bench::ApriRegistro(ctl, db, cartella, dal);
  QApplication::processEvents();
  const qint64 prima = Stato("VmRSS:");
  // Setting the end of the period loads the models and fills the list.
  ctl.SetDTEnd(al);
  QApplication::processEvents();
  const qint64 picco = Stato("VmHWM:") - prima;
  const qint64 dopo = Stato("VmRSS:") - prima;
  const int righe = ctl.findChild<ListView*>(QStringLiteral("ListView1"))->Count();

  const QString registro = db->Adapt(bench::TestoRegistro(dal, al));
  const qint64 dati = bench::Nudo::Di(*db)->Byte(registro);
  std::printf("{\"case\":\"Register memory (100 000 models loaded and shown)\",\"rows\":%d,\"data_bytes\":%lld,"
              "\"peak_bytes\":%lld,\"held_bytes\":%lld,\"ratio\":%.2f,\"held_ratio\":%.2f}\n",
              righe, static_cast<long long>(dati), static_cast<long long>(picco), static_cast<long long>(dopo),
              dati > 0 ? static_cast<double>(picco) / dati : 0.0, dati > 0 ? static_cast<double>(dopo) / dati : 0.0);
  gDB.reset();
  return 0;
}
