#include "ProcedureUi.h"

#include <QApplication>
#include <memory>
#include <QFileDialog>
#include <QGuiApplication>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QTextCursor>
#include <QTextDocument>

#include "ModPrestKT.h"
#include "Procedure.h"

namespace prestkt {

namespace {

// "Documenti|*.doc|Tutti i file (*.*)|*.*" into Qt's "Documenti (*.doc);;...".
QString QtFilter(const QString& filter) {
  const QStringList parts = filter.split(QLatin1Char('|'));
  QStringList out;
  for (int i = 0; i + 1 < parts.size(); i += 2) {
    QString descr = parts.at(i);
    const QString pattern = QString(parts.at(i + 1)).replace(QLatin1Char(';'), QLatin1Char(' '));
    if (!descr.contains(QLatin1Char('('))) descr += QStringLiteral(" (") + pattern + QLatin1Char(')');
    else descr = descr.left(descr.indexOf(QLatin1Char('('))).trimmed() + QStringLiteral(" (") + pattern + QLatin1Char(')');
    out << descr;
  }
  return out.join(QStringLiteral(";;"));
}

class QtMessages : public MessageService {
 public:
  int MsgBox(const QString& prompt, int buttons, const QString& title) override {
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(title);
    box.setText(prompt);
    switch (buttons & 0x70) {
      case vbCritical: box.setIcon(QMessageBox::Critical); break;
      case vbQuestion: box.setIcon(QMessageBox::Question); break;
      case vbExclamation: box.setIcon(QMessageBox::Warning); break;
      case vbInformation: box.setIcon(QMessageBox::Information); break;
      default: box.setIcon(QMessageBox::NoIcon); break;
    }
    struct B {
      int result;
      const char* text;
      QMessageBox::ButtonRole role;
    };
    std::vector<B> list;
    switch (buttons & 7) {
      case vbOKCancel: list = {{vbOK, "OK", QMessageBox::AcceptRole}, {vbCancel, "Annulla", QMessageBox::RejectRole}}; break;
      case vbYesNoCancel:
        list = {{vbYes, "Sì", QMessageBox::YesRole}, {vbNo, "No", QMessageBox::NoRole},
                {vbCancel, "Annulla", QMessageBox::RejectRole}};
        break;
      case vbYesNo: list = {{vbYes, "Sì", QMessageBox::YesRole}, {vbNo, "No", QMessageBox::NoRole}}; break;
      default: list = {{vbOK, "OK", QMessageBox::AcceptRole}}; break;
    }
    std::vector<QPushButton*> pushed;
    for (const B& b : list) pushed.push_back(box.addButton(QString::fromUtf8(b.text), b.role));
    const int def = (buttons & vbDefaultButton2) && pushed.size() > 1 ? 1 : 0;
    box.setDefaultButton(pushed[def]);
    box.setEscapeButton(pushed.back());
    box.exec();
    for (size_t i = 0; i < pushed.size(); ++i)
      if (box.clickedButton() == pushed[i]) return list[i].result;
    return list.back().result;
  }
  QString InputBox(const QString& prompt, const QString& title, const QString& value) override {
    bool ok = false;
    const QString text = QInputDialog::getText(QApplication::activeWindow(), title, prompt, QLineEdit::Normal, value, &ok);
    return ok ? text : QString();
  }
  QString OpenFileName(const QString& title, const QString& filter, const QString& dir) override {
    return QFileDialog::getOpenFileName(QApplication::activeWindow(), title, dir, QtFilter(filter));
  }
  QString SaveFileName(const QString& title, const QString& filter, const QString& dir) override {
    return QFileDialog::getSaveFileName(QApplication::activeWindow(), title, dir, QtFilter(filter), nullptr,
                                        QFileDialog::DontConfirmOverwrite);
  }
};

}  // namespace

void InstallaMessaggiQt() { SetMessageService(std::make_shared<QtMessages>()); }

int ItemData(QComboBox* combo, int index) {
  const QVariant v = combo->itemData(index);
  return v.isValid() ? v.toInt() : 0;
}

void CaricaCombo(QComboBox* combo, const Sql& sql, int colCodice, int colTesto, const QVariant& valoreSel,
                 const QVariant& primaVoce, bool nonSvuotare, int maiuscole) {
  Guard g(QStringLiteral("Procedure"), QStringLiteral("CaricaCombo"));
  // A Qt combo selects its first entry by itself; the system's combo stays
  // without selection until one is chosen, and filling raises no click.
  QSignalBlocker blocca(combo);
  if (!nonSvuotare) g([&] { combo->clear(); });
  const int prima = combo->currentIndex();
  RecordsetPtr rs;
  g([&] { ApriRecordset(rs, sql, nullptr, dbOpenDynaset); });
  g([&] {
    if (!IsNull(primaVoce) && !primaVoce.toString().isEmpty()) combo->addItem(primaVoce.toString(), 0);
  });
  g([&] {
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      QString testo = NullToStr(rs->Value(colTesto)).trimmed();
      if (maiuscole == 1) testo = testo.toUpper();
      if (maiuscole == 2) testo = testo.toLower();
      if (colCodice != -1)
        combo->addItem(testo, CLng(NullToZero(rs->Value(colCodice))));
      else
        combo->addItem(testo);
    }
  });
  g([&] { rs.reset(); });
  combo->setCurrentIndex(prima);
  blocca.unblock();
  g([&] {
    if (combo->count() > 0 && !IsNull(valoreSel)) {
      const int wanted = CLng(valoreSel);
      for (int i = 0; i < combo->count(); ++i)
        if (ItemData(combo, i) == wanted) {
          combo->setCurrentIndex(i);
          break;
        }
    }
  });
}

int GetCBValue(QComboBox* combo) {
  Guard g(QStringLiteral("Procedure"), QStringLiteral("GetCBValue"));
  int v = 0;
  g([&] {
    if (!combo) Raise(err::ObjectNotSet);
    if (combo->currentIndex() >= 0) v = ItemData(combo, combo->currentIndex());
  });
  return v;
}

void SetCBValue(QComboBox* combo, int valore, int def) {
  if (combo->currentIndex() >= 0 && ItemData(combo, combo->currentIndex()) == valore) return;
  for (int i = 0; i < combo->count(); ++i) {
    if (ItemData(combo, i) == valore) {
      combo->setCurrentIndex(i);
      return;
    }
  }
  combo->setCurrentIndex(def < combo->count() ? def : -1);
}

void CaricaComboTAnag(QComboBox* combo, int tAnag) {
  Guard g(QStringLiteral("ModPrestKT"), QStringLiteral("CaricaComboTAnag"), Guard::Silent);
  g([&] {
    CaricaCombo(combo, QStringLiteral("SELECT AnagTipo.TAnag, AnagTipo.Descrizione From AnagTipo WHERE AnagTipo.TAnag=") +
                           QString::number(tAnag),
                0, 1);
  });
  g([&] { SetCBValue(combo, 0, 0); });
}

void CaricaComboAnag(QComboBox* combo, int tAnag) {
  Guard g(QStringLiteral("ModPrestKT"), QStringLiteral("CaricaComboAnag"), Guard::Silent);
  if (tAnag == 0) {
    gCAnag = 0;
    g([&] {
      {
        const QSignalBlocker blocca(combo);
        combo->clear();
        combo->addItem(QStringLiteral("<- scegli tipologia anagrafica"), 0);
        combo->setCurrentIndex(-1);
      }
      combo->setCurrentIndex(0);
    });
  } else {
    g([&] {
      CaricaCombo(combo,
                  QStringLiteral("SELECT Anagrafica.TAnag, Anagrafica.CAnag, Anagrafica.RagSoc1 From Anagrafica "
                                 "Where (((Anagrafica.TAnag) = ") +
                      QString::number(tAnag) + QStringLiteral(") AND Eliminato=0) ORDER BY Anagrafica.RagSoc1;"),
                  1, 2, 0, QStringLiteral("{scegli anagrafica}"));
    });
  }
  g([&] { combo->setEnabled(tAnag > 0); });
}

void CaricaComboTipoPrj(QComboBox* combo) {
  Guard g(QStringLiteral("ModPrestKT"), QStringLiteral("CaricaComboTipoPrj"), Guard::Silent);
  g([&] {
    CaricaCombo(combo, QStringLiteral("SELECT CPrjTipo, DPrjTipo, Sigla FROM ProjectsTipo ORDER BY DPrjTipo; "), 0, 1,
                0, QStringLiteral("{tutte}"));
  });
}

void CaricaComboTipoDisp(QComboBox* combo) {
  Guard g(QStringLiteral("ModPrestKT"), QStringLiteral("CaricaComboTipoDisp"), Guard::Silent);
  g([&] {
    CaricaCombo(combo,
                QStringLiteral("SELECT CPrjDispTipo, DPrjDispTipo, Sigla FROM ProjectsDispTipo ORDER BY DPrjDispTipo; "),
                0, 1, 0, QStringLiteral("{tutte}"));
  });
}

void LimitaTesto(QWidget* campo, int massimo) {
  if (massimo <= 0) return;
  if (auto* riga = qobject_cast<QLineEdit*>(campo)) {
    riga->setMaxLength(massimo);
    return;
  }
  auto* testo = qobject_cast<QPlainTextEdit*>(campo);
  if (!testo) return;
  // The excess goes from the end of what was just added, so that the text
  // already there stays as it was. The cut waits for the change to end.
  auto aggiunta = std::make_shared<std::pair<int, int>>(0, 0);  // where, how many
  QObject::connect(testo->document(), &QTextDocument::contentsChange, testo,
                   [aggiunta](int posizione, int, int aggiunti) { *aggiunta = {posizione, aggiunti}; });
  QObject::connect(testo, &QPlainTextEdit::textChanged, testo, [testo, massimo, aggiunta] {
    QTextDocument* doc = testo->document();
    const int eccesso = doc->characterCount() - 1 - massimo;
    if (eccesso <= 0) return;
    const auto [posizione, aggiunti] = *aggiunta;
    const int fine = posizione + aggiunti;
    QTextCursor c(doc);
    if (aggiunti >= eccesso && fine <= doc->characterCount() - 1) {
      c.setPosition(fine - eccesso);
      c.setPosition(fine, QTextCursor::KeepAnchor);
    } else {
      c.setPosition(massimo);
      c.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    }
    c.removeSelectedText();
  });
}

void CentraForm(QWidget* form) {
  const QScreen* screen = form->screen() ? form->screen() : QGuiApplication::primaryScreen();
  if (screen) {
    const QRect s = screen->availableGeometry();
    const QSize f = form->frameGeometry().size();
    form->move(s.left() + (s.width() - f.width()) / 2, s.top() + (s.height() - f.height()) / 2);
  }
  if (!gIcona.isNull()) form->setWindowIcon(gIcona);
}

double MargineLargo(QWidget* form) { return form->frameGeometry().width() - form->width(); }
double MargineAlto(QWidget* form) { return form->frameGeometry().height() - form->height(); }

}  // namespace prestkt
