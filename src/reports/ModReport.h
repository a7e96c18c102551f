#pragma once
// The time worked per disposition of the models checked in the register,
// printed as a report or written to a file, and the word wrap the prints share.
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>

#include "Stampa.h"

namespace prestkt {

// Fills righe with the lines of testo that fit larghezza (cm) in the font
// given: the text is split at CR LF (first turned into a blank with
// togliACapo), each paragraph at blanks, and a word wider than the line is cut
// where it must. A width of 0 or less is the width of oggetto's page; an empty
// font name is "Arial"; a size of 0 is oggetto's current one. The print
// engine prints upright only, so corsivo measures as the text will be printed.
void SpezzaTesto(const Documento& oggetto, const QString& testo, QStringList& righe, double larghezza,
                 const QString& font = {}, bool grassetto = false, bool corsivo = false, double dimensione = 0,
                 bool togliACapo = false);

// The report "Report prestazioni" of the dispositions of the given models
// (the ones checked in the register), sorted by customer, model and
// disposition, to stampante. abilitaForm disables the host's form while the
// report is made and enables it again after. With no row: "Nessun record trovato".
void RepPrestazioni(const QList<int>& modelli, Stampante& stampante,
                    const std::function<void(bool)>& abilitaForm = {});

// The same data to a file the user picks: a sheet or a CSV by its extension,
// with titles. An existing file is overwritten only when the user says so.
void ExpPrestazioni(const QList<int>& modelli);

}  // namespace prestkt
