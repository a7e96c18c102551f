#include "CalcDatiDisp.h"

#include "Guard.h"
#include "ModPrestKT.h"
#include "Procedure.h"

namespace prestkt {

// Unlike the calculator, the band's coefficient is the step at all three
// places and the standard one only counts in the fallback test; and the margin
// wins over the top of the band. Each statement that fails is logged and the
// next runs with what the variables hold.
double CalcDatiDisp(int cProject, int cDisp) {
  Guard g(QStringLiteral("OCPrestKT"), QStringLiteral("CalcDatiDisp"));
  const ImpostazioniPrezzo imp = LeggiImpostazioniPrezzo(g, kFallbackCalcolo);
  const QString disp = QStringLiteral("CDisp=") + QString::number(cDisp);

  int tAnag = 0, cAnag = 0, cPrjTipo = 0, cPrjDispTipo = 0;
  RecordsetPtr modello;
  g([&] {
    ApriRecordset(modello,
                  QStringLiteral("SELECT CProject, TAnag, CAnag,CPrjTipo FROM Projects WHERE CProject=") +
                      QString::number(cProject) + QStringLiteral(" "),
                  nullptr, dbOpenSnapshot);
  });
  g([&] { tAnag = CInt(NullToZero(modello->Value(QStringLiteral("TAnag")))); });
  g([&] { cAnag = CLng(NullToZero(modello->Value(QStringLiteral("CAnag")))); });
  g([&] { cPrjTipo = CInt(NullToZero(modello->Value(QStringLiteral("CPrjTipo")))); });

  RecordsetPtr rcsDisp, rcsDispDett, rcsProd, rcsAct, rcsLavExt, rcsForn;
  g([&] { CaricaDatiModello(cProject, {&rcsDisp, &rcsDispDett, &rcsProd, &rcsAct, &rcsLavExt, &rcsForn}); });
  g([&] {
    rcsDisp->SetFilter(disp);
    cPrjDispTipo = CInt(NullToZero(rcsDisp->Value(QStringLiteral("CPrjDispTipo"))));
  });
  const tyDatiDisp tar = GetDatiDisp(tAnag, cAnag, cPrjTipo, cPrjDispTipo);

  // Internal work: minutes at the tariff, each activity at its operator's cost.
  qint64 minutiTot = 0, m = 0;
  double ci = 0, ri = 0, ce = 0, re = 0;
  RecordsetPtr act;
  g([&] {
    act = rcsAct->Clone();
    act->SetFilter(disp);
  });
  g([&] {
    const int costo = act->FieldIndex(QStringLiteral("CostoH"));
    const int dtIni = act->FieldIndex(QStringLiteral("DtIni"));
    const int dtEnd = act->FieldIndex(QStringLiteral("DtEnd"));
    for (; !act->Eof(); act->MoveNext()) {
      double costoH = 0;
      g([&] { costoH = CDbl(NullToZero(act->Value(costo))); });
      g([&] { m = MinutiTra(act->Value(dtIni), act->Value(dtEnd)); });
      minutiTot += m;
      ci += Round(costoH / 60 * static_cast<double>(m), 2);
    }
  });
  ri = Round(static_cast<double>(minutiTot) * tar.vTarH / 60, 2);

  // External work: the order lines at the order's price, with the markup.
  RecordsetPtr ext;
  g([&] {
    ext = rcsLavExt->Clone();
    ext->SetFilter(disp);
  });
  g([&] {
    for (; !ext->Eof(); ext->MoveNext())
      g([&] {
        ce += Round(Round(CDbl(NullToZero(ext->Value(QStringLiteral("Importo")))), 2) *
                        CDbl(NullToZero(ext->Value(QStringLiteral("Qta")))),
                    2);
      });
  });
  re = Round((1 + imp.PercRicLExt) * ce, 2);

  const double c = ci + ce;
  const double r = ri + re;
  if (r <= 0) return 0;
  double margine = 0;
  g([&] { margine = 1 - Dividi(c, r); });
  const auto pavimento = [&] { return ArrotMultiplo(Round((1 + imp.PercRicMin) * c, 2), imp.CoeffRange); };
  double p = margine >= imp.PercRicMin ? ArrotMultiplo(r, imp.CoeffRange) : pavimento();
  if (p < tar.vMin) {
    p = tar.vMin;
  } else if (tar.vMax > 0 && p > tar.vMax) {
    p = tar.vMax;
    g([&] { margine = p == 0 ? 1 : 1 - Dividi(c, p); });
    if (margine < imp.PercRicMin) p = pavimento();
  }
  return p;
}

}  // namespace prestkt
