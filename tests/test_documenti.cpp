// The document folder of the model card: the list, new office documents,
// imports, deletions and mail messages dropped on the list.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "ModExcel.h"
#include "ModIcon.h"
#include "TestSupport.h"
#include "Vb.h"
#include "frmModelli.h"
#include "frmModelliDocs.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

constexpr int kModello = 202500001;

QByteArray Leggi(const QString& path) {
  QFile f(path);
  if (!f.open(QIODevice::ReadOnly)) return {};
  return f.readAll();
}

bool Scrivi(const QString& path, const QByteArray& dati) {
  QFile f(path);
  if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
  return f.write(dati) == dati.size();
}

// A card open on model 202500001 of 10/01/2025, with the documents' root in
// the test's folder and the openings of GShell recorded instead of done.
struct Carta {
  explicit Carta(TestDb& t) : t(t) {
    t.Exec("INSERT INTO AnagTipo (TAnag, Descrizione) VALUES (1, 'Clienti')");
    t.Exec("INSERT INTO Anagrafica (TAnag, CAnag, RagSoc1) VALUES (1, 1, 'Officina Rossi')");
    t.Exec("INSERT INTO ProjectsTipo (CPrjTipo, DPrjTipo, GestForfSempl) VALUES (1, 'Stampo', 0)");
    t.Exec("INSERT INTO Projects (CProject, DProject, CPrjTipo, TAnag, CAnag, DtIni, Stato) VALUES "
           "(202500001, 'Stampo coperchio', 1, 1, 1, '2025-01-10 00:00:00', 0)");
    gTAnag = 1;
    gDtIni = D(2025, 1, 1);
    gDTEnd = D(2025, 12, 31);
    gStatus = -1;
    CaricaModelli(gDtIni, gDTEnd, gStatus);
    CaricaDatiModello(kModello);
    gPathDocs = t.Path() + "/docs";
    QDir().mkpath(gPathDocs);
    vecchioTemp = gPathTemp;
    gPathTemp = t.Path() + "/temp";
    QDir().mkpath(gPathTemp);
    SetOpenHook([this](const QUrl& u) {
      aperti << u.toLocalFile();
      return true;
    });
    card.Azione = 1;
    card.CProject = kModello;
    card.Form_Load();
    cartella = gPathDocs + "/2025/202500001";
  }
  ~Carta() {
    SetOpenHook({});
    gPathTemp = vecchioTemp;
    ImpostaVersioniOffice(0, 0);
  }
  std::vector<Asked>& asked() { return t.messages->asked; }
  int Riga(const QString& nome) const {
    for (int r = 0; r < card.lvwDocs->Count(); ++r)
      if (card.lvwDocs->Text(r, 1) == nome) return r;
    return -1;
  }
  QString Selezionato() const {
    const int r = card.lvwDocs->SelectedIndex();
    return r < 0 ? QString() : card.lvwDocs->Text(r, 1);
  }
  void File(const QString& nome, const QByteArray& dati = "x") { ASSERT_TRUE(Scrivi(cartella + "/" + nome, dati)); }

  TestDb& t;
  frmModelli card;
  QString cartella;
  QString vecchioTemp;
  QStringList aperti;
};

// Every line of the error log of the card's document routines.
QStringList LogDocumenti(TestDb& t) {
  QStringList righe;
  for (const char* p : {"CaricaListDoc", "AggiungiWord", "AggiungiExcel", "mnuAddWord_Click", "mnuAddExcel_Click",
                        "mnuAddImport_Click", "CtrlFileName", "ApriDoc", "lvwDocs_OLEDragDrop"})
    righe << t.LogLines("frmModelli", p);
  return righe;
}

// Converts a file to PDF with LibreOffice, read through the given import
// filter (so that a file it cannot read as that format is not taken as plain
// text), its profile in a folder of its own. The path where the PDF is
// expected; the test fails when the program is missing.
QString InPdf(const QString& file, const QString& filtro, const QString& lavoro) {
  QString programma = QStandardPaths::findExecutable("libreoffice");
  if (programma.isEmpty()) programma = QStandardPaths::findExecutable("soffice");
  EXPECT_FALSE(programma.isEmpty()) << "LibreOffice is not installed (scripts/install-deps installs it)";
  if (programma.isEmpty()) return {};
  QDir().mkpath(lavoro + "/home");
  QDir().mkpath(lavoro + "/out");
  QProcess p;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert("HOME", lavoro + "/home");
  env.remove("QT_QPA_PLATFORM");
  p.setProcessEnvironment(env);
  p.setProcessChannelMode(QProcess::MergedChannels);
  p.start(programma, {"--headless", "--norestore", "--infilter=" + filtro, "--convert-to", "pdf", "--outdir",
                      lavoro + "/out", file});
  EXPECT_TRUE(p.waitForStarted(30000));
  const bool finito = p.waitForFinished(120000);
  if (!finito) p.kill();
  EXPECT_TRUE(finito) << "LibreOffice did not finish in 120 s";
  return lavoro + "/out/" + QFileInfo(file).completeBaseName() + ".pdf";
}

const QString kFiltroDocx = "MS Word 2007 XML";
const QString kFiltroXlsx = "Calc MS Excel 2007 XML";

}  // namespace

// ---------------------------------------------------------------- the folder and the list

TEST(Documenti, FolderIsYearAndNineDigitCodeAndIsCreated) {
  TestDb t;
  Carta s(t);
  ASSERT_EQ(s.card.DTProject->date(), QDate(2025, 1, 10));
  EXPECT_FALSE(QFileInfo::exists(s.cartella));
  EXPECT_EQ(s.card.GetPathModello(), s.cartella);
  EXPECT_TRUE(QFileInfo(s.cartella).isDir());
  // A code of fewer digits is padded to nine.
  s.card.CProject = 42;
  EXPECT_EQ(s.card.GetPathModello(), gPathDocs + "/2025/000000042");
  EXPECT_TRUE(QFileInfo(gPathDocs + "/2025/000000042").isDir());
}

TEST(Documenti, RootIsNotCreatedByTheModelFolder) {
  TestDb t;
  Carta s(t);
  gPathDocs = t.Path() + "/mancante";
  s.card.GetPathModello();
  EXPECT_FALSE(QFileInfo::exists(gPathDocs));
  EXPECT_TRUE(t.LogLines("frmModelli", "GetPathModello").isEmpty());  // a silent routine
}

TEST(Documenti, TwoExtensionsGiveTwoIconsAndFilesOfOneShareIt) {
  TestDb t;
  Carta s(t);
  QDir().mkpath(s.cartella);
  s.File("disegno.pdf");
  s.File("offerta.pdf");
  s.File("note.txt");
  s.card.SSTab1->setCurrentIndex(2);  // the tab's click loads the list
  ListView* l = s.card.lvwDocs;
  ASSERT_EQ(l->Count(), 3);
  ASSERT_NE(s.card.ImageListIcon, nullptr);
  EXPECT_EQ(s.card.ImageListIcon->Count(), 2);
  EXPECT_EQ(l->Icons().size(), 2);
  EXPECT_EQ(BoundImageList(l), s.card.ImageListIcon);
  const int pdf1 = l->Icon(s.Riga("disegno.pdf"));
  const int pdf2 = l->Icon(s.Riga("offerta.pdf"));
  const int txt = l->Icon(s.Riga("note.txt"));
  EXPECT_EQ(pdf1, pdf2);
  EXPECT_NE(pdf1, txt);
  EXPECT_TRUE(pdf1 == 0 || pdf1 == 1);
  EXPECT_TRUE(txt == 0 || txt == 1);
  // Keys by running number; the modification time as the system writes it.
  QStringList chiavi;
  for (int r = 0; r < l->Count(); ++r) chiavi << l->Key(r);
  EXPECT_EQ(chiavi, QStringList({"K0001", "K0002", "K0003"}));
  const QDateTime scritto = QFileInfo(s.cartella + "/note.txt").lastModified();
  EXPECT_EQ(l->Text(s.Riga("note.txt"), 2), Format(scritto, "dd/mm/yyyy hh:nn:ss"));
  EXPECT_EQ(l->ColumnText(1), "Nome");
  EXPECT_EQ(l->ColumnText(2), "Ultima modifica");
  EXPECT_EQ(l->ColumnWidth(0), 270);
  EXPECT_TRUE(s.card.Bottone(8)->isEnabled());
  EXPECT_TRUE(s.card.Bottone(9)->isEnabled());
  // A reload starts the icons again.
  s.card.CaricaListDoc();
  EXPECT_EQ(s.card.ImageListIcon->Count(), 2);
  EXPECT_TRUE(LogDocumenti(t).isEmpty()) << LogDocumenti(t).join('\n').toStdString();
}

TEST(Documenti, SubfoldersAndHiddenFilesAreNotListed) {
  TestDb t;
  Carta s(t);
  QDir().mkpath(s.cartella + "/disegni");
  s.File("disegni/interno.pdf");
  s.File("ordine.pdf");
  s.File(".nascosto");
  s.card.CaricaListDoc();
  ASSERT_EQ(s.card.lvwDocs->Count(), 1);
  EXPECT_EQ(s.card.lvwDocs->Text(0, 1), "ordine.pdf");
  EXPECT_EQ(s.card.ImageListIcon->Count(), 1);
}

TEST(Documenti, EmptyRootLeavesTheListEmpty) {
  TestDb t;
  Carta s(t);
  QDir().mkpath(s.cartella);
  s.File("ordine.pdf");
  s.card.CaricaListDoc();
  ASSERT_EQ(s.card.lvwDocs->Count(), 1);
  gPathDocs.clear();
  s.card.CaricaListDoc();
  EXPECT_EQ(s.card.lvwDocs->Count(), 0);
  EXPECT_EQ(s.card.ImageListIcon->Count(), 0);
  EXPECT_TRUE(s.card.lvwDocs->Icons().isEmpty());
  EXPECT_EQ(s.card.GetPathModello(), QString());
  EXPECT_FALSE(QFileInfo::exists("/2025/202500001"));
}

// ---------------------------------------------------------------- new documents

TEST(Documenti, NewWordDocumentIsDocxListedSelectedAndOpened) {
  TestDb t;
  Carta s(t);
  ASSERT_EQ(VersioneWord(), 16);
  t.messages->inputs = {"  Offerta  "};
  s.card.mnuAddWord_Click();
  ASSERT_GE(s.asked().size(), 1u);
  EXPECT_EQ(s.asked()[0].prompt, "Digita il nome del file:");
  EXPECT_EQ(s.asked()[0].buttons, -1);
  EXPECT_EQ(s.asked().size(), 1u);
  const QString file = s.cartella + "/Offerta.docx";
  ASSERT_TRUE(QFileInfo(file).isFile());
  EXPECT_TRUE(Leggi(file).startsWith("PK\x03\x04"));
  EXPECT_EQ(s.card.PathModello, s.cartella);
  EXPECT_EQ(s.Selezionato(), "Offerta.docx");
  EXPECT_EQ(s.aperti, QStringList({QFileInfo(file).absoluteFilePath()}));
  EXPECT_TRUE(s.card.SSTab1->isEnabled());
  EXPECT_TRUE(LogDocumenti(t).isEmpty()) << LogDocumenti(t).join('\n').toStdString();
}

TEST(Documenti, NewExcelWorkbookIsXlsx) {
  TestDb t;
  Carta s(t);
  ASSERT_EQ(VersioneExcel(), 16);
  t.messages->inputs = {"Preventivo"};
  s.card.mnuAddExcel_Click();
  const QString file = s.cartella + "/Preventivo.xlsx";
  ASSERT_TRUE(QFileInfo(file).isFile());
  EXPECT_TRUE(Leggi(file).startsWith("PK\x03\x04"));
  EXPECT_EQ(s.Selezionato(), "Preventivo.xlsx");
  EXPECT_EQ(s.aperti, QStringList({QFileInfo(file).absoluteFilePath()}));
}

TEST(Documenti, OldVersionsGiveTheOldExtensions) {
  TestDb t;
  Carta s(t);
  ImpostaVersioniOffice(11, 11);
  EXPECT_EQ(VersioneWord(), 11);
  EXPECT_EQ(VersioneExcel(), 11);
  s.card.AggiungiWord("Lettera");
  s.card.AggiungiExcel("Conti");
  EXPECT_TRUE(QFileInfo(s.cartella + "/Lettera.doc").isFile());
  EXPECT_TRUE(QFileInfo(s.cartella + "/Conti.xls").isFile());
  EXPECT_FALSE(QFileInfo::exists(s.cartella + "/Lettera.docx"));
  ImpostaVersioniOffice(12, 12);  // 12 is already the current format
  s.card.AggiungiWord("Lettera");
  EXPECT_TRUE(QFileInfo(s.cartella + "/Lettera.docx").isFile());
  ImpostaVersioniOffice(0, 0);
  EXPECT_EQ(VersioneWord(), 16);
}

TEST(Documenti, ExistingNameIsReportedForBothKinds) {
  TestDb t;
  Carta s(t);
  s.card.AggiungiWord("Offerta");
  const QByteArray prima = Leggi(s.cartella + "/Offerta.docx");
  ASSERT_FALSE(prima.isEmpty());
  s.card.AggiungiWord("Offerta");
  ASSERT_EQ(s.asked().size(), 1u);
  EXPECT_EQ(s.asked()[0].prompt, "Un file con questo nome esiste già tra i modelli!");
  EXPECT_EQ(s.asked()[0].buttons, vbExclamation);
  EXPECT_EQ(Leggi(s.cartella + "/Offerta.docx"), prima);
  EXPECT_EQ(s.aperti.size(), 1);
  s.card.AggiungiExcel("Conti");
  s.card.AggiungiExcel("Conti");
  ASSERT_EQ(s.asked().size(), 2u);
  EXPECT_EQ(s.asked()[1].prompt, "Un file con questo nome esiste già tra i modelli!");
  EXPECT_EQ(s.aperti.size(), 2);
  EXPECT_TRUE(s.card.SSTab1->isEnabled());
}

TEST(Documenti, ForbiddenCharactersAreReportedInTheirOrder) {
  TestDb t;
  Carta s(t);
  EXPECT_FALSE(s.card.CtrlFileName("Offerta.v2"));
  ASSERT_EQ(s.asked().size(), 1u);
  EXPECT_EQ(s.asked()[0].prompt, "Non puoi utilizzare il carattere '.' nel nome file!");
  EXPECT_EQ(s.asked()[0].buttons, vbCritical);
  // "&" comes before "/" in the list, wherever they stand in the name.
  EXPECT_FALSE(s.card.CtrlFileName("a/b&c"));
  EXPECT_EQ(s.asked().back().prompt, "Non puoi utilizzare il carattere '&' nel nome file!");
  EXPECT_FALSE(s.card.CtrlFileName("Rossi \"srl\""));
  EXPECT_EQ(s.asked().back().prompt, "Non puoi utilizzare il carattere '\"' nel nome file!");
  EXPECT_FALSE(s.card.CtrlFileName(QString::fromUtf8("perché ç")));
  EXPECT_EQ(s.asked().back().prompt, QString::fromUtf8("Non puoi utilizzare il carattere 'ç' nel nome file!"));
  const size_t chiesto = s.asked().size();
  EXPECT_TRUE(s.card.CtrlFileName("Offerta 2025 - Rossi"));
  EXPECT_EQ(s.asked().size(), chiesto);
}

TEST(Documenti, RefusedOrEmptyNameMakesNothing) {
  TestDb t;
  Carta s(t);
  t.messages->inputs = {"../fuori"};
  s.card.mnuAddWord_Click();
  EXPECT_EQ(s.asked().back().prompt, "Non puoi utilizzare il carattere '/' nel nome file!");
  t.messages->inputs = {"   "};
  s.card.mnuAddExcel_Click();
  EXPECT_EQ(s.asked().back().prompt, "Digita il nome del file:");
  EXPECT_TRUE(QDir(s.cartella).entryList(QDir::Files).isEmpty());
  EXPECT_FALSE(QFileInfo::exists(gPathDocs + "/2025/fuori.docx"));
  EXPECT_TRUE(s.aperti.isEmpty());
}

// ---------------------------------------------------------------- import

TEST(Documenti, ImportFromTheModelsOwnFolderIsRefused) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  s.File("disegno.pdf", "pdf");
  t.messages->files = {s.cartella + "/disegno.pdf"};
  s.card.mnuAddImport_Click();
  ASSERT_EQ(s.asked().size(), 2u);
  EXPECT_EQ(s.asked()[0].prompt, "Importa documento esistente");
  EXPECT_EQ(s.asked()[0].buttons, -2);
  EXPECT_EQ(s.asked()[1].prompt, "Non puoi importare un file da questa cartella!");
  EXPECT_EQ(s.asked()[1].buttons, vbExclamation);
  EXPECT_EQ(QDir(s.cartella).entryList(QDir::Files), QStringList({"disegno.pdf"}));
  EXPECT_TRUE(s.card.SSTab1->isEnabled());
  // The same folder by another way of writing it.
  t.messages->files = {gPathDocs + "/2025/../2025/202500001/disegno.pdf"};
  s.card.mnuAddImport_Click();
  EXPECT_EQ(s.asked().back().prompt, "Non puoi importare un file da questa cartella!");
}

TEST(Documenti, ImportOfAnExistingNameIsRefused) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  s.File("disegno.pdf", "vecchio");
  const QString fuori = t.Path() + "/altrove";
  QDir().mkpath(fuori);
  ASSERT_TRUE(Scrivi(fuori + "/disegno.pdf", "nuovo"));
  t.messages->files = {fuori + "/disegno.pdf"};
  s.card.mnuAddImport_Click();
  EXPECT_EQ(s.asked().back().prompt, "Esiste già un file con questo nome tra i documenti!");
  EXPECT_EQ(s.asked().back().buttons, vbExclamation);
  EXPECT_EQ(Leggi(s.cartella + "/disegno.pdf"), "vecchio");
}

TEST(Documenti, ImportCopiesListsAndSelects) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  s.File("ordine.pdf");
  const QString fuori = t.Path() + "/altrove";
  QDir().mkpath(fuori);
  ASSERT_TRUE(Scrivi(fuori + "/capitolato tecnico.odt", "contenuto"));
  t.messages->files = {fuori + "/capitolato tecnico.odt"};
  s.card.mnuAddImport_Click();
  EXPECT_EQ(s.asked().size(), 1u);  // the file dialog only
  EXPECT_EQ(Leggi(s.cartella + "/capitolato tecnico.odt"), "contenuto");
  EXPECT_TRUE(QFileInfo::exists(fuori + "/capitolato tecnico.odt"));  // a copy
  EXPECT_EQ(s.card.lvwDocs->Count(), 2);
  EXPECT_EQ(s.Selezionato(), "capitolato tecnico.odt");
  EXPECT_TRUE(s.card.SSTab1->isEnabled());
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  // Cancelled: nothing asked beyond the dialog, nothing changes.
  s.card.mnuAddImport_Click();
  EXPECT_EQ(s.asked().size(), 2u);
  EXPECT_EQ(s.card.lvwDocs->Count(), 2);
  EXPECT_TRUE(LogDocumenti(t).isEmpty()) << LogDocumenti(t).join('\n').toStdString();
}

// ---------------------------------------------------------------- open and delete

TEST(Documenti, OpenOpensTheSelectedFile) {
  TestDb t;
  Carta s(t);
  QDir().mkpath(s.cartella);
  s.File("ordine.pdf");
  s.card.CaricaListDoc();
  s.card.lvwDocs->SetSelected(0);
  s.card.ApriDoc();
  EXPECT_EQ(s.aperti, QStringList({QFileInfo(s.cartella + "/ordine.pdf").absoluteFilePath()}));
  EXPECT_TRUE(s.card.SSTab1->isEnabled());
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST(Documenti, DeleteAsksAndRemovesFileAndRow) {
  TestDb t;
  Carta s(t);
  gCProject = kModello;
  QDir().mkpath(s.cartella);
  s.File("a.pdf");
  s.File("b.txt");
  s.card.CaricaListDoc();
  const int r = s.Riga("b.txt");
  ASSERT_GE(r, 0);
  s.card.lvwDocs->SetSelected(r);
  s.card.CancDoc();  // the default answer is No
  ASSERT_EQ(s.asked().size(), 1u);
  EXPECT_EQ(s.asked()[0].prompt, "Vuoi cancellare il file 'b.txt' ?");
  EXPECT_EQ(s.asked()[0].buttons, vbYesNo | vbQuestion | vbDefaultButton2);
  EXPECT_TRUE(QFileInfo::exists(s.cartella + "/b.txt"));
  EXPECT_EQ(s.card.lvwDocs->Count(), 2);
  t.messages->answers = {vbYes};
  s.card.CancDoc();
  EXPECT_FALSE(QFileInfo::exists(s.cartella + "/b.txt"));
  EXPECT_TRUE(QFileInfo::exists(s.cartella + "/a.pdf"));
  ASSERT_EQ(s.card.lvwDocs->Count(), 1);
  EXPECT_EQ(s.card.lvwDocs->Text(0, 1), "a.pdf");
  EXPECT_EQ(s.card.lvwDocs->SelectedIndex(), 0);
}

TEST(Documenti, DeleteLooksInTheFolderOfTheComponentsModel) {
  TestDb t;
  Carta s(t);
  gCProject = 0;  // a model made on this card: the component's model is another one
  QDir().mkpath(s.cartella);
  s.File("a.pdf");
  s.card.CaricaListDoc();
  s.card.lvwDocs->SetSelected(0);
  t.messages->answers = {vbYes};
  s.card.CancDoc();
  EXPECT_EQ(s.asked().back().prompt, "Vuoi cancellare il file 'a.pdf' ?");
  EXPECT_TRUE(QFileInfo::exists(s.cartella + "/a.pdf"));
  EXPECT_EQ(s.card.lvwDocs->Count(), 1);
  EXPECT_TRUE(t.LogLines("frmModelli", "CancDoc").isEmpty());
}

// ---------------------------------------------------------------- dropped messages

TEST(Documenti, DroppedEmlIsStoredUnderItsDecodedSubject) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  const QString eml = t.Path() + "/scaricato.eml";
  const QByteArray messaggio =
      "From: Ufficio Acquisti <acquisti@example.com>\r\n"
      "Subject: =?utf-8?Q?Offerta_stampo_n=C2=B0?=\r\n"
      " =?UTF-8?B?IDEy?=\r\n"
      "Content-Type: text/plain; charset=utf-8\r\n"
      "\r\n"
      "Subject: not this one\r\n";
  ASSERT_TRUE(Scrivi(eml, messaggio));
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(eml)});
  s.card.lvwDocs_OLEDragDrop(&data);
  const QString oggetto = QString::fromUtf8("Offerta stampo n° 12");
  ASSERT_EQ(s.asked().size(), 1u);
  EXPECT_EQ(s.asked()[0].prompt, oggetto);
  EXPECT_EQ(s.asked()[0].buttons, vbOKOnly);
  EXPECT_EQ(Leggi(s.cartella + "/" + oggetto + ".eml"), messaggio);
  // The exchange file goes once copied; its folder is the user's alone.
  const QString scambio = gPathTemp + QString("/prestkt-posta-%1").arg(getuid());
  EXPECT_FALSE(QFileInfo::exists(scambio + "/temp.msg"));
  struct stat st;
  ASSERT_EQ(lstat(QFile::encodeName(scambio).constData(), &st), 0);
  EXPECT_TRUE(S_ISDIR(st.st_mode));
  EXPECT_EQ(st.st_mode & 0777, 0700u);
  EXPECT_EQ(s.Selezionato(), oggetto + ".eml");
  EXPECT_TRUE(LogDocumenti(t).isEmpty()) << LogDocumenti(t).join('\n').toStdString();
}

// Another user of the machine can't make the message go where he wants: a
// link in place of the exchange folder, or of the file in it, is not followed.
TEST(Documenti, ExchangeFileFollowsNoPlantedLink) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  const QString scambio = gPathTemp + QString("/prestkt-posta-%1").arg(getuid());
  const QString altrui = t.Path() + "/altrui";
  QDir().mkpath(altrui);
  ASSERT_TRUE(QFile::link(altrui, scambio));
  QMimeData data;
  data.setText("Ordine urgente\ncorpo");
  s.card.lvwDocs_OLEDragDrop(&data);
  EXPECT_TRUE(QDir(altrui).isEmpty());
  EXPECT_FALSE(QFileInfo::exists(s.cartella + "/Ordine urgente.eml"));
  ASSERT_EQ(t.LogLines("frmModelli", "lvwDocs_OLEDragDrop").size(), 1);
  EXPECT_TRUE(t.LogLines("frmModelli", "lvwDocs_OLEDragDrop")[0].contains("(70)"));

  // The folder is the user's own now, but a link inside it is only removed.
  ASSERT_TRUE(QFile::remove(scambio));
  ASSERT_TRUE(QDir().mkdir(scambio));
  const QString bersaglio = t.Path() + "/bersaglio.txt";
  ASSERT_TRUE(Scrivi(bersaglio, "intatto"));
  ASSERT_TRUE(QFile::link(bersaglio, scambio + "/temp.msg"));
  s.card.lvwDocs_OLEDragDrop(&data);
  EXPECT_EQ(Leggi(bersaglio), "intatto");
  EXPECT_TRUE(Leggi(s.cartella + "/Ordine urgente.eml").endsWith("corpo"));
  EXPECT_FALSE(QFileInfo::exists(scambio + "/temp.msg"));
  EXPECT_FALSE(QFileInfo(scambio + "/temp.msg").isSymLink());

  // A folder that belongs to somebody else is refused.
  if (getuid() == 0) {
    ASSERT_EQ(chown(QFile::encodeName(scambio).constData(), 65534, 65534), 0);
    data.setText("Seconda\ncorpo");
    s.card.lvwDocs_OLEDragDrop(&data);
    EXPECT_FALSE(QFileInfo::exists(s.cartella + "/Seconda.eml"));
    EXPECT_EQ(t.LogLines("frmModelli", "lvwDocs_OLEDragDrop").size(), 2);
  }
}

TEST(Documenti, SubjectNeverLeavesTheModelsFolder) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  const QString eml = t.Path() + "/m.eml";
  ASSERT_TRUE(Scrivi(eml, "Subject: ../../../fuori/x\r\n\r\ncorpo\r\n"));
  QMimeData file;
  file.setUrls({QUrl::fromLocalFile(eml)});
  s.card.lvwDocs_OLEDragDrop(&file);
  QMimeData testo;
  testo.setText("../../etc/passwd\ncorpo del messaggio");
  s.card.lvwDocs_OLEDragDrop(&testo);
  QMimeData barre;
  barre.setData("message/rfc822", "Subject: a\\b/c\tdue\r\n\r\n");
  s.card.lvwDocs_OLEDragDrop(&barre);
  QMimeData controllo;
  controllo.setText(QString("prima\tseconda") + QChar(0x7f) + "\naltro");
  s.card.lvwDocs_OLEDragDrop(&controllo);

  QStringList attesi = {"_._.._.._fuori_x.eml", "_._.._etc_passwd.eml", "a_b_c due.eml", "prima_seconda_.eml"};
  QStringList trovati = QDir(s.cartella).entryList(QDir::Files);
  attesi.sort();
  trovati.sort();
  EXPECT_EQ(trovati, attesi);
  EXPECT_FALSE(QFileInfo::exists(t.Path() + "/fuori"));
  EXPECT_FALSE(QFileInfo::exists(gPathDocs + "/etc"));
  EXPECT_FALSE(QFileInfo::exists(gPathDocs + "/2025/etc"));
  EXPECT_EQ(QDir(gPathDocs + "/2025").entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList({"202500001"}));
  // The text became a message with its first line as subject.
  const QByteArray fatto = Leggi(s.cartella + "/_._.._etc_passwd.eml");
  EXPECT_TRUE(fatto.contains("Subject: ../../etc/passwd\r\n"));
  EXPECT_TRUE(fatto.endsWith("corpo del messaggio"));
  EXPECT_EQ(s.card.lvwDocs->Count(), 4);
}

TEST(Documenti, DroppedMsgKeepsItsFormAndReplacesWithoutAsking) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  const QString dir = t.Path() + "/posta";
  QDir().mkpath(dir);
  ASSERT_TRUE(Scrivi(dir + "/Ordine 42.msg", "prima"));
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(dir + "/Ordine 42.msg")});
  s.card.lvwDocs_OLEDragDrop(&data);
  EXPECT_EQ(Leggi(s.cartella + "/Ordine 42.msg"), "prima");
  ASSERT_TRUE(Scrivi(dir + "/Ordine 42.msg", "seconda"));
  s.card.lvwDocs_OLEDragDrop(&data);
  EXPECT_EQ(Leggi(s.cartella + "/Ordine 42.msg"), "seconda");
  ASSERT_EQ(s.asked().size(), 2u);  // the subject, twice; no question
  EXPECT_EQ(s.asked()[0].prompt, "Ordine 42");
  EXPECT_EQ(s.asked()[1].prompt, "Ordine 42");
  EXPECT_EQ(s.card.lvwDocs->Count(), 1);
}

TEST(Documenti, WhatIsNotAMessageIsNotTaken) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  ASSERT_TRUE(Scrivi(t.Path() + "/disegno.pdf", "pdf"));
  QMimeData file;
  file.setUrls({QUrl::fromLocalFile(t.Path() + "/disegno.pdf")});
  file.setText(t.Path() + "/disegno.pdf");
  s.card.lvwDocs_OLEDragDrop(&file);
  QMimeData vuoto;
  s.card.lvwDocs_OLEDragDrop(&vuoto);
  s.card.lvwDocs_OLEDragDrop(nullptr);
  EXPECT_TRUE(s.asked().empty());
  EXPECT_TRUE(QDir(s.cartella).entryList(QDir::Files).isEmpty());
}

TEST(Documenti, LongSubjectIsCutTo250Characters) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  QMimeData data;
  data.setText(QString(300, QLatin1Char('a')));
  s.card.lvwDocs_OLEDragDrop(&data);
  EXPECT_TRUE(QFileInfo::exists(s.cartella + "/" + QString(250, QLatin1Char('a')) + ".eml"));
  // Letters of two bytes each: the name is cut to what the file system takes.
  QMimeData lunghe;
  lunghe.setText(QString(200, QChar(0x00E8)));
  s.card.lvwDocs_OLEDragDrop(&lunghe);
  EXPECT_EQ(QDir(s.cartella).entryList(QDir::Files).size(), 2);
  EXPECT_TRUE(QFileInfo::exists(s.cartella + "/" + QString(125, QChar(0x00E8)) + ".eml"));
}

TEST(Documenti, DropOnTheListGoesThroughItsViewport) {
  TestDb t;
  Carta s(t);
  s.card.CaricaListDoc();
  InstallaDropDocumenti(&s.card);  // a second call adds nothing
  const QString eml = t.Path() + "/trascinato.eml";
  ASSERT_TRUE(Scrivi(eml, "Subject: Conferma ordine\r\n\r\nok\r\n"));
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(eml)});
  QWidget* vp = s.card.lvwDocs->viewport();
  EXPECT_TRUE(vp->acceptDrops());
  QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(vp, &enter);
  EXPECT_TRUE(enter.isAccepted());
  EXPECT_EQ(enter.dropAction(), Qt::CopyAction);
  QDropEvent drop(QPointF(5, 5), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(vp, &drop);
  EXPECT_TRUE(drop.isAccepted());
  QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(s.cartella + "/Conferma ordine.eml"), 5000);
  EXPECT_EQ(s.asked().size(), 1u);  // one filter, one drop
  EXPECT_EQ(s.Selezionato(), "Conferma ordine.eml");
  // A file that is not a message is refused at the entry.
  ASSERT_TRUE(Scrivi(t.Path() + "/disegno.pdf", "pdf"));
  QMimeData pdf;
  pdf.setUrls({QUrl::fromLocalFile(t.Path() + "/disegno.pdf")});
  QDragEnterEvent rifiuto(QPoint(5, 5), Qt::CopyAction, &pdf, Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(vp, &rifiuto);
  EXPECT_FALSE(rifiuto.isAccepted());
}

// ---------------------------------------------------------------- the office files

TEST(Documenti, EmptyDocxAndXlsxOpenInAnOfficeProgram) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const QString docx = dir.path() + "/Offerta.docx";
  const QString xlsx = dir.path() + "/Preventivo.xlsx";
  ASSERT_TRUE(ScriviDocxVuoto(docx));
  ASSERT_TRUE(ScriviXlsxVuoto(xlsx));
  for (const auto& [file, filtro] : {std::pair{docx, kFiltroDocx}, std::pair{xlsx, kFiltroXlsx}}) {
    const QString pdf = InPdf(file, filtro, dir.path() + "/lo");
    ASSERT_FALSE(pdf.isEmpty());
    ASSERT_TRUE(QFileInfo(pdf).isFile()) << pdf.toStdString();
    EXPECT_TRUE(Leggi(pdf).startsWith("%PDF")) << pdf.toStdString();
  }
  // The check tells a package it cannot read: a zip without the document gives no PDF.
  const QString rotto = dir.path() + "/Rotto.docx";
  ASSERT_TRUE(Scrivi(rotto, QByteArray("PK\x03\x04", 4) + QByteArray(200, 'x')));
  EXPECT_FALSE(QFileInfo::exists(InPdf(rotto, kFiltroDocx, dir.path() + "/lo")));
}

TEST(Documenti, WritersFailOnAFolderThatDoesNotExist) {
  QTemporaryDir dir;
  EXPECT_FALSE(ScriviDocxVuoto(dir.path() + "/manca/a.docx"));
  EXPECT_FALSE(ScriviXlsxVuoto(dir.path() + "/manca/a.xlsx"));
  EXPECT_FALSE(QFileInfo::exists(dir.path() + "/manca"));
}
