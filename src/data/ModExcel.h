#pragma once
// Module ModExcel: the office documents the component makes for a model. The
// documents are written by the program itself, so the "installed version" of
// the word processor and of the spreadsheet is the version of the formats it
// writes: 16, the current OOXML formats (.docx, .xlsx). Anything below 12
// would mean the old binary formats and the old extensions (.doc, .xls).
#include <QString>

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

}  // namespace prestkt
