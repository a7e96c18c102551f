#include "ModStampe.h"

#include <QImage>

#include "CodiceABarre.h"
#include "Guard.h"
#include "ModPrestKT.h"
#include "Procedure.h"

namespace prestkt {

namespace {

const QString kModulo = QStringLiteral("ModStampe");
const QColor kGrigio(200, 200, 200);

// The page, in centimetres: the sheet ends at 25 cm, a registration row is 0.5 cm.
constexpr double kSinistra = 1.5;
constexpr double kDestra = 19.5;
constexpr double kFondo = 25.0;
constexpr double kRiga = 0.5;
constexpr double kLarghezzaNote = 16.5;
// A block with no rows still holds its barcode, readable.
constexpr double kBloccoMinimo = 1.0;
// The column lines of the registration rows, and the heads between them.
constexpr double kColonne[] = {5.4, 6.0, 9.6, 14.6, 16.4, 18.0, kDestra};
const char* const kTitoliColonne[] = {"V", "OPERATORE", "ANNOTAZIONI", "DATA", "TEMPO", "Q.TA'"};


}  // namespace

void StpSchedaProd(Stampante& stampante, int cProject, int cDisp) {
  Guard g(kModulo, QStringLiteral("StpSchedaProd"));
  const QString questaDisp = QStringLiteral("SELECT CProject, CDisp, NStampa FROM ProjectsDisp WHERE CProject=") +
                             N(cProject) + QStringLiteral(" AND CDisp=") + N(cDisp) + QStringLiteral(" ");
  // 1. The number of this print.
  int numero = 0;
  g([&] {
    RecordsetPtr rs;
    ApriRecordset(rs, questaDisp, nullptr, dbOpenSnapshot);
    if (!rs->Eof()) numero = CInt(NullToZero(rs->Value(QStringLiteral("NStampa")))) + 1;
  });
  // 2. The job.
  Documento doc;
  doc.Titolo(QStringLiteral("Stampa scheda produzione"));
  const QString temp = qEnvironmentVariable("TEMP");

  // 3. The sheet's code, and beside it the code in words and the number of the print.
  g([&] {
    const QString file = temp + QStringLiteral("/BCProd.tmp");
    SalvaCodiceABarre(QStringLiteral("P") + Format(cProject, QStringLiteral("000000000")) +
                          Format(cDisp, QStringLiteral("0000")),
                      file);
    doc.Immagine(QImage(file), kSinistra, 1.0, kSinistra + 6.5, 2.3);
  });
  g([&] {
    doc.Font(QStringLiteral("Arial"), 14, true);
    doc.Testo(kDestra, 1.0,
              Format(cProject, QStringLiteral("0000-00000")) + QStringLiteral(" \\ ") +
                  Format(cDisp, QStringLiteral("0000")),
              Allinea::Destra);
    doc.Font(QStringLiteral("Arial"), 10);
    doc.Testo(kDestra, 1.8, QStringLiteral("Stampa n° ") + Format(numero, QStringLiteral("000")), Allinea::Destra);
  });

  // 4. The title bar.
  g([&] {
    doc.Rettangolo(kSinistra, 2.7, kDestra, 3.4, kGrigio);
    doc.Font(QStringLiteral("Arial"), 12, true);
    doc.Testo((kSinistra + kDestra) / 2, 2.78, QStringLiteral("SCHEDA PRODUZIONE"), Allinea::Centro);
  });

  // 5. The head of the model.
  RecordsetPtr modello, disp;
  g([&] {
    modello = gRcsProjects->Clone();
    modello->SetFilter(QStringLiteral("CProject=") + N(cProject));
  });
  g([&] {
    disp = gRcsDisp->Clone();
    disp->SetFilter(QStringLiteral("CProject=") + N(cProject) + QStringLiteral(" AND CDisp=") + N(cDisp));
  });
  const auto lookup = [&](const QString& sql, const QString& campo) {
    RecordsetPtr rs;
    ApriRecordset(rs, sql, nullptr, dbOpenSnapshot);
    return NullToStr(rs->Value(campo));
  };
  double y = 3.7;
  g([&] { doc.Cornice(kSinistra, y, kDestra, y + 4 * kRiga + 0.2); });
  const auto voce = [&](int riga, const QString& etichetta, const std::function<QString()>& valore) {
    const double yy = y + 0.1 + riga * kRiga;
    g([&] {
      doc.Font(QStringLiteral("Arial"), 9, true);
      doc.Testo(kSinistra + 0.2, yy, etichetta);
    });
    g([&] {
      const QString v = valore();
      doc.Font(QStringLiteral("Arial"), 9);
      doc.Testo(kSinistra + 2.8, yy, v);
    });
  };
  voce(0, QStringLiteral("Cliente:"), [&] {
    return lookup(QStringLiteral("SELECT TAnag, CAnag, RagSoc1 FROM Anagrafica WHERE TAnag=") +
                      CStr(modello->Value(QStringLiteral("TAnag"))) + QStringLiteral(" AND CAnag=") +
                      CStr(modello->Value(QStringLiteral("CAnag"))),
                  QStringLiteral("RagSoc1"))
        .toUpper();
  });
  voce(1, QStringLiteral("Tipologia:"), [&] {
    return lookup(QStringLiteral("SELECT CPrjTipo, DPrjTipo FROM ProjectsTipo WHERE CPrjTipo=") +
                      CStr(modello->Value(QStringLiteral("CPrjTipo"))),
                  QStringLiteral("DPrjTipo"))
        .toUpper();
  });
  voce(2, QStringLiteral("Modello:"), [&] { return NullToStr(modello->Value(QStringLiteral("DProject"))); });
  voce(3, QStringLiteral("Disposizione:"), [&] {
    return lookup(QStringLiteral("SELECT CPrjDispTipo, DPrjDispTipo FROM ProjectsDispTipo WHERE CPrjDispTipo=") +
                      CStr(disp->Value(QStringLiteral("CPrjDispTipo"))),
                  QStringLiteral("DPrjDispTipo"))
        .toUpper();
  });
  y += 4 * kRiga + 0.5;

  // 6. The notes: the font falls from 8 until they take fewer than 11 lines, or reaches 5.
  g([&] {
    QStringList parti;
    for (const QVariant& v : {modello->Value(QStringLiteral("Annot")), disp->Value(QStringLiteral("DDisp")),
                              disp->Value(QStringLiteral("Annot"))}) {
      const QString testo = NullToStr(v).trimmed();
      if (!testo.isEmpty()) parti << testo;
    }
    const QString note = parti.join(QStringLiteral("\r\n")).trimmed();
    if (note.isEmpty()) return;
    int punti = 8;
    doc.Font(QStringLiteral("Arial"), punti);
    QStringList righe = doc.Spezza(note, kLarghezzaNote);
    while (righe.size() >= 11 && punti > 5) {
      doc.Font(QStringLiteral("Arial"), --punti);
      righe = doc.Spezza(note, kLarghezzaNote);
    }
    for (const QString& riga : righe) {
      doc.Testo(kSinistra + 0.2, y, riga);
      y += Round(doc.AltezzaRiga() + 0.1, 2);
    }
  });

  // 7. The quantity.
  g([&] {
    doc.Font(QStringLiteral("Arial"), 10, true);
    doc.Testo(kSinistra + 0.2, y, QStringLiteral("Qta:"));
    doc.Font(QStringLiteral("Arial"), 10);
    doc.Testo(kSinistra + 1.4, y, Format(disp->Value(QStringLiteral("Qta")), QStringLiteral("#,##0")));
    y += 0.7;
  });

  // 8. The service kinds of the disposition, by name.
  int count = 0;
  auto tipi = Recordset::Create();
  g([&] {
    tipi->Append(QStringLiteral("CPrestazione"), adInteger);
    tipi->Append(QStringLiteral("DPrestazione"), adVarChar, 255);
    tipi->Open();
  });
  g([&] {
    RecordsetPtr dett = gRcsDispDett->Clone();
    dett->SetFilter(QStringLiteral("CDisp=") + N(cDisp));
    count = dett->RecordCount();
    for (; !dett->Eof(); dett->MoveNext()) {
      RecordsetPtr nome;
      ApriRecordset(nome,
                    QStringLiteral("SELECT CTabGen AS CPrestazione, DTabGen AS DPrestazione FROM [ABC:Prestazioni] "
                                   "WHERE CTabGen=") +
                        CStr(dett->Value(QStringLiteral("CPrestazione"))),
                    nullptr, dbOpenSnapshot);
      if (nome->Eof()) continue;
      tipi->AddNew();
      tipi->SetValue(QStringLiteral("CPrestazione"), nome->Value(QStringLiteral("CPrestazione")));
      tipi->SetValue(QStringLiteral("DPrestazione"), nome->Value(QStringLiteral("DPrestazione")));
      tipi->Update();
    }
    tipi->SetSort(QStringLiteral("DPrestazione"));
  });

  // 9. The page left is shared among the kinds; halves go to the even number.
  int righe = 0;
  g([&] { righe = static_cast<int>(Round(Dividi(2 * (kFondo - (y + 1)), count), 0)); });

  // 10. The heading of the registrations.
  g([&] {
    doc.Rettangolo(kSinistra, y, kDestra, y + 0.5, kGrigio);
    doc.Font(QStringLiteral("Arial"), 10, true);
    doc.Testo((kSinistra + kDestra) / 2, y + 0.05, QStringLiteral("REGISTRAZIONI"), Allinea::Centro);
    doc.Font(QStringLiteral("Arial"), 7, true);
    for (int c = 0; c < 6; ++c)
      doc.Testo((kColonne[c] + kColonne[c + 1]) / 2, y + 0.6, QString::fromLatin1(kTitoliColonne[c]),
                Allinea::Centro);
    for (double x : kColonne) doc.Linea(x, y + 0.5, x, y + 1);
    doc.Cornice(kSinistra, y + 0.5, kDestra, y + 1);
    y += 1;
  });

  // 11. A block of rows for each kind, with its name and its barcode.
  g([&] {
    for (tipi->MoveFirst(); !tipi->Eof(); tipi->MoveNext()) {
      const double alto = std::max(righe * kRiga, kBloccoMinimo);
      g([&] {
        doc.Cornice(kSinistra, y, kDestra, y + alto);
        doc.Font(QStringLiteral("Arial"), 8, true);
        doc.Testo(kSinistra + 0.1, y + 0.05, NullToStr(tipi->Value(QStringLiteral("DPrestazione"))));
      });
      g([&] {
        const QString codice = QStringLiteral("A") + Format(tipi->Value(QStringLiteral("CPrestazione")), QStringLiteral("000"));
        const QString file = temp + QStringLiteral("/") + codice + QStringLiteral(".tmp");
        SalvaCodiceABarre(codice, file);
        const double centro = y + alto / 2 + 0.2;
        doc.Immagine(QImage(file), kSinistra + 0.3, centro - 0.35, kColonne[0] - 0.3, centro + 0.35);
      });
      g([&] {
        for (int r = 1; r < righe; ++r) doc.Linea(kColonne[0], y + r * kRiga, kDestra, y + r * kRiga);
        for (double x : kColonne) doc.Linea(x, y, x, y + alto);
      });
      y += alto;
    }
  });

  // 12. The preview, and 13. the count of prints when the sheet went to paper.
  const bool stampato = g.Value([&] { return stampante.Stampa(doc); }, false);
  if (stampato) {
    g([&] {
      RecordsetPtr rs;
      ApriRecordset(rs, questaDisp, nullptr, dbOpenDynaset);
      rs->Edit();
      rs->SetValue(QStringLiteral("NStampa"), numero);
      rs->Update();
    });
  }
}

}  // namespace prestkt
