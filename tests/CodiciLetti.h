#pragma once
// Reading barcodes back, as a scanner would: a PDF made into a picture by
// pdftoppm, and the codes on a picture decoded with ZXing.
#include <QImage>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <algorithm>
#include <vector>

#define ZX_USE_UTF8
#include <ZXing/ReadBarcode.h>

namespace prestkt::test {

struct CodiceLetto {
  QString testo;
  double yCm = 0;  // the middle of the code from the top of the page
};

// The first page of a PDF as a picture, through pdftoppm; null when it fails.
inline QImage PdfInImmagine(const QString& pdf, int dpi = 300) {
  QTemporaryDir dir;
  QProcess p;
  p.start(QStringLiteral("pdftoppm"), {"-r", QString::number(dpi), "-png", "-f", "1", "-l", "1", "-singlefile", pdf,
                                      dir.path() + QStringLiteral("/pagina")});
  if (!p.waitForFinished(60000) || p.exitCode() != 0) return {};
  return QImage(dir.path() + QStringLiteral("/pagina.png"));
}

// Every barcode on the picture, from the top down. The picture is read in
// bands of half a centimetre, one code a band, as a scanner passes over the
// paper; a code met in two bands next to each other is one code.
inline std::vector<CodiceLetto> LeggiCodici(const QImage& immagine, int dpi = 300) {
  const QImage grigia = immagine.convertToFormat(QImage::Format_Grayscale8);
  ZXing::DecodeHints hints;
  hints.setFormats(ZXing::BarcodeFormat::Any);
  hints.setTryHarder(false);
  hints.setTryRotate(false);
  hints.setMaxNumberOfSymbols(1);
  const int banda = std::max(8, static_cast<int>(dpi * 0.5 / 2.54));
  std::vector<CodiceLetto> letti;
  for (int y0 = 0; y0 + banda <= grigia.height(); y0 += banda / 2) {
    const ZXing::ImageView vista(grigia.constScanLine(y0), grigia.width(), banda, ZXing::ImageFormat::Lum,
                                 static_cast<int>(grigia.bytesPerLine()));
    const ZXing::Result r = ZXing::ReadBarcode(vista, hints);
    if (!r.isValid()) continue;
    const double yCm = (y0 + banda / 2.0) / dpi * 2.54;
    const QString testo = QString::fromStdString(r.text());
    if (!letti.empty() && letti.back().testo == testo && yCm - letti.back().yCm < 1.5 * banda / double(dpi) * 2.54) {
      letti.back().yCm = (letti.back().yCm + yCm) / 2;  // the same code, met again in the next band
      continue;
    }
    letti.push_back({testo, yCm});
  }
  return letti;
}

inline QStringList Testi(const std::vector<CodiceLetto>& letti) {
  QStringList t;
  for (const CodiceLetto& l : letti) t << l.testo;
  return t;
}

}  // namespace prestkt::test
