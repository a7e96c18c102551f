#include "frmRepExcel.h"

#include <QApplication>
#include <QGridLayout>
#include <QHash>
#include <QLabel>
#include <functional>

#include "Guard.h"
#include "ModExcel.h"
#include "ModIcon.h"
#include "ModPrestKT.h"
#include "ProcedureUi.h"

namespace prestkt {

namespace {

const QString kForm = QStringLiteral("frmRepExcel");

// A lookup read once per key for the whole export: the same answers as asking
// the database for every row.
template <class K>
class Memo {
 public:
  explicit Memo(std::function<QVariant(const K&)> leggi) : leggi_(std::move(leggi)) {}
  QVariant operator()(const K& k) {
    auto it = valori_.constFind(k);
    if (it == valori_.constEnd()) it = valori_.insert(k, leggi_(k));
    return *it;
  }

 private:
  std::function<QVariant(const K&)> leggi_;
  QHash<K, QVariant> valori_;
};

RecordsetPtr TabellaVuota() {
  RecordsetPtr rs = Recordset::Create();
  const std::pair<const char*, std::pair<int, int>> campi[] = {
      {"Cliente", {adVarChar, 100}},     {"Data", {adDate, 0}},          {"Modello", {adVarChar, 255}},
      {"TipoMod", {adVarChar, 255}},     {"Disposizione", {adVarChar, 255}}, {"TipoDisp", {adVarChar, 100}},
      {"TipoPrest", {adVarChar, 3}},     {"Operatore", {adVarChar, 100}}, {"Fornitore", {adVarChar, 100}},
      {"Lavorazione", {adVarChar, 255}}, {"Minuti", {adBigInt, 0}},      {"CostoH", {adDouble, 0}},
      {"QtaExt", {adDouble, 0}},         {"CostoLavExt", {adDouble, 0}}};
  for (const auto& [nome, tipo] : campi) rs->Append(QString::fromLatin1(nome), tipo.first, tipo.second);
  rs->Open();
  return rs;
}

}  // namespace

frmRepExcel::frmRepExcel(QWidget* parent) : Scheda(parent, kForm) {
  CreaToolbar({{1, QStringLiteral("Esci"), QStringLiteral("application-exit")},
               {3, QStringLiteral("Esporta"), QStringLiteral("document-save")}});
  DTDal = Nome(new QDateEdit(this), QStringLiteral("DTDal"));
  DTAl = Nome(new QDateEdit(this), QStringLiteral("DTAl"));
  for (QDateEdit* d : {DTDal, DTAl}) {
    d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    d->setCalendarPopup(true);
  }
  CBCAnag = Nome(new QComboBox(this), QStringLiteral("CBCAnag"));
  CBOperatore = Nome(new QComboBox(this), QStringLiteral("CBOperatore"));
  for (QComboBox* c : {CBCAnag, CBOperatore}) c->setMinimumWidth(300);
  ProgressBar1 = Nome(new QProgressBar(this), QStringLiteral("ProgressBar1"));
  auto* g = new QGridLayout;
  g->addWidget(new QLabel(QStringLiteral("Dal:"), this), 0, 0);
  g->addWidget(DTDal, 0, 1);
  g->addWidget(new QLabel(QStringLiteral("Al:"), this), 0, 2);
  g->addWidget(DTAl, 0, 3);
  g->addWidget(new QLabel(QStringLiteral("Cliente"), this), 1, 0);
  g->addWidget(CBCAnag, 1, 1, 1, 3);
  g->addWidget(new QLabel(QStringLiteral("Operatore"), this), 2, 0);
  g->addWidget(CBOperatore, 2, 1, 1, 3);
  g->addWidget(ProgressBar1, 3, 0, 1, 4);
  corpo->addLayout(g);
  corpo->addStretch(1);
  mnuF = Menu(QStringLiteral("mnuF"), QStringLiteral("&File"));
  mnuPrn = Voce(mnuF, QStringLiteral("mnuPrn"), QStringLiteral("&Esporta"));
  mnuFE = Voce(mnuF, QStringLiteral("mnuFE"), QStringLiteral("&Esci"));
  connect(this, &Scheda::ToolbarClick, this, [this](int i) {
    if (i == 1) EseguiComando(0);
    if (i == 3) EseguiComando(1);
  });
  connect(mnuPrn, &QAction::triggered, this, [this] { EseguiComando(1); });
  connect(mnuFE, &QAction::triggered, this, [this] { EseguiComando(0); });
}

void frmRepExcel::Form_Load() {
  Guard g(kForm, QStringLiteral("Form_Load"));
  g([&] { CaricaOperatori(); });
  g([&] {
    TAnag = 1;
    CaricaComboAnag(CBCAnag, TAnag);
  });
  g([&] { ImpostaPeriodo(); });
  g([&] { Prepara(QStringLiteral("Report operatori")); });
}

void frmRepExcel::CaricaOperatori() {
  Guard g(kForm, QStringLiteral("CaricaOperatori"), Guard::Silent);
  g([&] {
    CaricaCombo(CBOperatore,
                QStringLiteral("SELECT CAnag AS CDip, RagSoc1 AS Nome, Eliminato FROM Anagrafica WHERE TAnag=10 AND "
                               "Eliminato=0 ORDER BY RagSoc1; "),
                0, 1, 0, QStringLiteral("{tutti gli operatori}"));
  });
}

void frmRepExcel::ImpostaPeriodo() {
  Guard g(kForm, QStringLiteral("ImpostaPeriodo"), Guard::Silent);
  g([&] {
    const auto periodo = PeriodoDelMese(Today().date());
    DTDal->setDate(periodo.first);
    DTAl->setDate(periodo.second);
  });
}

RecordsetPtr frmRepExcel::CreaTabella(const QDate& dal, const QDate& al, int operatore, int tAnag, int cAnag,
                                      const Progress& progress) {
  Guard g(kForm, QStringLiteral("CaricaDati"));
  RecordsetPtr t = TabellaVuota();
  const QDateTime inizio(dal, QTime(0, 0)), fine(al, QTime(0, 0));
  Memo<QPair<int, int>> anagrafica([](const QPair<int, int>& k) { return QVariant(DescrAnag(k.first, k.second)); });
  Memo<int> tipoMod([](const int& k) { return QVariant(DescrTipoPrj(k)); });
  Memo<int> tipoDisp([](const int& k) { return QVariant(DescrTipoDisp(k)); });
  Memo<int> prestazione([](const int& k) { return QVariant(DescrPrest(k)); });
  Memo<int> costoH([](const int& k) { return QVariant(CostoOraOperatore(k)); });
  const auto v = [](const RecordsetPtr& rs, const char* campo) { return rs->Value(QString::fromLatin1(campo)); };
  // The table's fields by their place, found once: the rows are many.
  QHash<const char*, int> posto;
  const auto indice = [&](const char* campo) {
    auto it = posto.constFind(campo);
    if (it == posto.constEnd()) it = posto.insert(campo, t->FieldIndex(QString::fromLatin1(campo)));
    return *it;
  };
  const auto scrivi = [&](const char* campo, auto&& valore) { g([&] { t->SetValue(indice(campo), valore()); }); };
  // The fields of the model and disposition, alike on both kinds of row.
  const auto progetto = [&](const RecordsetPtr& rs) {
    scrivi("Cliente", [&] { return anagrafica({CLng(v(rs, "TAnag")), CLng(v(rs, "CAnag"))}); });
    scrivi("Modello", [&] { return v(rs, "DProject"); });
    scrivi("TipoMod", [&] { return tipoMod(CLng(v(rs, "CPrjTipo"))); });
    scrivi("TipoDisp", [&] { return tipoDisp(CLng(v(rs, "CPrjDispTipo"))); });
  };

  // The operators' activities of the period.
  RecordsetPtr att;
  g([&] {
    QString sql = QStringLiteral(
                      "SELECT ActivitiesProd.CAttivita, ActivitiesProd.CProject, Projects.DProject, "
                      "ActivitiesProd.CDisp, ActivitiesProd.DtIni, ActivitiesProd.DtEnd, ActivitiesProd.CUtente, "
                      "ActivitiesProd.CPrestazione, ActivitiesProd.DtRealIni, ActivitiesProd.DtRealEnd, "
                      "ActivitiesProd.Stato, ActivitiesProd.TDocRif, ActivitiesProd.NDocRif, ActivitiesProd.CostoH, "
                      "Projects.TAnag, Projects.CAnag, Projects.CPrjTipo, ProjectsDisp.CPrjDispTipo FROM "
                      "(ActivitiesProd INNER JOIN Projects ON ActivitiesProd.CProject = Projects.CProject) INNER JOIN "
                      "ProjectsDisp ON (ActivitiesProd.CDisp = ProjectsDisp.CDisp) AND (ActivitiesProd.CProject = "
                      "ProjectsDisp.CProject) WHERE ActivitiesProd.DtIni Between ") +
                  DataSql(inizio) + QStringLiteral(" AND ") + DataSql(fine);
    if (operatore != 0) sql += QStringLiteral(" AND ActivitiesProd.CUtente=") + N(operatore);
    sql += QStringLiteral(" AND Projects.TAnag=") + N(tAnag);
    if (cAnag != 0) sql += QStringLiteral(" AND Projects.CAnag=") + N(cAnag);
    sql += QStringLiteral(" ORDER BY CAttivita ");
    ApriRecordset(att, sql, nullptr, dbOpenSnapshot);
    if (!att) Raise(err::ObjectNotSet);
  });
  if (att) {
    const int totale = att->RecordCount();
    int fatte = 0;
    for (; !att->Eof(); att->MoveNext()) {
      g([&] { t->AddNew(); });
      progetto(att);
      scrivi("Data", [&] { return v(att, "DtIni"); });
      scrivi("TipoPrest", [] { return QVariant(QStringLiteral("INT")); });
      scrivi("Operatore", [&] { return anagrafica({10, CLng(v(att, "CUtente"))}); });
      scrivi("Fornitore", [] { return QVariant(QStringLiteral("Interno")); });
      scrivi("Lavorazione", [&] { return prestazione(CLng(v(att, "CPrestazione"))); });
      scrivi("Minuti", [&] { return QVariant(MinutiTra(v(att, "DtIni"), v(att, "DtEnd"))); });
      scrivi("CostoH", [&] { return costoH(CLng(v(att, "CUtente"))); });
      scrivi("QtaExt", [] { return QVariant(0.0); });
      scrivi("CostoLavExt", [] { return QVariant(0.0); });
      g([&] { t->Update(); });
      if (progress && (++fatte % 1000 == 0 || fatte == totale)) progress(fatte, totale);
    }
  }
  // A supplier has no operator: with one chosen the table holds the activities alone.
  if (operatore != 0) return t;

  // The supplier order lines of the models, up to a year before the period,
  // and the deliveries against each of them within it.
  RecordsetPtr ordini;
  g([&] {
    QString sql =
        QStringLiteral(
            "SELECT [Doc:Forniture].DataDoc, Projects.DProject, ProjectsDocDett.TipoDoc, ProjectsDocDett.NDoc, "
            "ProjectsDocDett.Scheda, ProjectsDocDett.Riga, ProjectsDocDett.RigaD, ProjectsDocDett.CProject, "
            "ProjectsDocDett.CDisp, ProjectsDocDett.Ctipo, ProjectsDocDett.CArt, ProjectsDocDett.CVar, "
            "ProjectsDocDett.CodTesto, ProjectsDocDett.CodForn, ProjectsDocDett.DArt, ProjectsDocDett.NotaArt, "
            "ProjectsDocDett.Qta, ProjectsDocDett.CCaus, ProjectsDocDett.Importo, ProjectsDocDett.CIva, "
            "Projects.TAnag, Projects.CAnag, Projects.CPrjTipo, ProjectsDisp.CPrjDispTipo, [Doc:Forniture].TAnag "
            "AS TAnagF, [Doc:Forniture].CAnag AS CAnagF FROM ((ProjectsDocDett INNER JOIN Projects ON "
            "ProjectsDocDett.CProject = Projects.CProject) INNER JOIN ProjectsDisp ON (ProjectsDocDett.CDisp = "
            "ProjectsDisp.CDisp) AND (ProjectsDocDett.CProject = ProjectsDisp.CProject)) INNER JOIN "
            "[Doc:Forniture] ON (ProjectsDocDett.NDoc = [Doc:Forniture].NDoc) AND (ProjectsDocDett.TipoDoc = "
            "[Doc:Forniture].TipoDoc) WHERE [Doc:Forniture].DataDoc Between ") +
        DataSql(inizio.addDays(-365)) + QStringLiteral(" AND ") + DataSql(fine) + QStringLiteral(" AND Projects.TAnag=") +
        N(tAnag);
    if (cAnag != 0) sql += QStringLiteral(" AND Projects.CAnag=") + N(cAnag);
    sql += QStringLiteral(" AND ProjectsDocDett.TipoDoc=12 ORDER BY DataDoc ");
    ApriRecordset(ordini, sql, nullptr, dbOpenSnapshot);
    if (!ordini) Raise(err::ObjectNotSet);
  });
  if (!ordini) return t;
  for (; !ordini->Eof(); ordini->MoveNext()) {
    RecordsetPtr consegne;
    g([&] {
      ApriRecordset(
          consegne,
          QStringLiteral("SELECT [Doc:FornitureDett].TipoDoc, [Doc:FornitureDett].Qta, [Doc:FornitureDett].Importo, "
                         "[Doc:FornitureDett].TipoDocRif, [Doc:FornitureDett].NDocRif, [Doc:FornitureDett].RigaRif, "
                         "[Doc:Forniture].DataDoc FROM [Doc:Forniture] INNER JOIN [Doc:FornitureDett] ON "
                         "([Doc:Forniture].NDoc = [Doc:FornitureDett].NDoc) AND ([Doc:Forniture].TipoDoc = "
                         "[Doc:FornitureDett].TipoDoc) WHERE ((([Doc:FornitureDett].TipoDoc)=15) AND "
                         "(([Doc:FornitureDett].TipoDocRif)=12) AND (([Doc:FornitureDett].NDocRif)=") +
              CStr(v(ordini, "NDoc")) + QStringLiteral(") AND (([Doc:FornitureDett].RigaRif)=") +
              CStr(v(ordini, "Riga")) + QStringLiteral(") AND (([Doc:Forniture].DataDoc) Between ") + DataSql(inizio) +
              QStringLiteral(" And ") + DataSql(fine) + QStringLiteral(")); "),
          nullptr, dbOpenSnapshot);
      if (!consegne) Raise(err::ObjectNotSet);
    });
    if (!consegne) continue;
    for (; !consegne->Eof(); consegne->MoveNext()) {
      g([&] { t->AddNew(); });
      progetto(ordini);
      scrivi("Data", [&] { return v(consegne, "DataDoc"); });
      scrivi("TipoPrest", [] { return QVariant(QStringLiteral("EXT")); });
      scrivi("Operatore", [] { return QVariant(QStringLiteral("Fornitore")); });
      scrivi("Fornitore", [&] { return anagrafica({CLng(v(ordini, "TAnagF")), CLng(v(ordini, "CAnagF"))}); });
      scrivi("Lavorazione", [&] { return QVariant(NullToStr(v(ordini, "NotaArt"))); });
      scrivi("Minuti", [] { return QVariant(qlonglong(0)); });
      scrivi("CostoH", [] { return QVariant(0.0); });
      scrivi("QtaExt", [&] { return QVariant(Round(CDbl(v(consegne, "Qta")), 2)); });
      scrivi("CostoLavExt", [&] { return QVariant(Round(CDbl(v(consegne, "Importo")), 5)); });
      g([&] { t->Update(); });
    }
  }
  return t;
}

void frmRepExcel::CaricaDati() {
  Guard g(kForm, QStringLiteral("CaricaDati"));
  // A cancelled dialog ends the export quietly.
  const QString filtro = VersioneExcel() < 12 ? QStringLiteral("File xls (*.xls)|*.xls")
                                              : QStringLiteral("File xls 2007(*.xlsx)|*.xlsx");
  const QString file = Messages().SaveFileName(windowTitle(), filtro, QString());
  if (file.isEmpty()) return;
  NomeFile = file;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  g([&] { ProgressBar1->setValue(0); });
  const Progress avanza = [this](int fatte, int totale) {
    ProgressBar1->setMaximum(std::max(totale, 1));
    ProgressBar1->setValue(fatte);
  };
  RecordsetPtr t = CreaTabella(DTDal->date(), DTAl->date(), GetCBValue(CBOperatore), TAnag, GetCBValue(CBCAnag), avanza);
  g([&] { ProgressBar1->setValue(ProgressBar1->maximum()); });
  g([&] { ADOtoXLS(NomeFile, t, avanza); });
  g([&] { GShell(NomeFile, 1, {}, {}, QStringLiteral("open")); });
  QApplication::restoreOverrideCursor();
}

void frmRepExcel::EseguiComando(int n) {
  if (n == 0) close();
  else if (n == 1) CaricaDati();
}

}  // namespace prestkt
