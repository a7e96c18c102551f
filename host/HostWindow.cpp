#include "HostWindow.h"

#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QStyle>

#include "DemoData.h"
#include "ProcedureUi.h"
#include "Schema.h"

using namespace prestkt;

HostWindow::HostWindow(const HostOptions& o, QWidget* parent) : QMainWindow(parent), o_(o) {
  setWindowTitle(QStringLiteral("VORN - Gestione lavorazioni"));
  setWindowIcon(style()->standardIcon(QStyle::SP_ComputerIcon));
  InstallaMessaggiQt();
}

bool HostWindow::Open() {
  const bool nuovo = !QFileInfo::exists(o_.dbFile);
  try {
    QDir().mkpath(QFileInfo(o_.dbFile).absolutePath());
    db_ = Database::OpenSQLite(o_.dbFile);
    if (nuovo) CreaDatiDemo(*db_, QDate::currentDate());
    else CreaSchema(*db_);
  } catch (const VbError& e) {
    QMessageBox::critical(this, windowTitle(),
                          QStringLiteral("Impossibile aprire il database %1:\n%2").arg(o_.dbFile, e.Description()));
    return false;
  }
  QDir().mkpath(o_.docs);

  // The order of start the component asks for: create, Initialize, the period, DBConn.
  ctl_ = new OCPrestKT(this);
  ctl_->Initialize();
  const QDate oggi = QDate::currentDate();
  ctl_->SetDtIni(QDateTime(QDate(oggi.year() - 2, 1, 1), QTime(0, 0)));
  ctl_->SetDTEnd(QDateTime(QDate(oggi.year(), 12, 31), QTime(0, 0)));
  ctl_->SetStatus(-1);
  ctl_->DBConn(db_, o_.user, windowIcon(), o_.docs, o_.tAnag);
  setCentralWidget(ctl_);
  BuildMenus();
  statusBar()->showMessage(QStringLiteral("Database: %1").arg(o_.dbFile));
  return true;
}

void HostWindow::BuildMenus() {
  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  file->addAction(QStringLiteral("&Esci"), this, &QWidget::close);
  QMenu* modelli = menuBar()->addMenu(QStringLiteral("&Modelli"));
  modelli->addAction(QStringLiteral("&Elimina modello selezionato"), ctl_, &OCPrestKT::Elimina);
}
