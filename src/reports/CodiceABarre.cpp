#include "CodiceABarre.h"

#include <QFile>
#include <QFileInfo>
#include <cstring>
#include <memory>
#include <zint.h>

#include "VbError.h"

namespace prestkt {

QImage Code128(const QString& testo, int scala, int altezza) {
  std::unique_ptr<zint_symbol, void (*)(zint_symbol*)> simbolo(ZBarcode_Create(), ZBarcode_Delete);
  if (!simbolo) Raise(err::OutOfMemory);
  simbolo->symbology = BARCODE_CODE128;
  simbolo->height = static_cast<float>(altezza);
  simbolo->scale = 0.5f;  // one pixel a module
  simbolo->whitespace_width = 10;
  simbolo->show_hrt = 0;
  const QByteArray dati = testo.toLatin1();
  if (ZBarcode_Encode_and_Buffer(simbolo.get(), reinterpret_cast<const unsigned char*>(dati.constData()),
                                 static_cast<int>(dati.size()), 0) >= ZINT_ERROR)
    Raise(err::InvalidProcedureCall, QString::fromLatin1(simbolo->errtxt));
  const int w = simbolo->bitmap_width, h = simbolo->bitmap_height;
  QImage modulo(w, h, QImage::Format_RGB888);
  for (int y = 0; y < h; ++y)
    std::memcpy(modulo.scanLine(y), simbolo->bitmap + static_cast<size_t>(y) * w * 3, static_cast<size_t>(w) * 3);
  return modulo.scaled(w * scala, h, Qt::IgnoreAspectRatio, Qt::FastTransformation);
}

void SalvaCodiceABarre(const QString& testo, const QString& file) {
  const QString estensione = QFileInfo(file).suffix().toLower();
  const bool propria = estensione == QLatin1String("bmp") || estensione == QLatin1String("jpg");
  const QString scritto = propria ? file : file + QStringLiteral(".bmp");
  if (QFile::exists(file) && !QFile::remove(file)) Raise(err::PermissionDenied, QStringLiteral("Permission denied: ") + file);
  if (!propria && QFile::exists(scritto)) QFile::remove(scritto);
  const QImage immagine = Code128(testo);
  if (!immagine.save(scritto, estensione == QLatin1String("jpg") ? "JPG" : "BMP"))
    Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + scritto);
  if (!propria && !QFile::rename(scritto, file))
    Raise(err::PathFileAccess, QStringLiteral("Path/File access error: ") + file);
}

}  // namespace prestkt
