#pragma once
// The large layout of the screens. Screens are laid out by Qt layouts: making
// a screen larger means a larger font, larger toolbar pictures, larger minimum
// sizes and a window that makes room for them, always within the screen.
// Nothing here fails its caller: a control that lacks something is skipped.
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QWidget>

#include "Recordset.h"

namespace prestkt {

// The largest a form may become: 95% of the width and 90% of the height of the
// room its screen leaves.
QSize LimiteSchermo(const QWidget* form);

// With gMagnify above 16: Verdana at 8.25pt scaled by gMagnify/16 (never
// smaller than the font a control has) for the form and every control outside
// the toolbars, toolbar pictures of 24 pixels, and a form at least as large as
// its layout asks, within the screen.
void ImpostaLayoutGrande(QWidget* form);

// The largest a control may become: 94% of the width and 80% of the height
// of the room its screen leaves.
QSize LimiteControllo(const QWidget* form);

// Scales a form. Factor 1 keeps every size and lets the form grow as far as
// its layout asks (a toolbar that became taller); another factor scales the
// form's size and each control's minimum size. Toolbars stay out of the
// scaling. The form stays within the screen, and no control grows past
// LimiteControllo. The tree of the form's containers is recorded on the way.
void Magnify(QWidget* form, double factor);

// The containers of the form of the last Magnify, one row each: Level (the
// form 0), hWnd (an id per widget), Idx (the form 0, then in the order found),
// IsContainer, IdxF and hWndF (the container holding it; Null for the form).
RecordsetPtr MagnifyTree();

// Watches a form; when the form accepts to close, its image lists are emptied
// (SvuotaImmagini) and the form is let go.
class clsFormCleaner : public QObject {
  Q_OBJECT
 public:
  explicit clsFormCleaner(QObject* parent = nullptr) : QObject(parent) {}
  void SetForm(QWidget* form);
  QWidget* Form() const { return form_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QPointer<QWidget> form_;
};

}  // namespace prestkt
