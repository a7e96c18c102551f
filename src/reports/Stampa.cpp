#include "Stampa.h"

#include <QFontMetricsF>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QFileInfo>
#include <QPdfWriter>

namespace prestkt {

namespace {

constexpr double kCmPerPollice = 2.54;
constexpr int kDpiMisura = 1200;  // the resolution texts are measured at

// The device texts are measured on: the one resolution of every layout decision.
const QImage& Metro() {
  static const QImage metro = [] {
    QImage i(1, 1, QImage::Format_RGB32);
    const int dpm = static_cast<int>(kDpiMisura / kCmPerPollice * 100);
    i.setDotsPerMeterX(dpm);
    i.setDotsPerMeterY(dpm);
    return i;
  }();
  return metro;
}

double Cm(double pixel, double dpi) { return pixel / dpi * kCmPerPollice; }

}  // namespace

struct Documento::Comando {
  enum Tipo { Testo, Rettangolo, Cornice, Linea, Immagine } tipo;
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  QString testo;
  Allinea allinea = Allinea::Sinistra;
  QFont font;
  QColor colore;
  QImage immagine;
};

Documento::Documento() : pagine_(1) { Font(QStringLiteral("Arial"), 10); }
Documento::~Documento() = default;
Documento::Documento(const Documento&) = default;
Documento& Documento::operator=(const Documento&) = default;

void Documento::NuovaPagina() { pagine_.emplace_back(); }

int Documento::Pagine() const { return static_cast<int>(pagine_.size()); }

void Documento::Font(const QString& nome, double punti, bool grassetto) {
  font_ = QFont(nome);
  font_.setPointSizeF(punti);
  font_.setBold(grassetto);
}

void Documento::Testo(double x, double y, const QString& testo, Allinea allinea) {
  Comando c{Comando::Testo};
  c.x1 = x;
  c.y1 = y;
  c.testo = testo;
  c.allinea = allinea;
  c.font = font_;
  pagine_.back().push_back(std::move(c));
}

void Documento::Rettangolo(double x1, double y1, double x2, double y2, const QColor& riempimento) {
  pagine_.back().push_back({Comando::Rettangolo, x1, y1, x2, y2, {}, Allinea::Sinistra, {}, riempimento, {}});
}

void Documento::Cornice(double x1, double y1, double x2, double y2, const QColor& colore) {
  pagine_.back().push_back({Comando::Cornice, x1, y1, x2, y2, {}, Allinea::Sinistra, {}, colore, {}});
}

void Documento::Linea(double x1, double y1, double x2, double y2, const QColor& colore) {
  pagine_.back().push_back({Comando::Linea, x1, y1, x2, y2, {}, Allinea::Sinistra, {}, colore, {}});
}

void Documento::Immagine(const QImage& immagine, double x1, double y1, double x2, double y2) {
  pagine_.back().push_back({Comando::Immagine, x1, y1, x2, y2, {}, Allinea::Sinistra, {}, {}, immagine});
}

double Documento::LarghezzaTesto(const QString& testo) const {
  return Cm(QFontMetricsF(font_, &Metro()).horizontalAdvance(testo), kDpiMisura);
}

double Documento::AltezzaRiga() const { return Cm(QFontMetricsF(font_, &Metro()).height(), kDpiMisura); }

QStringList Documento::Spezza(const QString& testo, double larghezza) const {
  QStringList righe;
  QString t = testo;
  t.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  for (const QString& paragrafo : t.split(QLatin1Char('\n'))) {
    QString riga;
    for (const QString& parola : paragrafo.split(QLatin1Char(' '))) {
      const QString prova = riga.isEmpty() ? parola : riga + QLatin1Char(' ') + parola;
      if (LarghezzaTesto(prova) <= larghezza) {
        riga = prova;
        continue;
      }
      if (!riga.isEmpty()) righe << riga;
      // A word wider than the line goes on in pieces.
      riga.clear();
      for (const QChar c : parola) {
        if (!riga.isEmpty() && LarghezzaTesto(riga + c) > larghezza) {
          righe << riga;
          riga.clear();
        }
        riga += c;
      }
    }
    righe << riga;
  }
  return righe;
}

std::vector<Documento::TestoStampato> Documento::Testi(int pagina) const {
  std::vector<TestoStampato> testi;
  if (pagina < 0 || pagina >= Pagine()) return testi;
  for (const Comando& c : pagine_[static_cast<size_t>(pagina)])
    if (c.tipo == Comando::Testo) testi.push_back({c.testo, c.x1, c.y1, c.allinea, c.font});
  return testi;
}

void Documento::DisegnaPagina(QPainter& p, int pagina) const {
  QPaintDevice& dispositivo = *p.device();
  p.setRenderHint(QPainter::Antialiasing, true);
  p.setRenderHint(QPainter::SmoothPixmapTransform, false);  // bars stay sharp
  const double k = dispositivo.logicalDpiX() / kCmPerPollice;
  const auto punto = [k](double x, double y) { return QPointF(x * k, y * k); };
  for (const Comando& c : pagine_[static_cast<size_t>(pagina)]) {
    const QRectF area(punto(c.x1, c.y1), punto(c.x2, c.y2));
    switch (c.tipo) {
      case Comando::Testo: {
        p.setFont(c.font);
        p.setPen(Qt::black);
        const double largo = Larghezza() * 2 * k;
        const double alto = QFontMetricsF(c.font, &dispositivo).height() * 2;
        const QPointF o = punto(c.x1, c.y1);
        QRectF r(o.x(), o.y(), largo, alto);
        int allinea = Qt::AlignLeft;
        if (c.allinea == Allinea::Destra) {
          r.moveRight(o.x());
          allinea = Qt::AlignRight;
        } else if (c.allinea == Allinea::Centro) {
          r.moveLeft(o.x() - largo / 2);
          allinea = Qt::AlignHCenter;
        }
        p.drawText(r, allinea | Qt::AlignTop | Qt::TextSingleLine, c.testo);
        break;
      }
      case Comando::Rettangolo:
        p.fillRect(area.normalized(), c.colore);
        break;
      case Comando::Cornice:
        p.setPen(QPen(c.colore, 0));
        p.setBrush(Qt::NoBrush);
        p.drawRect(area.normalized());
        break;
      case Comando::Linea:
        p.setPen(QPen(c.colore, 0));
        p.drawLine(area.topLeft(), area.bottomRight());
        break;
      case Comando::Immagine:
        p.drawImage(area.normalized(), c.immagine);
        break;
    }
  }
}

void Documento::Disegna(QPagedPaintDevice& dispositivo) const {
  QPainter p(&dispositivo);
  for (int n = 0; n < Pagine(); ++n) {
    if (n > 0) dispositivo.newPage();
    DisegnaPagina(p, n);
  }
}

QPageLayout Documento::Layout() const {
  return QPageLayout(QPageSize(QPageSize::A4), orizzontale_ ? QPageLayout::Landscape : QPageLayout::Portrait,
                     QMarginsF());
}

bool Documento::SalvaPdf(const QString& file) const {
  QPdfWriter pdf(file);
  if (!pdf.setPageLayout(Layout())) return false;
  pdf.setResolution(kDpiMisura);
  pdf.setTitle(titolo_);
  pdf.setCreator(QStringLiteral("OCPrestKT"));
  Disegna(pdf);
  return QFileInfo(file).size() > 0;
}

QImage Documento::Pagina(int pagina, int dpi) const {
  const double dpm = dpi / kCmPerPollice * 100;
  QImage immagine(static_cast<int>(Larghezza() / kCmPerPollice * dpi), static_cast<int>(Altezza() / kCmPerPollice * dpi),
                  QImage::Format_RGB32);
  immagine.setDotsPerMeterX(static_cast<int>(dpm));
  immagine.setDotsPerMeterY(static_cast<int>(dpm));
  immagine.fill(Qt::white);
  if (pagina >= 0 && pagina < Pagine()) {
    QPainter p(&immagine);
    DisegnaPagina(p, pagina);
  }
  return immagine;
}

}  // namespace prestkt
