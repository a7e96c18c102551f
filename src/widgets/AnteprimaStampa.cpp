#include "AnteprimaStampa.h"

#include <QPageLayout>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QScreen>

#include <algorithm>

namespace prestkt {

bool AnteprimaStampa::Stampa(const Documento& documento) {
  QPrinter stampante(QPrinter::HighResolution);
  stampante.setPageLayout(documento.Layout());
  stampante.setFullPage(true);
  stampante.setDocName(documento.Titolo());
  QPrintPreviewDialog anteprima(&stampante, padre_);
  anteprima.setObjectName(QStringLiteral("AnteprimaStampa"));
  anteprima.setWindowTitle(documento.Titolo());
  // A page that can be read: most of the screen's height, a sheet's width;
  // a page lying down, most of its width.
  if (const QScreen* schermo = anteprima.screen()) {
    const QRect area = schermo->availableGeometry();
    if (documento.Orizzontale()) {
      const int largo = area.width() * 9 / 10;
      anteprima.resize(largo, std::min(area.height() * 9 / 10, largo * 4 / 5));
    } else {
      const int alto = area.height() * 9 / 10;
      anteprima.resize(std::min(area.width(), alto * 4 / 5), alto);
    }
  }
  QObject::connect(&anteprima, &QPrintPreviewDialog::paintRequested,
                   [&documento](QPrinter* p) { documento.Disegna(*p); });
  // The preview accepts only after the user printed from it.
  return anteprima.exec() == QDialog::Accepted;
}

}  // namespace prestkt
