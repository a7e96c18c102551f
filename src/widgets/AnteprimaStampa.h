#pragma once
// The preview of a printed document, from which the user prints.
#include <QWidget>

#include "Stampa.h"

namespace prestkt {

// Shows the document in a print preview: the user prints it from there, to a
// printer or to a file. It counts as printed only when the user printed;
// closing the preview without printing gives false.
class AnteprimaStampa : public Stampante {
 public:
  explicit AnteprimaStampa(QWidget* padre = nullptr) : padre_(padre) {}
  bool Stampa(const Documento& documento) override;

 private:
  QWidget* padre_;
};

}  // namespace prestkt
