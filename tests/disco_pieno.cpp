// Helper of the error log tests: on the folder it is given, which a test has
// made a small file system of its own, it fills the disk, lets a write fail
// and prints what the error log then holds.
#include <QCoreApplication>
#include <QFile>
#include <cstdio>

#include "Database.h"
#include "ModPrestKT.h"
#include "Procedure.h"
#include "Schema.h"

using namespace prestkt;

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  if (argc < 2) return 2;
  const QString dir = QString::fromLocal8Bit(argv[1]);
  {
    auto db = Database::OpenSQLite(dir + QStringLiteral("/vorn.db"));
    CreaSchema(*db, false);
    gDB = db;
    gPathDB = db->PathDB();
    RiservaSpazioLog();
    std::printf("riserva: %lld\n", static_cast<long long>(QFile(FileRiservaLog()).size()));
    db->Execute(Sql("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni) VALUES "
                    "(202500001, 'Stampo', 1, 1, 1, '2025-01-10 00:00:00')"));
    QFile riempimento(dir + QStringLiteral("/riempimento"));
    if (!riempimento.open(QIODevice::WriteOnly)) return 3;
    const QByteArray blocco(4096, 'x');
    while (riempimento.write(blocco) == blocco.size() && riempimento.flush()) {
    }
    riempimento.close();
    QueryExe(Sql("UPDATE Projects SET Annot=") + Sql::Param(QString(200000, 'a')));
    QFile log(ErrLogFile(QStringLiteral("Procedure"), QStringLiteral("QueryExe"), Now()));
    log.open(QIODevice::ReadOnly);
    std::printf("log: %s", log.readAll().constData());
    std::printf("esito: fine\n");
    gDB.reset();
  }
  return 0;
}
