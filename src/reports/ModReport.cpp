#include "ModReport.h"

#include <QFile>
#include <algorithm>

#include "Guard.h"
#include "Messages.h"
#include "ModDoc.h"
#include "ModExcel.h"
#include "Procedure.h"

namespace prestkt {

namespace {

// The two methods belong to the control: their failures are logged under its name.
const QString kModulo = QStringLiteral("OCPrestKT");
const QString kNessunRecord = QStringLiteral("Nessun record trovato");
const QColor kGrigio(200, 200, 200);

// The page, in centimetres.
constexpr double kSinistra = 1.0;
constexpr double kDestra = 20.0;
constexpr double kFondo = 28.0;
constexpr double kPunti = 8;       // the rows and their heads
constexpr double kInterlinea = 0.1;  // between two rows

// The columns: the left edge and the width; a number stands at the right edge.
struct Colonna {
  const char* titolo;
  double x;
  double larghezza;
  Allinea allinea;
  double Ancora() const { return allinea == Allinea::Destra ? x + larghezza : x; }
};
constexpr Colonna kRagSoc{"Ragione Sociale", 1.0, 2.9, Allinea::Sinistra};
constexpr Colonna kModello{"Modello", 4.05, 2.7, Allinea::Sinistra};
constexpr Colonna kTipoMod{"Tipo Modello", 6.9, 2.5, Allinea::Sinistra};
constexpr Colonna kDisposizione{"Disposizione", 9.55, 2.7, Allinea::Sinistra};
constexpr Colonna kTipoDisp{"Tipo Disp.", 12.4, 2.6, Allinea::Sinistra};
constexpr Colonna kTempo{"Tempo", 15.1, 1.1, Allinea::Destra};
constexpr Colonna kMinuti{"Minuti", 16.3, 1.0, Allinea::Destra};
constexpr Colonna kDtFine{"Dt Fine", 17.45, 1.6, Allinea::Sinistra};
constexpr Colonna kQta{"Qta", 19.1, 0.9, Allinea::Destra};
constexpr Colonna kColonne[] = {kRagSoc, kModello, kTipoMod, kDisposizione, kTipoDisp,
                                kTempo,  kMinuti,  kDtFine,  kQta};

// A type's name kept on its one line within its column: what doesn't fit ends in "…".
QString Accorcia(const Documento& doc, QString testo, double larghezza) {
  if (doc.LarghezzaTesto(testo) <= larghezza) return testo;
  while (!testo.isEmpty() && doc.LarghezzaTesto(testo + QChar(0x2026)) > larghezza) testo.chop(1);
  return testo.trimmed() + QChar(0x2026);
}

// The head of a page: the title and the column headers. Gives the top of the first row.
double TestaPagina(Documento& doc) {
  doc.Font(QStringLiteral("Arial"), 14, true);
  doc.Testo(kSinistra, 1.0, doc.Titolo());
  doc.Font(QStringLiteral("Arial"), kPunti, true);
  const double alto = doc.AltezzaRiga() + 0.1;
  doc.Rettangolo(kSinistra, 2.0, kDestra, 2.0 + alto, kGrigio);
  for (const Colonna& c : kColonne) doc.Testo(c.Ancora(), 2.05, QString::fromUtf8(c.titolo), c.allinea);
  return 2.0 + alto + 0.15;
}

// The data of the report: a failed or empty read says so and gives nothing.
RecordsetPtr Dati(Guard& g, const QList<int>& modelli) {
  RecordsetPtr rs;
  g([&] { rs = PreparaDati(modelli); });
  if (g.If([&] { return !rs || rs->RecordCount() == 0; })) {
    MsgBox(kNessunRecord, vbExclamation);
    return {};
  }
  return rs;
}

}  // namespace

void SpezzaTesto(const Documento& oggetto, const QString& testo, QStringList& righe, double larghezza,
                 const QString& font, bool grassetto, bool /*corsivo*/, double dimensione, bool togliACapo) {
  // Measured by the print engine itself, in the font the lines will be printed in.
  Documento metro;
  metro.Font(font.isEmpty() ? QStringLiteral("Arial") : font,
             dimensione > 0 ? dimensione : oggetto.FontCorrente().pointSizeF(), grassetto);
  const double massimo = larghezza > 0 ? larghezza : Documento::kLarghezza;
  const auto entra = [&](const QString& s) { return metro.LarghezzaTesto(s) <= massimo; };
  const QString aCapo = QStringLiteral("\r\n");
  QString t = testo;
  if (togliACapo) t.replace(aCapo, QStringLiteral(" "));
  righe.clear();
  for (const QString& paragrafo : t.split(aCapo)) {
    QString riga;
    for (const QString& parola : paragrafo.split(QLatin1Char(' '))) {
      const QString prova = riga.isEmpty() ? parola : riga + QLatin1Char(' ') + parola;
      if (entra(prova)) {
        riga = prova;
        continue;
      }
      if (!riga.isEmpty()) righe << riga;
      riga.clear();
      // A word wider than the line goes on in pieces, a character at a time.
      for (const QChar c : parola) {
        if (!riga.isEmpty() && !entra(riga + c)) {
          righe << riga;
          riga.clear();
        }
        riga += c;
      }
    }
    righe << riga;
  }
}

void RepPrestazioni(const QList<int>& modelli, Stampante& stampante, const std::function<void(bool)>& abilitaForm) {
  Guard g(kModulo, QStringLiteral("RepPrestazioni"));
  // 1. The data.
  RecordsetPtr rs = Dati(g, modelli);
  if (!rs) return;
  // 2. The host's form waits while the report is made.
  if (abilitaForm) g([&] { abilitaForm(false); });
  // 3. A new report.
  Documento doc;
  doc.Titolo(QStringLiteral("Report prestazioni"));
  // 4. Every row, by customer, model and disposition.
  g([&] {
    rs->SetFilter(QString());
    rs->SetSort(QStringLiteral("RagSoc, Modello, Disposizione"));
  });
  // 5. The head of the first page.
  double y = 0;
  g([&] { y = TestaPagina(doc); });
  // 6. The rows, each as tall as its tallest wrapped text; a row that would
  // pass the foot of the page goes to a new one, under the head again.
  g([&] {
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      g([&] {
        const auto testo = [&](const char* campo) { return NullToStr(rs->Value(QString::fromLatin1(campo))); };
        QStringList ragSoc, modello, disposizione;
        SpezzaTesto(doc, testo("RagSoc"), ragSoc, kRagSoc.larghezza, QStringLiteral("Arial"), false, false, kPunti);
        SpezzaTesto(doc, testo("Modello"), modello, kModello.larghezza, QStringLiteral("Arial"), false, false, kPunti);
        SpezzaTesto(doc, testo("Disposizione"), disposizione, kDisposizione.larghezza, QStringLiteral("Arial"), false,
                    false, kPunti);
        doc.Font(QStringLiteral("Arial"), kPunti);
        const double riga = doc.AltezzaRiga();
        const auto linee = std::max({ragSoc.size(), modello.size(), disposizione.size()});
        const double alto = static_cast<double>(linee) * riga;
        if (y + alto > kFondo) {
          doc.NuovaPagina();
          y = TestaPagina(doc);
          doc.Font(QStringLiteral("Arial"), kPunti);
        }
        const auto colonna = [&](const Colonna& c, const QStringList& righe) {
          for (int k = 0; k < righe.size(); ++k) doc.Testo(c.Ancora(), y + k * riga, righe[k], c.allinea);
        };
        const auto cella = [&](const Colonna& c, const QString& s) { doc.Testo(c.Ancora(), y, s, c.allinea); };
        const QVariant minuti = rs->Value(QStringLiteral("Minuti"));
        colonna(kRagSoc, ragSoc);
        colonna(kModello, modello);
        cella(kTipoMod, Accorcia(doc, testo("TipoMod"), kTipoMod.larghezza));
        colonna(kDisposizione, disposizione);
        cella(kTipoDisp, Accorcia(doc, testo("TipoDisp"), kTipoDisp.larghezza));
        cella(kTempo, CTempo(CLng(NullToZero(minuti))));
        cella(kMinuti, Format(minuti, QStringLiteral("#,##0")));
        cella(kDtFine, Format(rs->Value(QStringLiteral("DataMax")), QStringLiteral("dd/mm/yyyy")));
        cella(kQta, Format(rs->Value(QStringLiteral("Qta")), QStringLiteral("#,##0")));
        y += alto + kInterlinea;
      });
    }
  });
  // 7. The host's form back, and the preview. The form comes back first: a
  // preview owned by a disabled form would be disabled with it, and a modal
  // preview keeps the form waiting all the same.
  if (abilitaForm) g([&] { abilitaForm(true); });
  g([&] { stampante.Stampa(doc); });
}

void ExpPrestazioni(const QList<int>& modelli) {
  Guard g(kModulo, QStringLiteral("ExpPrestazioni"));
  // 1. The data.
  RecordsetPtr rs = Dati(g, modelli);
  if (!rs) return;
  // 2. The file, among the formats the spreadsheet reads.
  const QString filtro = VersioneExcel() < 12
                             ? QStringLiteral("File xls (*.xls)|*.xls|File csv (*.csv)|*.csv")
                             : QStringLiteral("File xls 2007(*.xlsx)|*.xlsx|File csv (*.csv)|*.csv");
  QString file;
  g([&] { file = Messages().SaveFileName(QString(), filtro, QString()); });
  if (file.isEmpty()) return;
  // 3. An existing file goes only when the user says so.
  if (EsisteFile(file)) {
    if (MsgBox(QStringLiteral("Il file esiste già. Vuoi sovrascriverlo?"), vbYesNo | vbQuestion | vbDefaultButton2) ==
        vbNo)
      return;
    g([&] {
      if (!QFile::remove(file)) Raise(err::PermissionDenied, QStringLiteral("Permission denied: ") + file);
    });
  }
  // 4. A sheet or a text by the extension, with titles, without a progress bar.
  g([&] { ADOtoCSV(file, rs); });
  // 5.
  rs.reset();
}

}  // namespace prestkt
