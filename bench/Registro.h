#pragma once
// The register on the component's surface, as the host shows it: a window of
// 1280×720, every state, the period's start set, the database connected; the
// period's end, set by the bench, loads the models and fills the list.
#include <QIcon>

#include "OCPrestKT.h"

namespace prestkt::bench {

inline void ApriRegistro(OCPrestKT& ctl, const DatabasePtr& db, const QString& cartella, const QDateTime& dal) {
  ctl.resize(1280, 720);
  ctl.show();
  ctl.Initialize();
  ctl.SetStatus(-1);
  ctl.SetDtIni(dal);
  ctl.DBConn(db, 1, QIcon(), cartella + QStringLiteral("/docs"), 1);
}

}  // namespace prestkt::bench
