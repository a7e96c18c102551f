#pragma once
// The only way screens fill their lists: columns from parallel arrays, lines
// from a string array and a key.
#include <QColor>
#include <QIcon>
#include <QList>
#include <QStatusBar>
#include <QStringList>
#include <vector>

#include "ListView.h"

namespace prestkt {

// Prepares a list: clears it, sets check boxes, full-row selection, grid lines
// and the icons (none when the list is empty). scala other than 1: Verdana.
void ListViewReport(ListView* lista, bool spunte, const QList<QIcon>& icone = {}, double scala = 1);
// One column per title, with the width (twips) and alignment of the same index,
// keyed "a00000", "a00001", ...
void ListViewSetColumns(ListView* lista, const QStringList& titoli, const std::vector<int>& larghezze,
                        const std::vector<int>& allineamenti);
// Gives column colonna (1-based) all the width that is left; with colonnaB the
// two share it in percA and percB.
void ResizeList(ListView* lista, int colonna, int colonnaB = 0, double percA = 0, double percB = 0);
// A click on the header of colonna (1-based): a new column sorts ascending, the
// same column again flips the order; the first line is then selected and shown.
// With primaVolta, a list not sorted yet takes any column as new; without it,
// the list's current sort key counts even before the first sort.
void OrdinaPerColonna(ListView* lista, int colonna, bool primaVolta);
// A list at least as wide as all its columns, so that none hides at the start.
void LarghezzaColonne(ListView* lista);
// Selects the line with the key and brings it to the top of the view.
void FindInList(ListView* lista, const QString& chiave);
// Adds a line: valori[0] the item's text, valori[i] the sub-item i. An empty
// value shows as one blank.
int ListViewAddLine(ListView* lista, const QStringList& valori, const QString& chiave, int icona = -1,
                    const QColor& colore = {}, bool grassetto = false, bool spuntata = false);

// Fills a list with count lines whose texts are made when the list shows them:
// the way for lists of many thousands of lines. Empty values show one blank,
// as ListViewAddLine does. spuntate: every line starts ticked.
void ListViewAddLines(ListView* lista, int count, const ListView::LineText& testo, const ListView::LineKey& chiave,
                      bool spuntate = false);

// The same with the icon of the first column, a line height (twips, 0 for the
// list's own) and a check state.
int ListViewAddLineIcon(ListView* lista, const QStringList& valori, const QString& chiave, int icona,
                        int altezza = 0, bool spuntata = false);
// One panel of the status bar under each column, with its width and alignment.
void ResizeStatusBar(ListView* lista, QStatusBar* barra);

}  // namespace prestkt
