#pragma once
// The prints of the module ModStampe: the production sheet of a disposition.
#include "Stampa.h"

namespace prestkt {

// The sheet that travels with a disposition through the workshop: its code as
// a barcode, the head of the model, the notes, the quantity, and one block of
// rows per service kind with the kind's barcode. The page is built from the
// working recordsets of the model (the register's row, gRcsDisp,
// gRcsDispDett) and goes to stampante; when stampante says the sheet was
// printed, ProjectsDisp.NStampa takes the number of this print.
void StpSchedaProd(Stampante& stampante, int cProject, int cDisp);

}  // namespace prestkt
