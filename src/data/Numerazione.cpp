#include "Numerazione.h"

#include "Procedure.h"

namespace prestkt {

int NuovoCodiceAttivita(Guard& g, int anno) {
  const qlonglong base = qlonglong(anno) * 100000;
  int codice = static_cast<int>(base + 1);
  RecordsetPtr ultimo;
  g([&] {
    ApriRecordset(ultimo,
                  QStringLiteral("SELECT CAttivita, DtIni FROM ActivitiesProd WHERE CAttivita Between ") + N(base) +
                      QStringLiteral(" And ") + N(base + 99999) + QStringLiteral(" ORDER BY CAttivita DESC; "),
                  nullptr, dbOpenSnapshot);
  });
  g([&] {
    if (!ultimo->Eof()) codice = CLng(ultimo->Value(QStringLiteral("CAttivita"))) + 1;
  });
  return codice;
}

int NuovoNumeroDisposizione(Guard& g, int cProject) {
  int numero = 1;
  RecordsetPtr ultimo;
  g([&] {
    ApriRecordset(ultimo,
                  QStringLiteral("SELECT CProject, CDisp FROM ProjectsDisp WHERE CProject=") + N(cProject) +
                      QStringLiteral(" ORDER BY CDisp DESC; "),
                  nullptr, dbOpenSnapshot);
  });
  g([&] {
    if (!ultimo->Eof()) numero = CInt(ultimo->Value(QStringLiteral("CDisp"))) + 1;
  });
  return numero;
}

RecordsetPtr ApriRigaAttivita(Guard& g, int codice, bool nuova, int cProject, int cDisp) {
  RecordsetPtr rs;
  g([&] {
    ApriRecordset(rs, QStringLiteral("SELECT * FROM ActivitiesProd WHERE CAttivita=") + N(codice) + QStringLiteral("; "),
                  nullptr, dbOpenDynaset);
  });
  if (nuova) {
    g([&] {
      rs->AddNew();
      rs->SetValue(QStringLiteral("CAttivita"), codice);
      rs->SetValue(QStringLiteral("CProject"), cProject);
      rs->SetValue(QStringLiteral("CDisp"), cDisp);
      rs->SetValue(QStringLiteral("Stato"), 0);
      rs->SetValue(QStringLiteral("TDocRif"), 0);
      rs->SetValue(QStringLiteral("NDocRif"), 0);
    });
  } else {
    g([&] { rs->Edit(); });
  }
  return rs;
}

}  // namespace prestkt
