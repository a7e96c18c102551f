// Image lists, toolbars and the controls bound to them; the icon and times of a
// file; opening files with their program; the large layout of the screens.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QFileInfo>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <optional>

#include "ListView.h"
#include "ModIcon.h"
#include "ModMagnify.h"
#include "TestSupport.h"
#include "VbError.h"

using namespace prestkt;
using namespace prestkt::test;

namespace {

QIcon Tinta(const QColor& c, int side = 16) {
  QPixmap p(side, side);
  p.fill(c);
  return QIcon(p);
}

QImage Immagine(const QIcon& icon, int side) {
  return icon.pixmap(QSize(side, side)).toImage().convertToFormat(QImage::Format_ARGB32);
}

std::optional<int> ErrorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const VbError& e) {
    return e.Number();
  }
  return std::nullopt;
}

// A toolbar of five actions, the second a separator, named as the screens name them.
QToolBar* Barra(QWidget* form) {
  auto* tb = new QToolBar(form);
  tb->addAction(QStringLiteral("Nuovo"));
  tb->addSeparator();
  tb->addAction(QStringLiteral("Apri"));
  tb->addAction(QStringLiteral("Salva"));
  tb->addAction(QStringLiteral("Esci"));
  for (int i = 0; i < tb->actions().size(); ++i)
    tb->actions().at(i)->setObjectName(QStringLiteral("Toolbar1_%1").arg(i + 1));
  return tb;
}

struct Hooks {
  struct Start {
    QString program;
    QStringList args;
    QString dir;
    bool hidden;
  };
  std::vector<Start> started;
  std::vector<QUrl> opened;
  bool openResult = true;
  Hooks() {
    SetStartHook([this](const QString& p, const QStringList& a, const QString& d, bool h) {
      started.push_back({p, a, d, h});
      return true;
    });
    SetOpenHook([this](const QUrl& u) {
      opened.push_back(u);
      return openResult;
    });
  }
  ~Hooks() {
    SetStartHook({});
    SetOpenHook({});
  }
};

QString Scrivi(const QString& path, const QByteArray& data = "x") {
  QFile f(path);
  if (!f.open(QIODevice::WriteOnly)) return {};
  f.write(data);
  return path;
}

class Rifiuta : public QWidget {
 protected:
  void closeEvent(QCloseEvent* e) override { e->ignore(); }
};

}  // namespace

// ---------------------------------------------------------------- image list

TEST(ImageList, CountsFromOneAndRaisesOutOfBounds) {
  ImageList il(nullptr, 24);
  EXPECT_EQ(il.ImageSize(), 24);
  EXPECT_EQ(il.Add(Tinta(Qt::red), "Rosso"), 1);
  EXPECT_EQ(il.Add(Tinta(Qt::blue)), 2);
  EXPECT_EQ(il.Count(), 2);
  EXPECT_EQ(il.Tag(1), "Rosso");
  EXPECT_EQ(il.Tag(2), "");
  EXPECT_EQ(ErrorOf([&] { il.Icon(0); }), std::optional<int>(kIndexOutOfBounds));
  EXPECT_EQ(ErrorOf([&] { il.Tag(3); }), std::optional<int>(kIndexOutOfBounds));
  EXPECT_EQ(ErrorOf([&] { il.Remove(3); }), std::optional<int>(kIndexOutOfBounds));
  il.Remove(1);
  ASSERT_EQ(il.Count(), 1);
  EXPECT_EQ(Immagine(il.Icon(1), 16).pixelColor(4, 4), QColor(Qt::blue));
  il.Clear();
  EXPECT_EQ(il.Count(), 0);
}

// ---------------------------------------------------------------- toolbars

TEST(ToolBarLoadImages, PicturesAndTooltipsGoByIndexAndAnActionBeyondTheListIsLogged) {
  TestDb t;
  QWidget form;
  QToolBar* tb = Barra(&form);
  ImageList il(&form, 16);
  il.Add(Tinta(Qt::red), "Nuovo modello");
  il.Add(Tinta(Qt::gray), "Separatore");
  il.Add(Tinta(Qt::green), "");
  il.Add(Tinta(Qt::blue), "Salva il modello");
  const QList<QAction*> a = tb->actions();
  ASSERT_EQ(a.size(), 5);

  ToolBarLoadImages(tb, &il);

  EXPECT_EQ(BoundImageList(tb), &il);
  EXPECT_EQ(tb->iconSize(), QSize(16, 16));
  for (int i = 1; i <= 4; ++i) EXPECT_EQ(a[i - 1]->icon().cacheKey(), il.Icon(i).cacheKey()) << i;
  EXPECT_EQ(a[0]->toolTip(), "Nuovo modello");
  EXPECT_EQ(a[2]->toolTip(), "Apri");  // an empty Tag leaves the tooltip alone
  EXPECT_EQ(a[3]->toolTip(), "Salva il modello");
  // The fifth action has no picture: one line in the log, nothing set.
  EXPECT_TRUE(a[4]->icon().isNull());
  EXPECT_EQ(a[4]->toolTip(), "Esci");
  const QStringList log = t.LogLines("Procedure", "ToolBarLoadImages");
  ASSERT_EQ(log.size(), 1);
  EXPECT_TRUE(log[0].contains("35600")) << log[0].toStdString();
}

TEST(ToolBarLoadImages, ATallerToolbarMakesTheFormRoomForIt) {
  TestDb t;
  QWidget form;
  auto* lay = new QVBoxLayout(&form);
  QToolBar* tb = Barra(&form);
  lay->addWidget(tb);
  lay->addWidget(new QLabel(QStringLiteral("Modelli"), &form));
  ImageList piccole(&form, 16);
  for (int i = 0; i < 5; ++i) piccole.Add(Tinta(Qt::red, 16));
  ToolBarLoadImages(tb, &piccole);
  form.resize(form.sizeHint());
  const int prima = form.height();

  ImageList grandi(&form, 32);
  for (int i = 0; i < 5; ++i) grandi.Add(Tinta(Qt::red, 32));
  ToolBarLoadImages(tb, &grandi);

  EXPECT_EQ(tb->iconSize(), QSize(32, 32));
  EXPECT_GT(form.height(), prima);
  EXPECT_GE(form.height(), form.sizeHint().height());
  EXPECT_TRUE(t.LogLines("Procedure", "ToolBarLoadImages").isEmpty());
}

TEST(SceltaImmagini, NormalAt16OtherwiseLargeWithTheTags) {
  TestDb t;
  ImageList normale(nullptr, 16), grande(nullptr, 24);
  normale.Add(Tinta(Qt::red), "Nuovo");
  normale.Add(Tinta(Qt::red), "Salva");
  grande.Add(Tinta(Qt::red, 24));
  grande.Add(Tinta(Qt::red, 24));
  gMagnify = 16;
  EXPECT_EQ(SceltaImmagini(&normale, &grande), &normale);
  EXPECT_EQ(grande.Tag(1), "");
  gMagnify = 18;
  EXPECT_EQ(SceltaImmagini(&normale, &grande), &grande);
  EXPECT_EQ(grande.Tag(1), "Nuovo");
  EXPECT_EQ(grande.Tag(2), "Salva");
}

// ---------------------------------------------------------------- files

TEST(GetTypeIcon, UnknownExtensionGivesTheFileIcon) {
  TestDb t;
  const QIcon file = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
  ASSERT_FALSE(file.isNull());
  const QIcon icon = GetTypeIcon("x.unknownext123", false);
  ASSERT_FALSE(icon.isNull());
  EXPECT_EQ(Immagine(icon, 16), Immagine(file, 16));
  const QIcon grande = GetTypeIcon("x.unknownext123", true);
  ASSERT_FALSE(grande.availableSizes().isEmpty());
  EXPECT_EQ(grande.availableSizes().first(), QSize(32, 32));
  EXPECT_EQ(Immagine(grande, 32), Immagine(file, 32));
  EXPECT_FALSE(GetTypeIcon("/nessuna/cartella/lettera.txt", false).isNull());
  EXPECT_FALSE(GetTypeIcon("preventivo.pdf", true).isNull());
  EXPECT_TRUE(t.LogLines("Procedure", "GetTypeIcon").isEmpty());
}

TEST(GetFileTimeInfo, TimesInWholeSecondsAndMissingFileLogged) {
  TestDb t;
  const QString path = Scrivi(t.Path() + "/nota.txt", "testo");
  ASSERT_FALSE(path.isEmpty());
  QDateTime creato, aperto, scritto;
  ASSERT_TRUE(GetFileTimeInfo(path, &creato, &aperto, &scritto));
  const QDateTime modificato = QFileInfo(path).lastModified();
  EXPECT_EQ(scritto.toSecsSinceEpoch(), modificato.toSecsSinceEpoch());
  EXPECT_EQ(scritto.time().msec(), 0);
  EXPECT_EQ(scritto.timeSpec(), Qt::LocalTime);
  EXPECT_TRUE(creato.isValid());
  EXPECT_EQ(creato.time().msec(), 0);
  EXPECT_TRUE(aperto.isValid());
  EXPECT_LE(qAbs(creato.secsTo(QDateTime::currentDateTime())), 120);
  EXPECT_TRUE(t.LogLines("Procedure", "GetFileTimeInfo").isEmpty());

  QDateTime x;
  EXPECT_FALSE(GetFileTimeInfo(t.Path() + "/manca.txt", &x, &x, &x));
  EXPECT_EQ(t.LogLines("Procedure", "GetFileTimeInfo").size(), 1);
}

// ---------------------------------------------------------------- shell

TEST(GShell, ProgramWithParametersStartsHidden) {
  TestDb t;
  Hooks h;
  const QString prog = Scrivi(t.Path() + "/prog.EXE");
  ASSERT_FALSE(prog.isEmpty());
  EXPECT_TRUE(GShell(prog, 1, "-a \"due parole\"", t.Path()));
  ASSERT_EQ(h.started.size(), 1u);
  EXPECT_EQ(h.started[0].program, QFileInfo(prog).absoluteFilePath());
  EXPECT_EQ(h.started[0].args, QStringList({"-a", "due parole"}));
  EXPECT_EQ(h.started[0].dir, t.Path());
  EXPECT_TRUE(h.started[0].hidden);
  EXPECT_TRUE(h.opened.empty());
}

TEST(GShell, WithoutParametersNorFolderOpensNormally) {
  TestDb t;
  Hooks h;
  const QString prog = Scrivi(t.Path() + "/prog.EXE");
  EXPECT_TRUE(GShell(prog, 0));
  ASSERT_EQ(h.started.size(), 1u);
  EXPECT_FALSE(h.started[0].hidden);
  EXPECT_TRUE(h.started[0].args.isEmpty());
  // A document with a mostra of 0 is opened all the same, with its program.
  const QString doc = Scrivi(t.Path() + "/preventivo.pdf");
  EXPECT_TRUE(GShell(doc, 0));
  ASSERT_EQ(h.opened.size(), 1u);
  EXPECT_EQ(h.opened[0], QUrl::fromLocalFile(doc));
  EXPECT_EQ(h.opened[0].scheme(), "file");
}

TEST(GShell, FailuresReturnFalseAndNothingElse) {
  TestDb t;
  Hooks h;
  EXPECT_FALSE(GShell(t.Path() + "/manca.pdf", 1));
  const QString prog = Scrivi(t.Path() + "/prog.EXE");
  EXPECT_FALSE(GShell(prog, 1, "-x", t.Path() + "/nessuna"));  // a missing folder
  const QString doc = Scrivi(t.Path() + "/lettera.odt");
  h.openResult = false;  // no program for the document
  EXPECT_FALSE(GShell(doc, 1));
  EXPECT_TRUE(h.started.empty());
  EXPECT_EQ(h.opened.size(), 1u);
  EXPECT_TRUE(t.messages->asked.empty());
  EXPECT_TRUE(t.LogLines("Procedure", "GShell").isEmpty());
  EXPECT_TRUE(t.LogLines("OCPrestKT", "GShell").isEmpty());
}

// ---------------------------------------------------------------- controls bound to a list

TEST(HideControl, HidesEmptiesAndUnbindsOnlyTheControlsOfThatList) {
  TestDb t;
  QWidget form;
  auto* lay = new QVBoxLayout(&form);
  ImageList il(&form), altra(&form);
  il.Add(Tinta(Qt::red));
  il.Add(Tinta(Qt::blue));
  altra.Add(Tinta(Qt::green));

  auto* lista = new ListView(&form);
  lista->AddColumn("a", "Codice", 1000, lvwColumnLeft);
  lista->AddItem("k1", "Uno", 0);
  BindImageList(lista, &il);
  EXPECT_EQ(lista->Icons().size(), 2);
  QToolBar* tb = Barra(&form);
  ToolBarLoadImages(tb, &il);
  auto* albero = new QTreeWidget(&form);
  new QTreeWidgetItem(albero, QStringList{"ramo"});
  BindImageList(albero, &il);
  auto* schede = new QTabWidget(&form);
  schede->addTab(new QWidget, altra.Icon(1), "Scheda");
  BindImageList(schede, &altra);
  auto* libera = new ListView(&form);  // bound to nothing
  libera->AddItem("k", "Due");
  for (QWidget* w : std::initializer_list<QWidget*>{lista, tb, albero, schede, libera}) lay->addWidget(w);
  form.show();

  HideControl(&form, &il);

  EXPECT_FALSE(lista->isVisible());
  EXPECT_EQ(lista->Count(), 0);
  EXPECT_TRUE(lista->Icons().isEmpty());
  EXPECT_EQ(BoundImageList(lista), nullptr);
  EXPECT_FALSE(tb->isVisible());
  EXPECT_TRUE(tb->actions().isEmpty());
  EXPECT_EQ(BoundImageList(tb), nullptr);
  EXPECT_FALSE(albero->isVisible());
  EXPECT_EQ(albero->topLevelItemCount(), 0);
  EXPECT_EQ(BoundImageList(albero), nullptr);
  // Controls of another list, or of none, stay as they are.
  EXPECT_TRUE(schede->isVisible());
  EXPECT_EQ(schede->count(), 1);
  EXPECT_EQ(BoundImageList(schede), &altra);
  EXPECT_TRUE(libera->isVisible());
  EXPECT_EQ(libera->Count(), 1);
  EXPECT_EQ(il.Count(), 2);  // the list itself keeps its images
  EXPECT_TRUE(t.LogLines("ModIcon", "HideControl").isEmpty());

  HideControl(&form, &altra);
  EXPECT_FALSE(schede->isVisible());
  EXPECT_EQ(schede->count(), 0);

  HideControl(nullptr, &il);
  EXPECT_EQ(t.LogLines("ModIcon", "HideControl").size(), 1);
}

TEST(SvuotaImmagini, EmptiesEveryListOfTheForm) {
  TestDb t;
  QWidget form;
  auto* il = new ImageList(&form);
  auto* grandi = new ImageList(&form, 24);
  for (int i = 0; i < 3; ++i) il->Add(Tinta(Qt::red), QString::number(i));
  for (int i = 0; i < 2; ++i) grandi->Add(Tinta(Qt::red, 24));
  auto* lista = new ListView(&form);
  BindImageList(lista, il);
  QToolBar* tb = Barra(&form);
  ToolBarLoadImages(tb, grandi);

  SvuotaImmagini(&form);

  EXPECT_EQ(il->Count(), 0);
  EXPECT_EQ(grandi->Count(), 0);
  EXPECT_EQ(BoundImageList(lista), nullptr);
  EXPECT_EQ(BoundImageList(tb), nullptr);
  EXPECT_TRUE(tb->actions().isEmpty());
}

// ---------------------------------------------------------------- magnification

TEST(Magnify, FactorOneKeepsTheSizesOfTheControls) {
  TestDb t;
  QWidget form;
  auto* lay = new QVBoxLayout(&form);
  auto* bottone = new QPushButton(QStringLiteral("Salva"), &form);
  bottone->setMinimumSize(80, 25);
  auto* testo = new QLineEdit(&form);
  lay->addWidget(bottone);
  lay->addWidget(testo);
  form.resize(400, 300);
  form.show();
  const QRect gb = bottone->geometry(), gt = testo->geometry();

  Magnify(&form, 1.0);

  EXPECT_EQ(form.size(), QSize(400, 300));
  EXPECT_EQ(bottone->minimumSize(), QSize(80, 25));
  EXPECT_EQ(bottone->geometry(), gb);
  EXPECT_EQ(testo->geometry(), gt);
}

TEST(Magnify, OtherFactorsScaleMinimumSizesAndTheForm) {
  TestDb t;
  QWidget form;
  auto* bottone = new QPushButton(QStringLiteral("Salva"), &form);
  bottone->setMinimumSize(80, 25);
  auto* fisso = new QLabel(QStringLiteral("Codice"), &form);
  fisso->setFixedSize(40, 12);
  form.resize(200, 150);

  Magnify(&form, 1.5);

  EXPECT_EQ(bottone->minimumSize(), QSize(120, 38));
  EXPECT_EQ(fisso->minimumSize(), QSize(60, 18));
  EXPECT_EQ(fisso->maximumSize(), QSize(60, 18));
  EXPECT_EQ(form.size(), QSize(300, 225));
}

TEST(Magnify, TheFormStaysWithinTheScreen) {
  TestDb t;
  QScreen* screen = QGuiApplication::primaryScreen();
  ASSERT_NE(screen, nullptr);
  const QRect r = screen->availableGeometry();
  const QSize limite(static_cast<int>(r.width() * 0.95), static_cast<int>(r.height() * 0.9));
  EXPECT_EQ(LimiteSchermo(nullptr), limite);

  QWidget form;
  form.resize(r.width() * 3, r.height() * 3);
  Magnify(&form, 1.0);
  EXPECT_EQ(form.size(), limite);

  QWidget altro;
  altro.resize(r.width() / 2, r.height() / 2);
  Magnify(&altro, 3.0);
  EXPECT_EQ(altro.size(), limite);
}

TEST(Magnify, TreeOfAFormWithoutContainersHasTheFormAlone) {
  TestDb t;
  QWidget form;
  new QPushButton(QStringLiteral("OK"), &form);
  new QLabel(QStringLiteral("Testo"), &form);
  new ListView(&form);  // built of widgets, but not a container
  Magnify(&form, 1.0);
  RecordsetPtr rs = MagnifyTree();
  ASSERT_TRUE(rs);
  ASSERT_EQ(rs->RecordCount(), 1);
  rs->MoveFirst();
  EXPECT_EQ(rs->Value("Idx").toInt(), 0);
  EXPECT_EQ(rs->Value("Level").toInt(), 0);
  EXPECT_TRUE(rs->Value("IsContainer").toBool());
  EXPECT_TRUE(rs->Value("hWndF").isNull());
}

TEST(Magnify, TreeOfFramesGivesParentsAndLevels) {
  TestDb t;
  QWidget form;
  auto* cornice = new QFrame(&form);
  new QPushButton(QStringLiteral("OK"), cornice);
  auto* gruppo = new QGroupBox(QStringLiteral("Dati"), cornice);
  new QLineEdit(gruppo);
  Magnify(&form, 1.0);
  RecordsetPtr rs = MagnifyTree();
  ASSERT_TRUE(rs);
  ASSERT_EQ(rs->RecordCount(), 3);
  rs->SetSort("Idx");
  rs->MoveFirst();
  const int hwndForm = rs->Value("hWnd").toInt();
  rs->MoveNext();
  EXPECT_EQ(rs->Value("Idx").toInt(), 1);
  EXPECT_EQ(rs->Value("IdxF").toInt(), 0);
  EXPECT_EQ(rs->Value("hWndF").toInt(), hwndForm);
  EXPECT_EQ(rs->Value("Level").toInt(), 1);
  const int hwndCornice = rs->Value("hWnd").toInt();
  EXPECT_NE(hwndCornice, hwndForm);
  rs->MoveNext();
  EXPECT_EQ(rs->Value("Idx").toInt(), 2);
  EXPECT_EQ(rs->Value("IdxF").toInt(), 1);
  EXPECT_EQ(rs->Value("hWndF").toInt(), hwndCornice);
  EXPECT_EQ(rs->Value("Level").toInt(), 2);

  // Only the frame and its button: two rows.
  QWidget semplice;
  new QPushButton(QStringLiteral("OK"), new QFrame(&semplice));
  Magnify(&semplice, 1.0);
  rs = MagnifyTree();
  ASSERT_EQ(rs->RecordCount(), 2);
  rs->SetFilter("Idx=1");
  ASSERT_EQ(rs->RecordCount(), 1);
  rs->MoveFirst();
  EXPECT_EQ(rs->Value("IdxF").toInt(), 0);
  EXPECT_EQ(rs->Value("Level").toInt(), 1);
}

TEST(ImpostaLayoutGrande, LargeFontAndToolbarPicturesAbove16) {
  TestDb t;
  QWidget form;
  auto* lay = new QVBoxLayout(&form);
  QToolBar* tb = Barra(&form);
  tb->setIconSize(QSize(16, 16));
  auto* etichetta = new QLabel(QStringLiteral("Descrizione"), &form);
  auto* testo = new QLineEdit(&form);
  lay->addWidget(tb);
  lay->addWidget(etichetta);
  lay->addWidget(testo);
  const QFont fontBarra = tb->font();
  const QFont fontEtichetta = etichetta->font();

  gMagnify = 16;
  ImpostaLayoutGrande(&form);
  EXPECT_EQ(etichetta->font(), fontEtichetta);
  EXPECT_EQ(tb->iconSize(), QSize(16, 16));

  gMagnify = 18;
  ImpostaLayoutGrande(&form);
  const double atteso = 8.25 * 18 / 16;
  for (QWidget* w : std::initializer_list<QWidget*>{&form, etichetta, testo}) {
    EXPECT_EQ(w->font().family(), "Verdana") << w->metaObject()->className();
    EXPECT_GE(w->font().pointSizeF(), atteso - 0.01);
  }
  EXPECT_NEAR(etichetta->font().pointSizeF(), std::max(atteso, fontEtichetta.pointSizeF()), 0.01);
  EXPECT_EQ(tb->iconSize(), QSize(24, 24));
  EXPECT_NE(tb->font().family(), "Verdana");
  EXPECT_EQ(tb->font().pointSizeF(), fontBarra.pointSizeF());
  EXPECT_GE(form.width(), form.sizeHint().width());
  EXPECT_GE(form.height(), form.sizeHint().height());
}

TEST(clsFormCleaner, EmptiesTheListsWhenTheFormCloses) {
  TestDb t;
  QWidget form;
  auto* il = new ImageList(&form);
  il->Add(Tinta(Qt::red));
  il->Add(Tinta(Qt::blue));
  auto* lista = new ListView(&form);
  BindImageList(lista, il);
  clsFormCleaner cleaner;
  cleaner.SetForm(&form);
  EXPECT_EQ(cleaner.Form(), &form);
  form.show();
  EXPECT_EQ(il->Count(), 2);

  EXPECT_TRUE(form.close());
  EXPECT_FALSE(form.isVisible());
  EXPECT_EQ(il->Count(), 0);
  EXPECT_EQ(BoundImageList(lista), nullptr);
  EXPECT_EQ(cleaner.Form(), nullptr);
}

TEST(clsFormCleaner, AFormThatRefusesToCloseKeepsItsLists) {
  TestDb t;
  Rifiuta form;
  auto* il = new ImageList(&form);
  il->Add(Tinta(Qt::red));
  clsFormCleaner cleaner;
  cleaner.SetForm(&form);
  form.show();
  EXPECT_FALSE(form.close());
  EXPECT_TRUE(form.isVisible());
  EXPECT_EQ(il->Count(), 1);
  EXPECT_EQ(cleaner.Form(), &form);
}

// Toolbars stay out of the scaling, and after it no control is wider than 94%
// or taller than 80% of the screen, whatever it asked before.
TEST(Magnify, ToolbarsStayOutAndNoControlOutgrowsTheScreen) {
  TestDb t;
  const QRect r = QGuiApplication::primaryScreen()->availableGeometry();
  const QSize tetto(static_cast<int>(r.width() * 0.94), static_cast<int>(r.height() * 0.8));
  EXPECT_EQ(LimiteControllo(nullptr), tetto);
  for (double fattore : {1.0, 1.5, 3.0}) {
    QWidget form;
    auto* lay = new QVBoxLayout(&form);
    auto* barra = new QToolBar(&form);
    barra->setIconSize(QSize(24, 24));
    QAction* esci = barra->addAction(QStringLiteral("Esci"));
    QWidget* bottone = barra->widgetForAction(esci);
    bottone->setMinimumSize(30, 30);
    auto* grande = new QPlainTextEdit(&form);
    grande->setMinimumSize(r.width() / 2, r.height() / 2);
    auto* largo = new QLineEdit(&form);
    largo->setMinimumWidth(r.width() * 2);
    lay->addWidget(barra);
    lay->addWidget(grande);
    lay->addWidget(largo);
    form.show();
    Magnify(&form, fattore);
    EXPECT_EQ(bottone->minimumSize(), QSize(30, 30)) << fattore;
    EXPECT_EQ(barra->iconSize(), QSize(24, 24)) << fattore;
    QApplication::processEvents();
    for (QWidget* w : {static_cast<QWidget*>(grande), static_cast<QWidget*>(largo)}) {
      EXPECT_LE(w->width(), tetto.width()) << fattore;
      EXPECT_LE(w->height(), tetto.height()) << fattore;
      EXPECT_LE(w->minimumWidth(), tetto.width()) << fattore;
      EXPECT_LE(w->minimumHeight(), tetto.height()) << fattore;
    }
  }
}
