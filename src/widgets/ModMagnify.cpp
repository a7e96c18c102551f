#include "ModMagnify.h"

#include <QEvent>
#include <QFrame>
#include <QGroupBox>
#include <QGuiApplication>
#include <QLayout>
#include <QScreen>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QToolBar>
#include <algorithm>
#include <cmath>
#include <vector>

#include "Guard.h"
#include "ModIcon.h"
#include "ModPrestKT.h"

namespace prestkt {

namespace {

constexpr char kModulo[] = "ModMagnify";
constexpr char kHwnd[] = "prestktHwnd";
constexpr double kBaseFontSize = 8.25;
constexpr int kLargeToolBarIcon = 24;

RecordsetPtr& LastTree() {
  static RecordsetPtr tree;
  return tree;
}

// The id of a widget in the tree: given once, kept for the widget's life.
int HwndOf(QWidget* w) {
  static int next = 0;
  const QVariant v = w->property(kHwnd);
  if (v.isValid()) return v.toInt();
  w->setProperty(kHwnd, ++next);
  return next;
}

// The widgets that hold other controls of a screen: frames, group boxes, plain
// panels, tabs, stacks and splitters. A control that builds itself out of
// other widgets (lists, combos, spin boxes) is not one.
bool IsContainer(const QWidget* w) {
  if (qobject_cast<const QGroupBox*>(w) || qobject_cast<const QTabWidget*>(w) ||
      qobject_cast<const QStackedWidget*>(w) || qobject_cast<const QSplitter*>(w))
    return true;
  const QMetaObject* m = w->metaObject();
  return m == &QFrame::staticMetaObject || m == &QWidget::staticMetaObject;
}

bool InsideToolBar(const QWidget* w, const QWidget* form) {
  for (const QWidget* p = w; p && p != form; p = p->parentWidget())
    if (qobject_cast<const QToolBar*>(p)) return true;
  return false;
}

QList<QWidget*> Controls(QWidget* form) {
  QList<QWidget*> controls;
  for (QWidget* w : form->findChildren<QWidget*>())
    if (!w->isWindow()) controls.append(w);
  return controls;
}

// Grows the form to what its layout asks, keeping it within the screen.
void FitForm(QWidget* form) {
  // A control of a form not shown yet does not tell the layout that it changed.
  if (QLayout* l = form->layout()) l->invalidate();
  const QSize limit = LimiteSchermo(form);
  const QSize s = form->size().expandedTo(form->sizeHint()).boundedTo(limit);
  if (s != form->size()) form->resize(s);
}

QString Num(const QVariant& v) { return QString::number(v.toLongLong()); }

// Adds a container found in parent, when it is not there yet, with the next Idx.
void AggiungiContenitore(const RecordsetPtr& rs, QWidget* w, QWidget* parent) {
  const int hwnd = HwndOf(w);
  rs->SetFilter(QStringLiteral("hWnd=") + QString::number(hwnd));
  const bool presente = rs->RecordCount() > 0;
  rs->SetFilter(QString());
  if (presente) return;
  rs->SetSort(QStringLiteral("idx DESC"));
  rs->MoveFirst();
  const int idx = rs->Value(QStringLiteral("Idx")).toInt() + 1;
  rs->SetSort(QString());
  rs->AddNew();
  rs->SetValue(QStringLiteral("hWnd"), hwnd);
  rs->SetValue(QStringLiteral("Idx"), idx);
  rs->SetValue(QStringLiteral("IsContainer"), true);
  rs->SetValue(QStringLiteral("hWndF"), HwndOf(parent));
  rs->Update();
}

void CercaContenitori(const RecordsetPtr& rs, QWidget* parent, Guard& g) {
  for (QObject* o : parent->children()) {
    auto* w = qobject_cast<QWidget*>(o);
    if (!w || w->isWindow() || !IsContainer(w)) continue;
    if (g([&] { AggiungiContenitore(rs, w, parent); })) CercaContenitori(rs, w, g);
  }
}

RecordsetPtr AlberoContenitori(QWidget* form, Guard& g) {
  RecordsetPtr rs = Recordset::Create();
  rs->Append(QStringLiteral("Level"), adSmallInt);
  rs->Append(QStringLiteral("hWnd"), adInteger);
  rs->Append(QStringLiteral("Idx"), adSmallInt);
  rs->Append(QStringLiteral("IsContainer"), adBoolean);
  rs->Append(QStringLiteral("IdxF"), adSmallInt);
  rs->Append(QStringLiteral("hWndF"), adInteger);
  rs->Open();
  rs->AddNew();
  rs->SetValue(QStringLiteral("Level"), 0);
  rs->SetValue(QStringLiteral("hWnd"), HwndOf(form));
  rs->SetValue(QStringLiteral("Idx"), 0);
  rs->SetValue(QStringLiteral("IsContainer"), true);
  rs->Update();

  CercaContenitori(rs, form, g);

  // The Idx of each container's parent.
  g([&] {
    RecordsetPtr padri = rs->Clone();
    rs->SetFilter(QString());
    if (rs->RecordCount() == 0) return;
    rs->MoveFirst();
    while (!rs->Eof()) {
      const QVariant hwndF = rs->Value(QStringLiteral("hWndF"));
      if (!hwndF.isNull()) {
        padri->SetFilter(QStringLiteral("hWnd=") + Num(hwndF));
        if (padri->RecordCount() > 0) {
          padri->MoveFirst();
          rs->SetValue(QStringLiteral("IdxF"), padri->Value(QStringLiteral("Idx")));
        }
      }
      rs->MoveNext();
    }
  });

  // The levels, from the form down: the children of level L are at L + 1.
  g([&] {
    const int righe = rs->RecordCount();
    for (int level = 0; level <= righe; ++level) {
      rs->SetFilter(QStringLiteral("Level=") + QString::number(level));
      if (rs->RecordCount() == 0) break;
      std::vector<qlonglong> hwnds;
      rs->MoveFirst();
      while (!rs->Eof()) {
        hwnds.push_back(rs->Value(QStringLiteral("hWnd")).toLongLong());
        rs->MoveNext();
      }
      for (const qlonglong h : hwnds) {
        rs->SetFilter(QStringLiteral("hwndf=") + QString::number(h));
        if (rs->RecordCount() == 0) continue;
        rs->MoveFirst();
        while (!rs->Eof()) {
          rs->SetValue(QStringLiteral("Level"), level + 1);
          rs->MoveNext();
        }
      }
    }
    rs->SetFilter(QString());
  });
  return rs;
}

int Scala(int v, double factor) { return static_cast<int>(std::lround(v * factor)); }

void ScalaMinimo(QWidget* w, double factor) {
  const QSize min = w->minimumSize();
  const QSize max = w->maximumSize();
  if (min.width() == 0 && min.height() == 0) return;
  const QSize nuovo(Scala(min.width(), factor), Scala(min.height(), factor));
  // A control of fixed size keeps its maximum in step with its minimum.
  QSize nuovoMax = max;
  if (max.width() < QWIDGETSIZE_MAX) nuovoMax.setWidth(std::max(nuovo.width(), Scala(max.width(), factor)));
  if (max.height() < QWIDGETSIZE_MAX) nuovoMax.setHeight(std::max(nuovo.height(), Scala(max.height(), factor)));
  if (nuovoMax != max) w->setMaximumSize(nuovoMax);
  w->setMinimumSize(nuovo);
}

// The given parts of the width and the height of the room the form's screen leaves.
QSize PartiDelloSchermo(const QWidget* form, double larghezza, double altezza) {
  QScreen* screen = form ? form->screen() : nullptr;
  if (!screen) screen = QGuiApplication::primaryScreen();
  if (!screen) return QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
  const QRect r = screen->availableGeometry();
  return QSize(static_cast<int>(r.width() * larghezza), static_cast<int>(r.height() * altezza));
}

// No control grows past 94% of the width and 80% of the height of the screen.
void LimitaControllo(QWidget* w, const QSize& tetto) {
  if (w->minimumWidth() > tetto.width() || w->minimumHeight() > tetto.height())
    w->setMinimumSize(w->minimumSize().boundedTo(tetto));
  if (w->maximumWidth() > tetto.width() || w->maximumHeight() > tetto.height())
    w->setMaximumSize(w->maximumSize().boundedTo(tetto));
  if (w->width() > tetto.width() || w->height() > tetto.height()) w->resize(w->size().boundedTo(tetto));
}

}  // namespace

QSize LimiteControllo(const QWidget* form) { return PartiDelloSchermo(form, 0.94, 0.8); }

QSize LimiteSchermo(const QWidget* form) { return PartiDelloSchermo(form, 0.95, 0.9); }

void ImpostaLayoutGrande(QWidget* form) {
  if (!form || gMagnify <= 16) return;
  Guard g(QString::fromLatin1(kModulo), QStringLiteral("ImpostaLayoutGrande"), Guard::Silent);
  const double size = kBaseFontSize * gMagnify / 16.0;
  const QList<QWidget*> controls = Controls(form);

  // Toolbars keep the font they have: it is made their own before the form's changes.
  for (QWidget* w : controls) {
    auto* tb = qobject_cast<QToolBar*>(w);
    if (!tb) continue;
    g([&] {
      QFont f = tb->font();
      f.setFamily(f.family());
      f.setPointSizeF(f.pointSizeF() > 0 ? f.pointSizeF() : kBaseFontSize);
      tb->setFont(f);
      tb->setIconSize(QSize(kLargeToolBarIcon, kLargeToolBarIcon));
    });
  }

  const auto grande = [&](QWidget* w) {
    g([&] {
      QFont f = w->font();
      f.setFamily(QStringLiteral("Verdana"));
      f.setPointSizeF(std::max(f.pointSizeF(), size));
      w->setFont(f);
    });
  };
  grande(form);
  for (QWidget* w : controls)
    if (!InsideToolBar(w, form)) grande(w);

  g([&] { FitForm(form); });
}

void Magnify(QWidget* form, double factor) {
  if (!form || !(factor > 0)) return;
  Guard g(QString::fromLatin1(kModulo), QStringLiteral("Magnify"), Guard::Silent);
  g([&] { LastTree() = AlberoContenitori(form, g); });

  // Toolbars stay out: their buttons keep the sizes the pictures gave them.
  const QSize tetto = LimiteControllo(form);
  for (QWidget* w : Controls(form)) {
    if (InsideToolBar(w, form)) continue;
    g([&] {
      if (factor != 1.0) ScalaMinimo(w, factor);
      LimitaControllo(w, tetto);
    });
  }
  if (factor == 1.0) {
    g([&] { FitForm(form); });
    return;
  }
  g([&] {
    const QSize s = QSize(Scala(form->width(), factor), Scala(form->height(), factor)).boundedTo(LimiteSchermo(form));
    form->resize(s);
  });
}

RecordsetPtr MagnifyTree() { return LastTree(); }

// ---------------------------------------------------------------- cleaner

void clsFormCleaner::SetForm(QWidget* form) {
  if (form_) form_->removeEventFilter(this);
  form_ = form;
  if (form) form->installEventFilter(this);
}

bool clsFormCleaner::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::Close || watched != form_) return QObject::eventFilter(watched, event);
  // The form decides first whether it closes; only a close it accepts empties it.
  QWidget* form = form_;
  static_cast<QObject*>(form)->event(event);
  if (event->isAccepted()) {
    form->removeEventFilter(this);
    form_ = nullptr;
    SvuotaImmagini(form);
  }
  return true;
}

}  // namespace prestkt
