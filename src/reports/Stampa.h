#pragma once
// The print engine: a document of pages described by position in centimetres
// (texts left, right or centred in a font, filled rectangles, frames, lines,
// images), drawn the same way on a preview, a printer or a PDF file. Every
// print of the component is made of it; where it goes is a Stampante.
#include <QColor>
#include <QFont>
#include <QPageLayout>
#include <QImage>
#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

class QPagedPaintDevice;
class QPainter;

namespace prestkt {

enum class Allinea { Sinistra, Destra, Centro };

class Documento {
 public:
  // An A4 page, upright unless the document lies on it.
  static constexpr double kLarghezza = 21.0;
  static constexpr double kAltezza = 29.7;

  Documento();
  ~Documento();
  Documento(const Documento&);
  Documento& operator=(const Documento&);

  // A document wider than it is tall lies on its page: positions run across
  // the long side. Every destination takes the page as the document says.
  void Orizzontale(bool orizzontale) { orizzontale_ = orizzontale; }
  bool Orizzontale() const { return orizzontale_; }
  double Larghezza() const { return orizzontale_ ? kAltezza : kLarghezza; }
  double Altezza() const { return orizzontale_ ? kLarghezza : kAltezza; }
  QPageLayout Layout() const;

  void Titolo(const QString& titolo) { titolo_ = titolo; }
  const QString& Titolo() const { return titolo_; }
  void NuovaPagina();  // the first page is there from the start
  int Pagine() const;

  // The font of what follows: a name, a size in points, bold or not.
  void Font(const QString& nome, double punti, bool grassetto = false);
  const QFont& FontCorrente() const { return font_; }
  // A text whose top stands at y: x is its left edge, its right edge or its centre.
  void Testo(double x, double y, const QString& testo, Allinea allinea = Allinea::Sinistra);
  void Rettangolo(double x1, double y1, double x2, double y2, const QColor& riempimento);
  void Cornice(double x1, double y1, double x2, double y2, const QColor& colore = Qt::black);
  void Linea(double x1, double y1, double x2, double y2, const QColor& colore = Qt::black);
  void Immagine(const QImage& immagine, double x1, double y1, double x2, double y2);

  // Measures in centimetres with the real metrics of the current font.
  double LarghezzaTesto(const QString& testo) const;
  double AltezzaRiga() const;
  // The text broken into lines no wider than larghezza: at blanks where it can,
  // inside a word that alone is wider; its own line breaks stay.
  QStringList Spezza(const QString& testo, double larghezza) const;

  // The texts a page prints, in their order, as they were put on it.
  struct TestoStampato {
    QString testo;
    double x = 0;
    double y = 0;
    Allinea allinea = Allinea::Sinistra;
    QFont font;
  };
  std::vector<TestoStampato> Testi(int pagina) const;

  // Draws every page on the device, which is open for the first page.
  void Disegna(QPagedPaintDevice& dispositivo) const;
  // Writes the document to a PDF file; false when the file can't be written.
  bool SalvaPdf(const QString& file) const;
  // One page as a picture at the given resolution.
  QImage Pagina(int pagina, int dpi) const;

  struct Comando;

 private:
  void DisegnaPagina(QPainter& p, int pagina) const;

  QString titolo_;
  bool orizzontale_ = false;
  QFont font_;
  std::vector<std::vector<Comando>> pagine_;
};

// Where a document goes. Stampa tells whether the document was actually
// printed: a preview closed without printing gives false.
class Stampante {
 public:
  virtual ~Stampante() = default;
  virtual bool Stampa(const Documento& documento) = 0;
};

// Straight to a PDF file, for tests and for a user who wants a file: written
// is printed.
class StampantePdf : public Stampante {
 public:
  explicit StampantePdf(QString file) : file_(std::move(file)) {}
  bool Stampa(const Documento& documento) override { return documento.SalvaPdf(file_); }
  const QString& File() const { return file_; }

 private:
  QString file_;
};

}  // namespace prestkt
