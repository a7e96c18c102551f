#pragma once
// Code 128 barcodes made with zint, saved as the barcode control of the system
// saved them.
#include <QImage>
#include <QString>

namespace prestkt {

// The barcode of testo, one pixel a module, scala pixels a module wide and
// altezza modules high, with a quiet zone of ten modules on each side.
QImage Code128(const QString& testo, int scala = 3, int altezza = 40);

// Saves the barcode of testo into file. Only the extensions "bmp" and "jpg"
// are written as such: under any other name the image is saved with ".bmp"
// behind the name, and the file then takes the name asked for. An existing
// file goes first. Raises when the code can't be made or the file written.
void SalvaCodiceABarre(const QString& testo, const QString& file);

}  // namespace prestkt
