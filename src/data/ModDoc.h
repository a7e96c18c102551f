#pragma once
// The recordsets that the line screen of a host document works on, the
// default reason of work done outside, and the two link tables made on a
// database that has none yet.
#include <functional>
#include <optional>
#include <vector>

#include "Recordset.h"

namespace prestkt {

// rcsD: the dispositions a line may be tied to; rcsFD, rcsFDD: the document's
// lines and their service kinds. vCCaus takes CercaCausCLav's reason (a byte:
// a reason above 255 fails the assignment and leaves it as it was). vNewDoc:
// the document doesn't exist yet, its lines are the structure alone.
void IniTab4Doc(RecordsetPtr& rcsD, RecordsetPtr& rcsFD, RecordsetPtr& rcsFDD, int& vCCaus, int TipoDoc, int NDoc,
                bool vNewDoc);

// The reason code of work done outside: the one reason named "C/Lavorazione",
// else the one named "C/Lavoro", else the one whose name holds "Lavor"; 0 when
// no step finds exactly one.
int CercaCausCLav();

// Writes the lines a document's line screen collected under the document's
// final numbers: its links are replaced as a whole, in one transaction, so a
// failed write keeps the old ones.
void SaveDataDoc(int TipoDoc, int NDoc, const RecordsetPtr& rcsFD, const RecordsetPtr& rcsFDD);

// One row per disposition of the given models on which time was recorded:
// customer, model, disposition, the time "hh:nn:00", its minutes, the day of
// the last activity and the quantity.
RecordsetPtr PreparaDati(const QList<int>& modelli);

// A document's totals from its lines. Each line's amount is rounded to the
// cent, after its own surcharge (valRic, a percentage off) and the header's
// discount; its tax is rounded again on that amount, at the rate of the
// header's VAT code when it has one, else the line's. aliquota gives a code's
// rate, or nothing when it knows no such code: that line's tax is left out.
struct RigaTotali {
  double qta = 0, pzVend = 0, valRic = 0;
  int cIva = 0;
};
struct Totali {
  double imponibile = 0, iva = 0;
  double totale() const { return imponibile + iva; }
};
Totali CalcolaTotali(const std::vector<RigaTotali>& righe, double valSconto, int cIvaTesta,
                     const std::function<std::optional<double>(int)>& aliquota);

// The statements these routines read with, in the system's SQL: the open
// dispositions, the times of a model's dispositions, the data of a disposition
// (condizione: the HAVING of a pair).
QString SqlDisposizioniAperte();
QString SqlTempiDisposizioni(const QString& codice);
QString SqlDatiDisposizione(const QString& condizione);

}  // namespace prestkt
