// The print engine and the production sheet: what the page holds, what a
// scanner reads off the paper, and the count of prints.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "CodiceABarre.h"
#include "CodiciLetti.h"
#include "ModStampe.h"
#include "Stampa.h"
#include "TestSupport.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

constexpr int kModello = 202500001;

// A printer that keeps what it was given and says whether it went to paper.
struct StampanteProva : Stampante {
  explicit StampanteProva(bool esito = true) : esito(esito) {}
  bool Stampa(const Documento& d) override {
    stampati.push_back(d);
    return esito;
  }
  bool esito;
  std::vector<Documento> stampati;
};

struct Officina {
  explicit Officina(TestDb& t) : t(t) {
    t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1, Eliminato) VALUES (1, 1, 'Officina Rossi', 0)");
    t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo) VALUES (1, 'Stampo a iniezione')");
    t.Exec("INSERT INTO ProjectsDispTipo (CPrjDispTipo, DPrjDispTipo, TipoFatt) VALUES (1, 'Manutenzione', 1)");
    t.Exec("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen, Sigla) VALUES (12, 1, 'Tornitura', 'TO'), "
           "(12, 2, 'Saldatura', 'SA'), (12, 3, 'Collaudo', 'CO')");
    t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Annot) VALUES "
           "(202500001, 'Stampo pompa', 1, 1, 1, '2025-01-10 00:00:00', 'Nota del modello')");
    t.Exec("INSERT INTO ProjectsDisp (CProject, CDisp, DDisp, CPrjDispTipo, Data, Qta, CStato, NStampa, Annot) VALUES "
           "(202500001, 3, 'Ripristino matrice', 1, '2025-02-01 00:00:00', 1250, 0, 0, 'Lucidare a specchio')");
    t.Exec("INSERT INTO ProjectsDispDett (CProject, CDisp, CPrestazione) VALUES (202500001, 3, 1), (202500001, 3, 2)");
    oldTemp = qgetenv("TEMP");
    QDir().mkpath(t.Path() + "/temp");
    qputenv("TEMP", (t.Path() + "/temp").toLocal8Bit());
    Carica();
  }
  ~Officina() { qputenv("TEMP", oldTemp); }
  void Carica() {
    gDtIni = D(2025, 1, 1);
    gDTEnd = D(2025, 12, 31);
    CaricaModelli(gDtIni, gDTEnd, -1);
    CaricaDatiModello(kModello);
  }
  QStringList Testi(const Documento& d) {
    QStringList out;
    for (const auto& x : d.Testi(0)) out << x.testo;
    return out;
  }
  TestDb& t;
  QByteArray oldTemp;
};

}  // namespace

// ---------------------------------------------------------------- barcodes

TEST(CodiceABarre, OnlyBmpAndJpgAreWrittenAsSuchAndOtherNamesGetABmp) {
  TestDb t;
  const QString tmp = t.Path() + "/BCProd.tmp";
  QFile vecchio(tmp);
  ASSERT_TRUE(vecchio.open(QIODevice::WriteOnly));
  vecchio.write("vecchio");
  vecchio.close();
  SalvaCodiceABarre("P2025000010003", tmp);
  EXPECT_FALSE(QFile::exists(tmp + ".bmp"));  // written under that name, then given the name asked for
  QFile f(tmp);
  ASSERT_TRUE(f.open(QIODevice::ReadOnly));
  EXPECT_TRUE(f.read(2) == "BM");
  f.close();
  EXPECT_EQ(Testi(LeggiCodici(QImage(tmp), 96)), QStringList({"P2025000010003"}));
  SalvaCodiceABarre("A005", t.Path() + "/A005.jpg");
  QFile j(t.Path() + "/A005.jpg");
  ASSERT_TRUE(j.open(QIODevice::ReadOnly));
  EXPECT_EQ(j.read(2), QByteArray("\xFF\xD8", 2));
  EXPECT_THROW(SalvaCodiceABarre("A005", t.Path() + "/manca/A005.tmp"), VbError);
}

// ---------------------------------------------------------------- the sheet on paper

TEST(StpSchedaProd, PrintedToPdfAScannerReadsTheSheetAndOneCodePerBlock) {
  TestDb t;
  Officina o(t);
  const QString pdf = t.Path() + "/scheda.pdf";
  StampantePdf stampante(pdf);
  StpSchedaProd(stampante, kModello, 3);
  ASSERT_TRUE(QFile::exists(pdf));
  const QImage pagina = PdfInImmagine(pdf);
  ASSERT_FALSE(pagina.isNull()) << "pdftoppm";
  // The sheet at the top, then the blocks in the order of the kinds' names.
  EXPECT_EQ(Testi(LeggiCodici(pagina)), QStringList({"P2025000010003", "A002", "A001"}));
  EXPECT_TRUE(t.LogLines("ModStampe", "StpSchedaProd").isEmpty());
  EXPECT_EQ(t.Scalar("SELECT NStampa FROM ProjectsDisp").toInt(), 1);
  // The temporary files of the barcodes, as the barcode control left them.
  EXPECT_TRUE(QFile::exists(t.Path() + "/temp/BCProd.tmp"));
  EXPECT_TRUE(QFile::exists(t.Path() + "/temp/A001.tmp"));
  EXPECT_TRUE(QFile::exists(t.Path() + "/temp/A002.tmp"));
}

TEST(StpSchedaProd, HeadOfTheModelInUpperCaseWithItsNotesAndQuantity) {
  TestDb t;
  Officina o(t);
  StampanteProva s;
  StpSchedaProd(s, kModello, 3);
  ASSERT_EQ(s.stampati.size(), 1u);
  const Documento& d = s.stampati[0];
  EXPECT_EQ(d.Titolo(), "Stampa scheda produzione");
  EXPECT_EQ(d.Pagine(), 1);
  const QStringList testi = o.Testi(d);
  const QStringList attesi = {"2025-00001 \\ 0003", "Stampa n° 001", "SCHEDA PRODUZIONE",
                              "Cliente:", "OFFICINA ROSSI", "Tipologia:", "STAMPO A INIEZIONE",
                              "Modello:", "Stampo pompa", "Disposizione:", "MANUTENZIONE",
                              "Nota del modello", "Ripristino matrice", "Lucidare a specchio",
                              "Qta:", "1.250", "REGISTRAZIONI", "V", "OPERATORE", "ANNOTAZIONI", "DATA", "TEMPO",
                              "Q.TA'", "Saldatura", "Tornitura"};
  EXPECT_EQ(testi, attesi);
  // The notes start at size 8.
  for (const auto& x : d.Testi(0))
    if (x.testo == "Lucidare a specchio") EXPECT_EQ(x.font.pointSizeF(), 8);
}

TEST(StpSchedaProd, BlocksShareThePageLeftWithHalvesToTheEvenNumber) {
  TestDb t;
  Officina o(t);
  StampanteProva s;
  StpSchedaProd(s, kModello, 3);
  // The blocks are frames of rows of 0.5 cm: their names stand at the top of each.
  double ySaldatura = 0, yTornitura = 0, yRegistrazioni = 0;
  for (const auto& x : s.stampati[0].Testi(0)) {
    if (x.testo == "Saldatura") ySaldatura = x.y;
    if (x.testo == "Tornitura") yTornitura = x.y;
    if (x.testo == "REGISTRAZIONI") yRegistrazioni = x.y;
  }
  // y is the position after the quantity plus 1; rows = Round(2 x (25 - y) / 2).
  const double y = yRegistrazioni - 0.05 + 1;
  const int righe = static_cast<int>(Round(2 * (25 - y) / 2, 0));
  EXPECT_NEAR(yTornitura - ySaldatura, righe * 0.5, 1e-9);
  // The rounding may take a quarter of a centimetre a block past 25; the sheet stays on its page.
  const double fine = yTornitura - 0.05 + righe * 0.5;
  EXPECT_NEAR(fine, 25, 2 * 0.25 + 1e-9);
  EXPECT_LT(fine, Documento::kAltezza);
}

TEST(StpSchedaProd, SecondPrintBearsNumberTwoAndAPreviewClosedWithoutPrintingCountsNothing) {
  TestDb t;
  Officina o(t);
  StampanteProva chiusa(false);
  StpSchedaProd(chiusa, kModello, 3);
  EXPECT_TRUE(o.Testi(chiusa.stampati[0]).contains("Stampa n° 001"));
  EXPECT_EQ(t.Scalar("SELECT NStampa FROM ProjectsDisp").toInt(), 0);
  StampanteProva carta;
  StpSchedaProd(carta, kModello, 3);
  EXPECT_TRUE(o.Testi(carta.stampati[0]).contains("Stampa n° 001"));  // the same number again
  EXPECT_EQ(t.Scalar("SELECT NStampa FROM ProjectsDisp").toInt(), 1);
  StpSchedaProd(carta, kModello, 3);
  EXPECT_TRUE(o.Testi(carta.stampati[1]).contains("Stampa n° 002"));
  EXPECT_EQ(t.Scalar("SELECT NStampa FROM ProjectsDisp").toInt(), 2);
}

TEST(StpSchedaProd, WithoutServiceKindsTheDivisionFailsIntoTheLogAndTheHeadComesOut) {
  TestDb t;
  Officina o(t);
  t.Exec("DELETE FROM ProjectsDispDett");
  o.Carica();
  const QString pdf = t.Path() + "/senza.pdf";
  StampantePdf stampante(pdf);
  StpSchedaProd(stampante, kModello, 3);
  const QStringList log = t.LogLines("ModStampe", "StpSchedaProd");
  ASSERT_EQ(log.size(), 1);
  EXPECT_TRUE(log[0].endsWith("StpSchedaProd: Overflow (6)") || log[0].endsWith("StpSchedaProd: Division by zero (11)"))
      << log[0].toStdString();
  EXPECT_EQ(Testi(LeggiCodici(PdfInImmagine(pdf))), QStringList({"P2025000010003"}));
  EXPECT_EQ(t.Scalar("SELECT NStampa FROM ProjectsDisp").toInt(), 1);
}

TEST(StpSchedaProd, ManyServiceKindsFallToTheBarcodeAloneAndRunPastTheLine) {
  TestDb t;
  Officina o(t);
  t.Exec("DELETE FROM ProjectsDispDett");
  for (int k = 10; k < 80; ++k) {
    t.Exec(QString("INSERT INTO TabGen (CTipTabGen, CTabGen, DTabGen) VALUES (12, %1, 'Fase %1')").arg(k));
    t.Exec(QString("INSERT INTO ProjectsDispDett (CProject, CDisp, CPrestazione) VALUES (202500001, 3, %1)").arg(k));
  }
  o.Carica();
  const QString pdf = t.Path() + "/tante.pdf";
  StampantePdf stampante(pdf);
  StpSchedaProd(stampante, kModello, 3);
  const std::vector<CodiceLetto> letti = LeggiCodici(PdfInImmagine(pdf));
  ASSERT_GE(letti.size(), 5u);
  EXPECT_EQ(letti[0].testo, "P2025000010003");
  EXPECT_EQ(letti[1].testo, "A010");  // "Fase 10" first by name
  EXPECT_EQ(letti[2].testo, "A011");
  // 70 kinds leave 0 rows each: every block is its barcode alone, 1 cm apart.
  EXPECT_NEAR(letti[2].yCm - letti[1].yCm, 1.0, 0.1);
  EXPECT_GT(letti.back().yCm, 25.0);
}

TEST(StpSchedaProd, VeryLongNoteFallsToSizeFiveAndPrintsAllItsLines) {
  TestDb t;
  Officina o(t);
  QString lunga;
  for (int i = 1; i <= 40; ++i) lunga += QString("Riga %1 delle istruzioni di lavoro\r\n").arg(i);
  t.db->Execute(Sql("UPDATE ProjectsDisp SET Annot=") + Sql::Param(lunga));
  o.Carica();
  StampanteProva s;
  StpSchedaProd(s, kModello, 3);
  int righe = 0;
  for (const auto& x : s.stampati[0].Testi(0))
    if (x.testo.startsWith("Riga ")) {
      ++righe;
      EXPECT_EQ(x.font.pointSizeF(), 5);
    }
  EXPECT_EQ(righe, 40);
}

// The size falls while the note takes 11 lines or more: ten lines stay at 8;
// eleven lines of their own stay eleven at every size and fall to 5; a text
// that wraps into 11 lines at 8 and fewer at 7 falls once.
TEST(StpSchedaProd, NotesOfElevenLinesMakeTheFontFall) {
  TestDb t;
  Officina o(t);
  const auto dimensione = [&](const QString& nota) {
    t.db->Execute(Sql("UPDATE Projects SET Annot=NULL"));
    t.db->Execute(Sql("UPDATE ProjectsDisp SET DDisp='', Annot=") + Sql::Param(nota));
    o.Carica();
    StampanteProva s;
    StpSchedaProd(s, kModello, 3);
    const auto testi = s.stampati[0].Testi(0);
    for (const auto& x : testi)
      if (nota.startsWith(x.testo.left(4)) && !x.testo.isEmpty()) return x.font.pointSizeF();
    return 0.0;
  };
  QStringList righe;
  for (int i = 1; i <= 11; ++i) righe << QString("r%1").arg(i);
  EXPECT_EQ(dimensione(righe.mid(0, 10).join("\r\n")), 8);
  EXPECT_EQ(dimensione(righe.join("\r\n")), 5);
  // One paragraph just long enough for 11 lines at 8 points.
  Documento misura;
  QString testo = "Lavorare";
  for (int n = 0;; ++n) {
    misura.Font("Arial", 8);
    const int a8 = static_cast<int>(misura.Spezza(testo, 16.5).size());
    misura.Font("Arial", 7);
    const int a7 = static_cast<int>(misura.Spezza(testo, 16.5).size());
    if (a8 >= 11) {
      ASSERT_LT(a7, 11);
      break;
    }
    testo += QString(" parola%1").arg(n);
  }
  EXPECT_EQ(dimensione(testo), 7);
}

TEST(StpSchedaProd, EmptyNotesAndDescriptionPrintNoNoteLines) {
  TestDb t;
  Officina o(t);
  t.Exec("UPDATE Projects SET Annot=''");
  t.Exec("UPDATE ProjectsDisp SET DDisp=NULL, Annot='   '");
  o.Carica();
  StampanteProva s;
  StpSchedaProd(s, kModello, 3);
  const QStringList testi = o.Testi(s.stampati[0]);
  const int disp = static_cast<int>(testi.indexOf("MANUTENZIONE"));
  ASSERT_GE(disp, 0);
  EXPECT_EQ(testi.at(disp + 1), "Qta:");
}

// A document lying on its page: 29.7 cm across, in the picture and in the PDF;
// a text at the right of the long side stays on the page.
TEST(Documento, ADocumentLyingDownTakesTheLongSideAcross) {
  TestDb t;
  Documento d;
  EXPECT_FALSE(d.Orizzontale());
  EXPECT_DOUBLE_EQ(d.Larghezza(), 21.0);
  d.Orizzontale(true);
  EXPECT_DOUBLE_EQ(d.Larghezza(), 29.7);
  EXPECT_DOUBLE_EQ(d.Altezza(), 21.0);
  d.Font("Arial", 12);
  d.Testo(28.0, 1.0, "FINE", Allinea::Destra);
  const QImage p = d.Pagina(0, 100);
  EXPECT_GT(p.width(), p.height());
  EXPECT_NEAR(p.width(), 29.7 / 2.54 * 100, 1);
  // Ink near the right edge, where an upright page would have ended long before.
  bool inchiostro = false;
  for (int x = static_cast<int>(25.0 / 2.54 * 100); x < static_cast<int>(28.0 / 2.54 * 100) && !inchiostro; ++x)
    for (int y = 0; y < static_cast<int>(2.0 / 2.54 * 100); ++y)
      if (qGray(p.pixel(x, y)) < 128) {
        inchiostro = true;
        break;
      }
  EXPECT_TRUE(inchiostro);
  const QString pdf = t.Path() + "/disteso.pdf";
  ASSERT_TRUE(d.SalvaPdf(pdf));
  QFile f(pdf);
  ASSERT_TRUE(f.open(QIODevice::ReadOnly));
  // The page's box, in points: 842 across and 595 down.
  const QByteArray testo = f.readAll();
  EXPECT_TRUE(testo.contains("/MediaBox [0 0 842") || testo.contains("/MediaBox [0 0 841")) << testo.left(600).toStdString();
}
