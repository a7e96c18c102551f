#pragma once
// Module ModExcel: the office documents the component makes for a model, and
// the export of a recordset to a sheet or to a text file. The
// documents are written by the program itself, so the "installed version" of
// the word processor and of the spreadsheet is the version of the formats it
// writes: 16, the current OOXML formats (.docx, .xlsx). Anything below 12
// would mean the old binary formats and the old extensions (.doc, .xls).
#include <QString>

#include "Procedure.h"

namespace prestkt {

int VersioneExcel();
int VersioneWord();

// An empty word-processing document (one empty paragraph, A4 page) as an OOXML
// package. False when the file cannot be written; no half-written file stays.
bool ScriviDocxVuoto(const QString& path);
// An empty workbook with one sheet, "Foglio1". False when it cannot be written.
bool ScriviXlsxVuoto(const QString& path);

// Makes the two functions above answer the given versions; 0 gives back the
// versions of the writers. For tests of the paths of the old formats.
void ImpostaVersioniOffice(int excel, int word);

// The recordset to a text file, one line per row, values joined by ";" with
// no escaping (a value holding ";" shifts the rest of its row). A path whose
// lower-case form ends in ".xls" or ".xlsx" goes to ADOtoXLS instead, with the
// heading and the range name (a sheet always has its titles). All the
// rows go out: a filter on rs is lifted for the export and put back after.
// intestazione, when given, is the first line; then the field names in double
// quotes (bare with soloTesto) unless senzaTitoli. Lines end with CR LF and
// the text is in Windows-1252, the code page the spreadsheet reads a CSV in.
// The file is written whole or not at all; "File creato con successo!" tells
// the user it was.
void ADOtoCSV(const QString& path, const RecordsetPtr& rs, const Progress& progress = {}, bool senzaTitoli = false,
              bool soloTesto = false, const QString& intestazione = {}, const QString& nomeRange = {});

// The recordset to a workbook of one sheet, "Foglio1": row 1 holds the titles
// (intestazione split at ";", or the field names), the rows follow from row 2.
// Null and empty values leave their cell empty; dates are texts "dd/mm/yyyy";
// cells are aligned by the field's type (AllineamentoCampo) and the columns
// fitted to their texts. nomeRange names the range from A1 to the last row and
// field. visibile asked the spreadsheet program to show itself at work: the
// sheet is written here without one, so there is nothing to show.
void ADOtoXLS(const QString& path, const RecordsetPtr& rs, const Progress& progress = {}, bool visibile = false,
              const QString& intestazione = {}, const QString& nomeRange = {});

// The horizontal alignment of a field's cells in the sheet, by its type.
enum class AllineaCella { Generale, Sinistra, Destra, Centro };
AllineaCella AllineamentoCampo(int tipo);

// Text in Windows-1252; a character the code page lacks becomes "?".
QByteArray InWindows1252(const QString& testo);

}  // namespace prestkt
