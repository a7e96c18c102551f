#pragma once
// The main window of the demo host: it opens the database, places the
// component and answers what the component asks of its host.
#include <QMainWindow>

#include "Database.h"
#include "OCPrestKT.h"

struct HostOptions {
  QString dbFile;
  QString docs;
  int user = 1;
  int tAnag = 1;
};

class HostWindow : public QMainWindow {
  Q_OBJECT
 public:
  explicit HostWindow(const HostOptions& o, QWidget* parent = nullptr);
  bool Open();
  prestkt::OCPrestKT* Control() const { return ctl_; }

 private:
  void BuildMenus();

  HostOptions o_;
  prestkt::DatabasePtr db_;
  prestkt::OCPrestKT* ctl_ = nullptr;
};
