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

}  // namespace prestkt
