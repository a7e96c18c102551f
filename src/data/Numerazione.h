#pragma once
// The codes of new rows, read as the highest of their range plus one. Each
// routine runs its statements through the caller's guard, so that a failure is
// logged under the caller's procedure and the first number of the range stays.
// The caller holds the writer's transaction in which the row is then written.
#include "Guard.h"
#include "Recordset.h"

namespace prestkt {

// A new activity dated in year anno: anno * 100000 + 1, or the highest code of
// that year plus 1. The range holds 99999 codes and nothing guards its end.
int NuovoCodiceAttivita(Guard& g, int anno);

// A new disposition of a model: 1, or the highest number of the model plus 1.
int NuovoNumeroDisposizione(Guard& g, int cProject);

// The row of activity codice opened to be written: a new one added with its
// code, model and disposition and Stato, TDocRif, NDocRif at 0; an existing
// one put in edit. The caller writes the rest and updates it.
RecordsetPtr ApriRigaAttivita(Guard& g, int codice, bool nuova, int cProject, int cDisp);

}  // namespace prestkt
