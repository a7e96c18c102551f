// Helper of the component tests: a host that ends without the closing calls.
// It connects the component to a database and leaves main with everything
// still set: the component never destroyed, and with "tiene" the database
// kept by the host itself until the very end.
#include <QApplication>
#include <QDate>

#include "OCPrestKT.h"
#include "Schema.h"

namespace {
prestkt::DatabasePtr tenuto;  // what a careless host keeps in a global
}

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  if (argc < 2) return 2;
  auto db = prestkt::Database::OpenSQLite(QString::fromLocal8Bit(argv[1]));
  prestkt::CreaSchema(*db);
  if (argc > 2 && qstrcmp(argv[2], "tiene") == 0) tenuto = db;
  auto* ctl = new prestkt::OCPrestKT();  // never deleted
  ctl->Initialize();
  ctl->SetDtIni(QDateTime(QDate(2025, 1, 1), QTime(0, 0)));
  ctl->SetDTEnd(QDateTime(QDate(2025, 12, 31), QTime(0, 0)));
  ctl->SetStatus(-1);
  ctl->DBConn(db, 1, QIcon(), QString(), 1);
  ctl->show();
  app.processEvents();
  return 0;
}
