#include "AnteprimaStampa.h"

#include <QPageLayout>
#include <QPrintPreviewDialog>
#include <QPrinter>

namespace prestkt {

bool AnteprimaStampa::Stampa(const Documento& documento) {
  QPrinter stampante(QPrinter::HighResolution);
  stampante.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF()));
  stampante.setFullPage(true);
  stampante.setDocName(documento.Titolo());
  QPrintPreviewDialog anteprima(&stampante, padre_);
  anteprima.setObjectName(QStringLiteral("AnteprimaStampa"));
  anteprima.setWindowTitle(documento.Titolo());
  QObject::connect(&anteprima, &QPrintPreviewDialog::paintRequested,
                   [&documento](QPrinter* p) { documento.Disegna(*p); });
  // The preview accepts only after the user printed from it.
  return anteprima.exec() == QDialog::Accepted;
}

}  // namespace prestkt
