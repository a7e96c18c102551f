// The few lines a host needs: create the component, Initialize, the period,
// DBConn with the open database, and answers to its events.
#include <QApplication>
#include <QMainWindow>
#include <QTimer>

#include "OCPrestKT.h"
#include "Schema.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  auto db = prestkt::Database::OpenSQLite(argc > 1 ? argv[1] : "vorn.db");
  prestkt::CreaSchema(*db);  // a new file gets the tables; an existing one keeps its data

  QMainWindow w;
  auto* ctl = new prestkt::OCPrestKT(&w);
  ctl->Initialize();
  ctl->SetDtIni(QDateTime(QDate(QDate::currentDate().year(), 1, 1), QTime(0, 0)));
  ctl->SetDTEnd(QDateTime(QDate(QDate::currentDate().year(), 12, 31), QTime(0, 0)));
  ctl->SetStatus(-1);
  ctl->DBConn(db, 1, QIcon(), "documenti", 1);
  QObject::connect(ctl, &prestkt::OCPrestKT::ClosePrg, &app, &QApplication::quit, Qt::DirectConnection);
  QObject::connect(ctl, &prestkt::OCPrestKT::CallShowAnag, [] { /* show the host's party register */ });
  w.setCentralWidget(ctl);
  w.show();
  if (argc > 2) QTimer::singleShot(200, &app, &QApplication::quit);  // a smoke run
  return app.exec();
}
