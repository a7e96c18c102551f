#pragma once
// The screen side of the modules Procedure and ModPrestKT: combos filled from
// queries, the placing of forms, and the Qt dialogs behind the message service.
#include <QComboBox>
#include <QString>
#include <QVariant>
#include <QWidget>

#include "Database.h"

namespace prestkt {

// Fills a combo from a query: the text of field colTesto, the item data of
// field colCodice (-1: none). primaVoce, when not empty, comes first with item
// data 0. nonSvuotare keeps the entries the combo has. maiuscole: 0 as stored,
// 1 upper case, 2 lower case. valoreSel selects the first entry with that item data.
// A control named, as a screen makes it: the name is how tests and the host find it.
template <class W>
W* Nome(W* w, const QString& nome) {
  w->setObjectName(nome);
  return w;
}

void CaricaCombo(QComboBox* combo, const Sql& sql, int colCodice, int colTesto, const QVariant& valoreSel = {},
                 const QVariant& primaVoce = {}, bool nonSvuotare = false, int maiuscole = 0);
// The item data of the selected entry; 0 with no selection.
int GetCBValue(QComboBox* combo);
// Selects the entry whose item data is valore; none: the entry of index def.
void SetCBValue(QComboBox* combo, int valore, int def);
int ItemData(QComboBox* combo, int index);

void CaricaComboTAnag(QComboBox* combo, int tAnag);
void CaricaComboAnag(QComboBox* combo, int tAnag);
void CaricaComboTipoPrj(QComboBox* combo);
void CaricaComboTipoDisp(QComboBox* combo);

// A text field bound to a column takes no more characters than massimo
// (TestoMassimo): typing stops there, and a paste keeps its first part.
// A single-line field or a multi-line one.
void LimitaTesto(QWidget* campo, int massimo);

// Places a form in the middle of the screen and gives it the component's icon.
void CentraForm(QWidget* form);
// The room of a form's borders: outer size less inner size.
double MargineLargo(QWidget* form);
double MargineAlto(QWidget* form);

// Installs the message service that shows Qt dialogs with Italian buttons.
void InstallaMessaggiQt();

}  // namespace prestkt
