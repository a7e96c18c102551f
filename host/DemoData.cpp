#include "DemoData.h"

#include <QStringList>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <map>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include "Database.h"
#include "Schema.h"
#include "Vb.h"

namespace prestkt {

namespace {

// ------------------------------------------------------------------ chance

// One seed for all the data: the same day always gives the same database.
constexpr std::uint32_t kSeme = 0x50524B54u;

// The random source. The draws are made here rather than with the standard
// distributions, whose results differ between libraries.
class Caso {
 public:
  explicit Caso(std::uint32_t seme) : g_(seme) {}
  int Int(int a, int b) {  // in [a, b]
    return a + static_cast<int>(g_() % static_cast<std::uint32_t>(b - a + 1));
  }
  double Unif() { return g_() / 4294967296.0; }  // in [0, 1)
  double Dbl(double a, double b) { return a + (b - a) * Unif(); }
  bool Prob(double p) { return Unif() < p; }
  double Normale() {
    const double u = 1.0 - Unif(), v = Unif();
    return std::sqrt(-2.0 * std::log(u)) * std::cos(6.283185307179586 * v);
  }
  template <class T>
  const T& Uno(const std::vector<T>& v) {
    return v[static_cast<size_t>(Int(0, static_cast<int>(v.size()) - 1))];
  }
  // Amounts in cents, as prices are written.
  double Prezzo(double a, double b) { return Round(Dbl(a, b), 2); }

 private:
  std::mt19937 g_;
};

// ------------------------------------------------------------------ calendar

QDate Pasqua(int anno) {
  const int a = anno % 19, b = anno / 100, c = anno % 100, d = b / 4, e = b % 4;
  const int f = (b + 8) / 25, g = (b - f + 1) / 3, h = (19 * a + b - d - g + 15) % 30;
  const int i = c / 4, k = c % 4, l = (32 + 2 * e + 2 * i - h - k) % 7,
            m = (a + 11 * h + 22 * l) / 451;
  const int mese = (h + l - 7 * m + 114) / 31, giorno = (h + l - 7 * m + 114) % 31 + 1;
  return QDate(anno, mese, giorno);
}

bool Festivo(const QDate& d) {
  if (d.dayOfWeek() >= 6) return true;
  static const int fisse[][2] = {{1, 1},  {1, 6},  {4, 25}, {5, 1},   {6, 2},
                                 {8, 15}, {11, 1}, {12, 8}, {12, 25}, {12, 26}};
  for (const auto& f : fisse)
    if (d.month() == f[0] && d.day() == f[1]) return true;
  return d == Pasqua(d.year()).addDays(1);
}

QVariant Dt(const QDate& d) {
  return d.isValid() ? QVariant(QDateTime(d, QTime(0, 0))) : QVariant();
}
QVariant DtOra(const QDate& d, int minuti) {
  return QVariant(QDateTime(d, QTime(0, 0)).addSecs(static_cast<qint64>(minuti) * 60));
}

// The working days of a span, addressed by their index.
class Calendario {
 public:
  Calendario(const QDate& da, const QDate& a) {
    for (QDate d = da; d <= a; d = d.addDays(1))
      if (!Festivo(d)) {
        giorni_.push_back(d);
        testi_.push_back(d.toString(QStringLiteral("yyyy-MM-dd ")));
      }
  }
  const QDate& Giorno(int i) const { return giorni_[static_cast<size_t>(i)]; }
  // The moment minuti after the midnight of a working day. The large database
  // gives it in its stored text: building a local date and time for each of
  // millions of values costs more than the inserts themselves. Work never
  // crosses a change of summer time, which falls on Sundays, so both forms agree.
  QVariant Momento(int i, int minuti, bool testo) const {
    if (!testo) return DtOra(Giorno(i), minuti);
    const int h = minuti / 60, m = minuti % 60;
    const QChar ora[] = {QLatin1Char('0' + h / 10), QLatin1Char('0' + h % 10), QLatin1Char(':'),
                         QLatin1Char('0' + m / 10), QLatin1Char('0' + m % 10), QLatin1Char(':'),
                         QLatin1Char('0'),          QLatin1Char('0')};
    QString s = testi_[static_cast<size_t>(i)];
    s.append(ora, 8);
    return QVariant(s);
  }
  int Primo(const QDate& d) const {  // the first working day on or after d
    return static_cast<int>(std::lower_bound(giorni_.begin(), giorni_.end(), d) - giorni_.begin());
  }
  int Ultimo(const QDate& d) const {  // the last working day on or before d
    return static_cast<int>(std::upper_bound(giorni_.begin(), giorni_.end(), d) - giorni_.begin()) -
           1;
  }

 private:
  std::vector<QDate> giorni_;
  std::vector<QString> testi_;  // "yyyy-MM-dd " of each day
};

QVariant Testo(const QString& s) {
  return s.isEmpty() ? QVariant() : QVariant(s);
}

// ------------------------------------------------------------------ writing

QString Elenco(const QStringList& nomi) {
  return nomi.join(QStringLiteral(", "));
}

// One row through a statement with bound values.
void Inserisci(Database& db, const QString& tabella, const QStringList& colonne,
               const Row& valori) {
  Sql sql(QStringLiteral("INSERT INTO %1 (%2) VALUES (").arg(tabella, Elenco(colonne)));
  for (size_t i = 0; i < valori.size(); ++i) {
    if (i > 0) sql += Sql(", ");
    sql += Sql::Param(valori[i]);
  }
  db.Execute(sql + Sql(")"));
}

using Campi = std::initializer_list<std::pair<const char*, QVariant>>;
void Inserisci(Database& db, const char* tabella, Campi campi) {
  QStringList colonne;
  Row valori;
  for (const auto& [nome, valore] : campi) {
    colonne << QString::fromLatin1(nome);
    valori.push_back(valore);
  }
  Inserisci(db, QString::fromLatin1(tabella), colonne, valori);
}

// ------------------------------------------------------------------ reference tables

struct Ditta {
  const char* ragSoc;
  const char* indirizzo;
  const char* cap;
  const char* citta;
  const char* prov;
  const char* prefisso;
  const char* dominio;
};

const Ditta kClienti[] = {
    {"Officina Meccanica Rossi S.r.l.", "Via dell'Industria 12", "25030", "Castel Mella", "BS",
     "030", "officinarossi.it"},
    {"Carrozzeria Bianchi & Figli", "Via Roma 45", "20851", "Lissone", "MB", "039",
     "carrozzeriabianchi.it"},
    {"Plastiche Brianza S.p.A.", "Via Valassina 210", "20833", "Giussano", "MB", "0362",
     "plastichebrianza.it"},
    {"Meccanica Ferraresi S.n.c.", "Via Emilia Est 88", "41122", "Modena", "MO", "059",
     "meccanicaferraresi.it"},
    {"Stampaggio Veneto S.r.l.", "Via Postumia 17", "31050", "Ponzano Veneto", "TV", "0422",
     "stampaggioveneto.it"},
    {"Elettromeccanica Colombo S.r.l.", "Via Garibaldi 3", "22063", "Cantù", "CO", "031",
     "colombo-em.it"},
    {"Fonderia Bresciana S.p.A.", "Via Brescia 120", "25062", "Concesio", "BS", "030",
     "fonderiabresciana.it"},
    {"Idraulica Moretti S.r.l.", "Viale Lombardia 56", "24040", "Comun Nuovo", "BG", "035",
     "idraulicamoretti.it"},
    {"Tecnoplast Marchetti S.r.l.", "Via dell'Artigianato 9", "60035", "Jesi", "AN", "0731",
     "tecnoplast.it"},
    {"Costruzioni Meccaniche Galli", "Via Piave 27", "10036", "Settimo Torinese", "TO", "011",
     "cmgalli.it"},
    {"Automotive Parts Ricci S.r.l.", "Strada Statale 31 n. 45", "15033", "Casale Monferrato", "AL",
     "0142", "ricciautoparts.it"},
    {"Lavorazioni Lamiera Conti S.a.s.", "Via Matteotti 140", "40017", "San Giovanni in Persiceto",
     "BO", "051", "contilamiera.it"},
};

const Ditta kFornitori[] = {
    {"Zincatura Lombarda S.p.A.", "Via Milano 230", "20021", "Bollate", "MI", "02",
     "zincaturalombarda.it"},
    {"Verniciature Emiliane", "Via Nobel 11", "42124", "Reggio Emilia", "RE", "0522",
     "verniciatureemiliane.it"},
    {"Trattamenti Termici Bergamaschi S.r.l.", "Via Bergamo 60", "24035", "Curno", "BG", "035",
     "ttbergamo.it"},
    {"Taglio Laser Veneto S.r.l.", "Via Austria 19", "35127", "Padova", "PD", "049",
     "tagliolaserveneto.it"},
    {"Rettifiche Varesine S.n.c.", "Via Sempione 85", "21013", "Gallarate", "VA", "0331",
     "rettifichevaresine.it"},
    {"Minuterie Metalliche Fontana", "Via Vittorio Veneto 14", "37012", "Bussolengo", "VR", "045",
     "minuteriefontana.it"},
};

struct DatiOperatore {
  const char* nome;
  double costoH;
  bool eliminato;
};

const DatiOperatore kOperatori[] = {
    {"Mario Rossi", 28.50, false},
    {"Luca Bianchi", 24.00, false},
    {"Giuseppe Verdi", 31.50, false},
    {"Andrea Colombo", 22.00, false},
    {"Francesco Ferrari", 26.50, false},
    {"Paolo Esposito", 19.50, true},  // left the company; his activities stay
    {"Marco Romano", 0.0, false},     // apprentice: no hourly cost set
    {"Stefano Galli", 18.00, false},
};

// An Italian VAT number: seven digits of the firm, three of the office, and the check digit.
QString PartitaIva(int ditta, int ufficio) {
  QString s = QStringLiteral("%1%2")
                  .arg(ditta % 10000000, 7, 10, QLatin1Char('0'))
                  .arg(ufficio % 1000, 3, 10, QLatin1Char('0'));
  int somma = 0;
  for (int i = 0; i < 10; ++i) {
    int c = s.at(i).digitValue();
    if (i % 2 == 1) {
      c *= 2;
      if (c > 9) c -= 9;
    }
    somma += c;
  }
  return s + QString::number((10 - somma % 10) % 10);
}

struct TipoDisp {
  int codice = 0;
  int tipoFatt = 0;
  bool forfait = false;
  std::vector<int> prestazioni;
};

struct Operatore {
  int cAnag = 0;
  double costoH = 0;
  bool eliminato = false;
};

constexpr int kTipoStampo = 1, kTipoAttrezzatura = 2, kTipoPrototipo = 3, kTipoManutenzione = 4,
              kTipoForfait = 5;
constexpr int kDispOraria = 1, kDispPezzo = 2, kDispInterna = 3, kDispForfait = 4,
              kDispProgetto = 5;
constexpr int kCausLavorazione = 1, kCausVendita = 2, kCausOmaggio = 3;
constexpr int kIva22 = 2;

// What the generators need to know of the reference tables.
struct Riferimenti {
  std::vector<int> clienti;
  std::vector<int> fornitori;
  std::vector<Operatore> operatori;
  std::map<int, TipoDisp> tipiDisp;
  std::map<int, std::vector<int>> dispPerTipo;  // CPrjTipo -> the disposition types of its models
  std::vector<int> tipiModello;                 // the ordinary model types
  // (CPrjTipo, CPrjDispTipo, CAnag) -> TarH; CAnag 0 for the general tariff.
  std::map<std::tuple<int, int, int>, double> tariffe;

  const TipoDisp& Disp(int codice) const { return tipiDisp.at(codice); }
  double TarH(int tipo, int disp, int cliente) const {
    auto it = tariffe.find({tipo, disp, cliente});
    if (it == tariffe.end()) it = tariffe.find({tipo, disp, 0});
    return it == tariffe.end() ? 0.0 : it->second;
  }
};

Riferimenti CreaRiferimenti(Database& db) {
  Riferimenti ref;
  Caso caso(kSeme ^ 0x7A11u);

  Inserisci(db, "AnagTipo", {{"TAnag", 1}, {"Descrizione", "Clienti"}});
  Inserisci(db, "AnagTipo", {{"TAnag", 2}, {"Descrizione", "Fornitori"}});
  Inserisci(db, "AnagTipo", {{"TAnag", 10}, {"Descrizione", "Dipendenti"}});

  auto ditte = [&](int tAnag, const Ditta* elenco, int quante, std::vector<int>& codici) {
    for (int i = 0; i < quante; ++i) {
      const Ditta& d = elenco[i];
      const int cAnag = i + 1;
      const QString telefono = QStringLiteral("%1 %2")
                                   .arg(QString::fromLatin1(d.prefisso))
                                   .arg(caso.Int(200000, 999999));
      Inserisci(db, "Anagrafica",
                {{"TAnag", tAnag},
                 {"CAnag", cAnag},
                 {"RagSoc1", QString::fromUtf8(d.ragSoc)},
                 {"Indirizzo", QString::fromUtf8(d.indirizzo)},
                 {"Cap", QString::fromLatin1(d.cap)},
                 {"Citta", QString::fromUtf8(d.citta)},
                 {"Prov", QString::fromLatin1(d.prov)},
                 {"PIva", PartitaIva(caso.Int(1000000, 9999999), caso.Int(1, 999))},
                 {"Telefono", telefono},
                 {"Email", QStringLiteral("info@") + QString::fromLatin1(d.dominio)},
                 {"CostoH", 0.0},
                 {"Eliminato", 0}});
      codici.push_back(cAnag);
    }
  };
  ditte(1, kClienti, static_cast<int>(std::size(kClienti)), ref.clienti);
  ditte(2, kFornitori, static_cast<int>(std::size(kFornitori)), ref.fornitori);

  for (int i = 0; i < static_cast<int>(std::size(kOperatori)); ++i) {
    const DatiOperatore& o = kOperatori[i];
    Inserisci(db, "Anagrafica",
              {{"TAnag", 10},
               {"CAnag", i + 1},
               {"RagSoc1", QString::fromLatin1(o.nome)},
               {"Telefono",
                QStringLiteral("3%1 %2").arg(caso.Int(20, 49)).arg(caso.Int(1000000, 9999999))},
               {"CostoH", o.costoH},
               {"Eliminato", o.eliminato ? -1 : 0}});
    ref.operatori.push_back({i + 1, o.costoH, o.eliminato});
  }

  // Service kinds.
  const char* prestazioni[][2] = {{"Saldatura", "SAL"},         {"Tornitura", "TOR"},
                                  {"Fresatura", "FRE"},         {"Verniciatura", "VER"},
                                  {"Montaggio", "MON"},         {"Collaudo", "COL"},
                                  {"Progettazione CAD", "CAD"}, {"Lucidatura", "LUC"},
                                  {"Taglio laser", "LAS"},      {"Imballaggio", "IMB"}};
  for (int i = 0; i < static_cast<int>(std::size(prestazioni)); ++i)
    Inserisci(db, "TabGen",
              {{"CTipTabGen", 12},
               {"CTabGen", i + 1},
               {"DTabGen", QString::fromLatin1(prestazioni[i][0])},
               {"Sigla", QString::fromLatin1(prestazioni[i][1])}});

  // Causals; Bool8 marks the billable ones.
  struct {
    const char* descr;
    const char* sigla;
    int fatturabile;
  } causali[] = {{"C/Lavorazione", "CL", -1},
                 {"Vendita", "VE", -1},
                 {"Omaggio", "OM", 0},
                 {"Reso", "RE", 0},
                 {"Riparazione in garanzia", "GA", 0}};
  for (int i = 0; i < static_cast<int>(std::size(causali)); ++i)
    Inserisci(db, "TabGen",
              {{"CTipTabGen", 1},
               {"CTabGen", i + 1},
               {"DTabGen", QString::fromLatin1(causali[i].descr)},
               {"Sigla", QString::fromLatin1(causali[i].sigla)},
               {"Bool8", causali[i].fatturabile}});

  // VAT codes: Num1 the rate, Bool3 the exempt one.
  struct {
    const char* descr;
    const char* sigla;
    double aliquota;
  } iva[] = {{"Esente art.15", "E15", 0},
             {"IVA 22%", "22", 22},
             {"IVA 10%", "10", 10},
             {"IVA 4%", "4", 4}};
  for (int i = 0; i < static_cast<int>(std::size(iva)); ++i)
    Inserisci(db, "TabGen",
              {{"CTipTabGen", 4},
               {"CTabGen", i + 1},
               {"DTabGen", QString::fromLatin1(iva[i].descr)},
               {"Sigla", QString::fromLatin1(iva[i].sigla)},
               {"Num1", iva[i].aliquota},
               {"Bool3", iva[i].aliquota == 0 ? -1 : 0}});

  // Model types.
  struct {
    int codice;
    const char* descr;
    const char* sigla;
    bool forfait;
  } tipi[] = {{kTipoStampo, "Stampo", "ST", false},
              {kTipoAttrezzatura, "Attrezzatura", "AT", false},
              {kTipoPrototipo, "Prototipo", "PR", false},
              {kTipoManutenzione, "Manutenzione", "MA", false},
              {kTipoForfait, "Assistenza a forfait", "AF", true}};
  for (const auto& t : tipi) {
    Inserisci(db, "ProjectsTipo",
              {{"CPrjTipo", t.codice},
               {"DPrjTipo", QString::fromLatin1(t.descr)},
               {"Sigla", QString::fromLatin1(t.sigla)},
               {"GestForfSempl", t.forfait ? -1 : 0}});
    if (!t.forfait) ref.tipiModello.push_back(t.codice);
  }

  // Disposition types and the service kinds each allows.
  struct {
    int codice;
    const char* descr;
    const char* sigla;
    bool forfait;
    int tipoFatt;
    std::vector<int> prestazioni;
  } disp[] = {{kDispOraria, "Lavorazione oraria", "LO", false, 1, {1, 2, 3, 5, 8}},
              {kDispPezzo, "Produzione a pezzo", "PZ", false, 2, {2, 3, 5, 9, 10}},
              {kDispInterna, "Interno non fatturato", "INT", false, 0, {5, 6, 8}},
              {kDispForfait, "Forfait a pezzo", "FF", true, 2, {1, 4, 5, 6, 10}},
              {kDispProgetto, "Progettazione", "PRG", false, 1, {3, 6, 7}}};
  for (const auto& d : disp) {
    Inserisci(db, "ProjectsDispTipo",
              {{"CPrjDispTipo", d.codice},
               {"DPrjDispTipo", QString::fromLatin1(d.descr)},
               {"Sigla", QString::fromLatin1(d.sigla)},
               {"Forfait", d.forfait ? -1 : 0},
               {"TipoFatt", d.tipoFatt}});
    for (int p : d.prestazioni)
      Inserisci(db, "ProjectsDisp2Prest", {{"CPrjDispTipo", d.codice}, {"CPrestazione", p}});
    ref.tipiDisp[d.codice] = TipoDisp{d.codice, d.tipoFatt, d.forfait, d.prestazioni};
  }

  ref.dispPerTipo = {
      {kTipoStampo, {kDispOraria, kDispOraria, kDispPezzo, kDispInterna, kDispProgetto}},
      {kTipoAttrezzatura, {kDispOraria, kDispOraria, kDispInterna, kDispProgetto}},
      {kTipoPrototipo, {kDispOraria, kDispPezzo, kDispPezzo, kDispProgetto}},
      {kTipoManutenzione, {kDispOraria, kDispOraria, kDispInterna}},
      {kTipoForfait, {kDispForfait, kDispForfait, kDispForfait, kDispInterna}}};

  // General tariffs for every pair in use. The internal work is not invoiced:
  // its hours count at the workshop's own rate, so that the calculator shows
  // what the work is worth; it takes no draw, and the other tariffs stay as they are.
  constexpr double kTarInterna = 30.0;
  for (const auto& [tipo, usati] : ref.dispPerTipo) {
    std::vector<int> visti;
    for (int d : usati) {
      if (std::find(visti.begin(), visti.end(), d) != visti.end()) continue;
      visti.push_back(d);
      double min = 0, max = 0, tarH = kTarInterna;
      if (d != kDispInterna) tarH = caso.Int(60, 110) / 2.0;  // 30.00 .. 55.00
      if (d == kDispForfait) min = 22, max = 30, tarH = 32;
      Inserisci(db, "ProjectsDispTar",
                {{"CPrjTipo", tipo},
                 {"CPrjDispTipo", d},
                 {"TarMin", min},
                 {"TarMax", max},
                 {"TarH", tarH}});
      ref.tariffe[{tipo, d, 0}] = tarH;
    }
  }
  // Three customers with tariffs of their own.
  struct {
    int tipo, disp, cliente;
    double min, max, tarH;
  } proprie[] = {{kTipoStampo, kDispOraria, 1, 0, 0, 38.0},
                 {kTipoStampo, kDispPezzo, 1, 0, 0, 42.0},
                 {kTipoStampo, kDispOraria, 3, 0, 0, 36.5},
                 {kTipoPrototipo, kDispProgetto, 3, 0, 0, 48.0},
                 {kTipoForfait, kDispForfait, 5, 20, 27, 31.0}};
  for (const auto& t : proprie) {
    Inserisci(db, "ProjectsDispTarDett",
              {{"CPrjTipo", t.tipo},
               {"CPrjDispTipo", t.disp},
               {"TAnag", 1},
               {"CAnag", t.cliente},
               {"TarMin", t.min},
               {"TarMax", t.max},
               {"TarH", t.tarH}});
    ref.tariffe[{t.tipo, t.disp, t.cliente}] = t.tarH;
  }
  return ref;
}

// ------------------------------------------------------------------ models and dispositions

struct Disposizione {
  int cDisp = 0;
  int tipo = 0;
  QString descr;
  int giorno = 0;  // index of Data in the calendar
  int fine = 0;    // index of the last day of work; DtEnd when closed
  double qta = 0;
  double pzVend = 0;
  bool defPzVend = false;
  int cStato = 0;
  int nStampa = 0;
  QString annot;
  std::vector<int> prest;
};

struct Modello {
  int codice = 0;
  QString descr;
  int tipo = 0;
  int cliente = 0;
  int giorno = 0;  // index of DtIni in the calendar
  int stato = 0;
  double qta = 1;
  QString annot;
  int tipoDocRif = 0, nDocRif = 0, rigaRif = 0;
  std::vector<Disposizione> disp;
};

const std::vector<QString>& Oggetti() {
  static const std::vector<QString> v = {"coperchio pompa",
                                         "staffa supporto motore",
                                         "flangia di raccordo",
                                         "carter trasmissione",
                                         "maniglia portiera",
                                         "corpo valvola",
                                         "tappo serbatoio",
                                         "supporto specchietto",
                                         "ghiera di bloccaggio",
                                         "scatola di derivazione",
                                         "leva freno",
                                         "boccola distanziale",
                                         "piastra di fissaggio",
                                         "cassetto portaoggetti",
                                         "griglia di aerazione",
                                         "raccordo a T",
                                         "pomello cambio",
                                         "fondello filtro",
                                         "cerniera anta",
                                         "mozzo ruota",
                                         "calotta faro",
                                         "tastiera comando",
                                         "guscio caricabatterie",
                                         "collettore aspirazione"};
  return v;
}

QString NomeModello(Caso& caso, int tipo) {
  const QString& oggetto = caso.Uno(Oggetti());
  switch (tipo) {
    case kTipoStampo:
      return QStringLiteral("Stampo ") + oggetto +
             (caso.Prob(0.25) ? QStringLiteral(" a 2 impronte") : QString());
    case kTipoAttrezzatura: {
      static const std::vector<QString> scopi = {"saldatura", "controllo", "foratura", "montaggio"};
      return QStringLiteral("Attrezzatura di ") + caso.Uno(scopi) + QLatin1Char(' ') + oggetto;
    }
    case kTipoPrototipo:
      return QStringLiteral("Prototipo ") + oggetto;
    case kTipoManutenzione:
      return QStringLiteral("Manutenzione stampo ") + oggetto;
    default: {
      static const std::vector<QString> impianti = {"linea presse", "impianto di verniciatura",
                                                    "robot di saldatura", "centro di lavoro",
                                                    "pressa a iniezione 250 t"};
      return QStringLiteral("Assistenza tecnica ") + caso.Uno(impianti);
    }
  }
}

QString NomeDisposizione(Caso& caso, int tipo, double qta) {
  static const std::map<int, std::vector<QString>> nomi = {
      {kDispOraria,
       {"Costruzione stampo", "Modifiche su figura", "Aggiustaggio e messa a punto",
        "Revisione generale", "Lavorazioni meccaniche"}},
      {kDispPezzo,
       {"Produzione lotto", "Stampaggio serie", "Campionatura pezzi", "Fornitura particolari"}},
      {kDispInterna,
       {"Prove interne", "Attrezzaggio macchina", "Riordino reparto", "Prove di stampaggio"}},
      {kDispForfait,
       {"Intervento a forfait", "Assistenza programmata", "Manutenzione ordinaria a forfait"}},
      {kDispProgetto, {"Progettazione 3D", "Disegni costruttivi", "Analisi di fattibilità"}},
  };
  QString s = caso.Uno(nomi.at(tipo));
  if (tipo == kDispPezzo) s += QStringLiteral(" %1 pz").arg(static_cast<int>(qta));
  return s;
}

const std::vector<QString>& NoteModello() {
  static const std::vector<QString> v = {"Materiale fornito dal cliente",
                                         "Acciaio 1.2311 bonificato",
                                         "Consegna urgente",
                                         "Campionatura entro fine mese",
                                         "Rif. disegno n. 4521 rev. B",
                                         "Inserti in acciaio 1.2343 temprato",
                                         "Ritiro a cura del cliente"};
  return v;
}

// A model of the day of index giorno with its dispositions, their states decided.
Modello NuovoModello(Caso& caso, const Riferimenti& ref, const Calendario& cal, const QDate& oggi,
                     int giorno, int tipo, int maxDisp) {
  Modello m;
  m.tipo = tipo;
  m.giorno = giorno;
  m.cliente = caso.Uno(ref.clienti);
  m.descr = NomeModello(caso, tipo);
  m.qta = tipo == kTipoPrototipo ? caso.Int(1, 5) : 1;
  if (caso.Prob(0.25)) m.annot = caso.Uno(NoteModello());
  const int ultimo = cal.Ultimo(oggi.addDays(-1));
  const int nDisp = caso.Int(1, maxDisp);
  for (int c = 1; c <= nDisp; ++c) {
    Disposizione d;
    d.cDisp = c;
    d.tipo = caso.Uno(ref.dispPerTipo.at(tipo));
    d.giorno = std::min(giorno + caso.Int(0, 10), ultimo);
    d.fine = std::min(d.giorno + caso.Int(5, 120), ultimo);
    const TipoDisp& t = ref.Disp(d.tipo);
    if (t.forfait) {
      d.qta = caso.Int(1, 12);
      d.pzVend = caso.Prezzo(22, 30);
    } else if (t.tipoFatt == 2) {
      d.qta = caso.Int(5, 200) * 10;
      d.pzVend = caso.Prezzo(0.35, 12.5);
    } else {
      d.qta = 1;
    }
    d.defPzVend = t.tipoFatt == 2 && caso.Prob(0.5);
    d.descr = NomeDisposizione(caso, d.tipo, d.qta);
    if (caso.Prob(0.3)) d.nStampa = caso.Int(1, 3);
    if (caso.Prob(0.1)) d.annot = QStringLiteral("Vedi note tecniche allegate");
    // One to three of the service kinds its type allows.
    std::vector<int> ammesse = t.prestazioni;
    const int n = std::min(caso.Int(1, 3), static_cast<int>(ammesse.size()));
    for (int i = 0; i < n; ++i) {
      const int k = caso.Int(i, static_cast<int>(ammesse.size()) - 1);
      std::swap(ammesse[static_cast<size_t>(i)], ammesse[static_cast<size_t>(k)]);
      d.prest.push_back(ammesse[static_cast<size_t>(i)]);
    }
    std::sort(d.prest.begin(), d.prest.end());
    m.disp.push_back(std::move(d));
  }
  // A model older than half a year is often closed, and all its dispositions with it.
  if (cal.Giorno(giorno).daysTo(oggi) > 180 && caso.Prob(0.5)) {
    m.stato = 9;
    for (auto& d : m.disp) d.cStato = 9;
  } else {
    for (auto& d : m.disp) {
      const double r = caso.Unif();
      if (d.fine < ultimo && r < 0.25)
        d.cStato = 9;
      else if (r < 0.30)
        d.cStato = 10;
      else if (r < 0.35)
        d.cStato = 19;
    }
  }
  return m;
}

// Codes year*100000 + n, n from 1 within each year, for items already in date
// order. When a year holds more than 99999 items the form can't hold them, and
// the set is numbered 1, 2, 3 ... instead.
std::vector<int> CodiciPerAnno(const std::vector<int>& anni) {
  std::map<int, int> perAnno;
  for (int a : anni) ++perAnno[a];
  bool entra = true;
  for (const auto& [anno, n] : perAnno)
    if (n > 99999) entra = false;
  std::vector<int> codici(anni.size());
  perAnno.clear();
  for (size_t i = 0; i < anni.size(); ++i)
    codici[i] = entra ? anni[i] * 100000 + ++perAnno[anni[i]] : static_cast<int>(i) + 1;
  return codici;
}

// n models on working days of the two years before oggi, numbered in date order.
std::vector<Modello> GeneraModelli(Caso& caso, const Riferimenti& ref, const Calendario& cal,
                                   const QDate& oggi, int n, int maxDisp) {
  const int da = cal.Primo(oggi.addDays(-730)), a = cal.Ultimo(oggi.addDays(-1));
  std::vector<int> giorni(static_cast<size_t>(n));
  for (int& g : giorni) g = caso.Int(da, a);
  std::sort(giorni.begin(), giorni.end());
  std::vector<Modello> modelli;
  modelli.reserve(giorni.size());
  std::vector<int> anni;
  anni.reserve(giorni.size());
  for (size_t i = 0; i < giorni.size(); ++i) {
    const int tipo = i % 13 == 6 ? kTipoForfait : caso.Uno(ref.tipiModello);
    modelli.push_back(NuovoModello(caso, ref, cal, oggi, giorni[i], tipo, maxDisp));
    anni.push_back(cal.Giorno(giorni[i]).year());
  }
  const std::vector<int> codici = CodiciPerAnno(anni);
  for (size_t i = 0; i < modelli.size(); ++i) modelli[i].codice = codici[i];
  return modelli;
}

// ------------------------------------------------------------------ activities

struct Attivita {
  int codice = 0;
  int modello = 0;  // index in the models
  std::int16_t cDisp = 0;
  std::int16_t utente = 0;
  std::int16_t prest = 0;
  std::int16_t annot = -1;  // index of the note; -1 none
  int giorno = 0;
  std::int16_t inizio = 0;  // minutes after midnight
  std::int16_t durata = 0;  // minutes; 0 while the activity is running
  double costoH = 0;
};

const std::vector<QString>& NoteAttivita() {
  static const std::vector<QString> v = {
      "Ripresa quote",   "Sostituito inserto",   "Attesa materiale", "Lucidatura figura",
      "Prova in pressa", "Smontaggio e pulizia", "Correzione bava",  "Controllo dimensionale"};
  return v;
}

// One activity on a working day within the disposition's span. The office card
// records a duration on the day at midnight; the forfait work records the clock.
Attivita NuovaAttivita(Caso& caso, const Riferimenti& ref, const Calendario& cal, const QDate& oggi,
                       const std::vector<Modello>& modelli, int modello, int disp) {
  const Modello& m = modelli[static_cast<size_t>(modello)];
  const Disposizione& d = m.disp[static_cast<size_t>(disp)];
  Attivita a;
  a.modello = modello;
  a.cDisp = static_cast<std::int16_t>(d.cDisp);
  a.giorno = caso.Int(d.giorno, std::max(d.giorno, d.fine));
  const bool recente = cal.Giorno(a.giorno).daysTo(oggi) < 365;
  const Operatore* op = &caso.Uno(ref.operatori);
  while (op->eliminato && recente) op = &caso.Uno(ref.operatori);
  a.utente = static_cast<std::int16_t>(op->cAnag);
  a.prest = static_cast<std::int16_t>(caso.Uno(d.prest));
  if (ref.Disp(d.tipo).forfait) {
    a.inizio = static_cast<std::int16_t>(caso.Int(30, 56) * 15);  // 07:30 .. 14:00
    a.durata = static_cast<std::int16_t>(caso.Int(3, 16) * 15);
  } else {
    a.durata = static_cast<std::int16_t>(caso.Int(2, 32) * 15);  // 30 .. 480
  }
  // Most activities leave the cost to the operator's present one; some keep the cost of their day.
  if (caso.Prob(0.2) && op->costoH > 0) a.costoH = op->costoH - caso.Int(0, 3) * 0.5;
  if (caso.Prob(0.15))
    a.annot = static_cast<std::int16_t>(caso.Int(0, static_cast<int>(NoteAttivita().size()) - 1));
  return a;
}

// Puts the activities in date order and gives them their codes.
void NumeraAttivita(std::vector<Attivita>& attivita, const Calendario& cal) {
  std::stable_sort(attivita.begin(), attivita.end(), [](const Attivita& x, const Attivita& y) {
    return std::tie(x.giorno, x.inizio) < std::tie(y.giorno, y.inizio);
  });
  std::vector<int> anni;
  anni.reserve(attivita.size());
  for (const Attivita& a : attivita) anni.push_back(cal.Giorno(a.giorno).year());
  const std::vector<int> codici = CodiciPerAnno(anni);
  for (size_t i = 0; i < attivita.size(); ++i) attivita[i].codice = codici[i];
}

// ------------------------------------------------------------------ rows of the generated tables

const QStringList kColProjects = {"CProject",   "DProject", "CPrjTipo", "TAnag", "CAnag",
                                  "DtIni",      "Stato",    "CStato",   "Qta",   "Annot",
                                  "TipoDocRif", "NDocRif",  "RigaRif"};
// testo: the dates in their stored text (see Calendario::Momento).
void RigaModello(const Modello& m, const Calendario& cal, Row& r, bool testo = false) {
  r = {m.codice,     m.descr,
       m.tipo,       1,
       m.cliente,    cal.Momento(m.giorno, 0, testo),
       m.stato,      0,
       m.qta,        Testo(m.annot),
       m.tipoDocRif, m.nDocRif,
       m.rigaRif};
}

const QStringList kColDisp = {"CProject", "CDisp",     "CPrjDispTipo", "DDisp", "Data",    "Qta",
                              "PzVend",   "DefPzVend", "CStato",       "DtEnd", "NStampa", "Annot"};
void RigaDisposizione(const Modello& m, const Disposizione& d, const Calendario& cal, Row& r,
                      bool testo = false) {
  r = {m.codice,
       d.cDisp,
       d.tipo,
       d.descr,
       cal.Momento(d.giorno, 0, testo),
       d.qta,
       d.pzVend,
       d.defPzVend ? -1 : 0,
       d.cStato,
       d.cStato == 9 ? cal.Momento(d.fine, 0, testo) : QVariant(),
       d.nStampa,
       Testo(d.annot)};
}

const QStringList kColDispDett = {"CProject", "CDisp", "CPrestazione"};

const QStringList kColAttivita = {"CAttivita", "CProject", "CDisp",     "CUtente",   "CPrestazione",
                                  "DtIni",     "DtEnd",    "DtRealIni", "DtRealEnd", "Stato",
                                  "TDocRif",   "NDocRif",  "CostoH",    "Annot1"};
void RigaAttivita(const Attivita& a, const std::vector<Modello>& modelli, const Calendario& cal,
                  Row& r, bool testo = false) {
  const QVariant ini = cal.Momento(a.giorno, a.inizio, testo);
  const QVariant fine =
      a.durata > 0 ? cal.Momento(a.giorno, a.inizio + a.durata, testo) : QVariant();
  r = {a.codice,
       modelli[static_cast<size_t>(a.modello)].codice,
       static_cast<int>(a.cDisp),
       static_cast<int>(a.utente),
       static_cast<int>(a.prest),
       ini,
       fine,
       ini,
       fine,
       0,
       0,
       0,
       a.costoH,
       a.annot >= 0 ? QVariant(NoteAttivita()[static_cast<size_t>(a.annot)]) : QVariant()};
}

// ------------------------------------------------------------------ documents of the demo

struct Voce {
  const char* codice;
  const char* descr;
  const char* nota;
  double min, max;
  int causale;
};

// What each supplier works or sells, by supplier.
const std::vector<Voce>& Catalogo(int fornitore) {
  static const std::vector<std::vector<Voce>> c = {
      {{"ZN-EL", "Zincatura elettrolitica bianca", "Spessore minimo 8 micron", 0.45, 2.80,
        kCausLavorazione},
       {"ZN-CA", "Zincatura a caldo", "Secondo UNI EN ISO 1461", 1.20, 6.50, kCausLavorazione},
       {"ZN-LA", "Zincatura lamellare", "720 h in nebbia salina", 0.90, 4.20, kCausLavorazione}},
      {{"VP-9005", "Verniciatura a polvere RAL 9005", "Finitura opaca", 1.50, 9.00,
        kCausLavorazione},
       {"VL-7035", "Verniciatura a liquido RAL 7035", "Fondo e finitura", 2.00, 12.00,
        kCausLavorazione},
       {"VC-CAT", "Cataforesi nera", "Spessore 20 micron", 0.70, 3.50, kCausLavorazione}},
      {{"TT-TR", "Tempra e rinvenimento", "Durezza 58-60 HRC", 8.00, 45.00, kCausLavorazione},
       {"TT-NI", "Nitrurazione gassosa", "Profondità 0,3 mm", 12.00, 60.00, kCausLavorazione},
       {"TT-BO", "Bonifica", "Resistenza 900-1100 N/mm2", 5.00, 30.00, kCausLavorazione}},
      {{"TL-03", "Taglio laser lamiera S235 sp. 3 mm", "Da file DXF del cliente", 0.80, 7.50,
        kCausLavorazione},
       {"TL-IX", "Taglio laser inox AISI 304 sp. 2 mm", "Pellicolato un lato", 1.10, 9.50,
        kCausLavorazione},
       {"TL-PI", "Piegatura lamiera", "Fino a quattro pieghe", 0.60, 5.00, kCausLavorazione}},
      {{"RT-TO", "Rettifica in tondo", "Tolleranza h6", 6.00, 35.00, kCausLavorazione},
       {"RT-PI", "Rettifica piani", "Planarità 0,01 mm", 10.00, 80.00, kCausLavorazione},
       {"RT-LA", "Lappatura", "Rugosità Ra 0,2", 15.00, 90.00, kCausLavorazione}},
      {{"MM-BB", "Boccole in bronzo autolubrificanti", "D. 20x25x30", 1.20, 4.50, kCausVendita},
       {"MM-VS", "Viti TCEI M8x40 classe 12.9", "Brunite", 0.25, 0.90, kCausVendita},
       {"MM-SP", "Spine cilindriche temprate D. 8x40", "Tolleranza m6", 0.30, 1.20, kCausVendita}},
  };
  return c[static_cast<size_t>(fornitore - 1)];
}

struct Rif {
  int modello = -1, disp = -1;  // indexes
};

struct Riga {
  int riga = 0;
  QString codTesto, codForn, dArt, notaArt;
  double qta = 0, qtaArr = 0, annullato = 0, prezzo = 0;
  int causale = kCausLavorazione;
  int tipoDocRif = 0, nDocRif = 0, rigaRif = 0;
  QDate dataCons;
  Rif rif;  // the disposition the line is tied to
};

struct Documento {
  int tipo = 0, nDoc = 0;
  QDate data, dataCons;
  QString oggetto, riferimento;
  int tAnag = 0, cAnag = 0, cIva = 0;
  int modello = -1;  // the model that comes from the first line, for a customer order
  std::vector<Riga> righe;
};

double Imponibile(const Documento& d) {
  double s = 0;
  for (const Riga& r : d.righe) s += Round(r.qta * r.prezzo, 2);
  return Round(s, 2);
}

// Numbers a kind of document 1, 2, 3 ... in date order.
void NumeraDocumenti(std::vector<Documento>& docs) {
  std::stable_sort(docs.begin(), docs.end(),
                   [](const Documento& a, const Documento& b) { return a.data < b.data; });
  for (size_t i = 0; i < docs.size(); ++i) docs[i].nDoc = static_cast<int>(i) + 1;
}

class Demo {
 public:
  Demo(Database& db, const QDate& oggi)
      : db_(db),
        oggi_(oggi),
        caso_(kSeme),
        cal_(oggi.addDays(-800), oggi),
        ultimo_(cal_.Ultimo(oggi.addDays(-1))) {}

  void Crea() {
    ref_ = CreaRiferimenti(db_);
    modelli_ = GeneraModelli(caso_, ref_, cal_, oggi_, 60, 4);
    GeneraAttivita();
    AssicuraStati();
    NumeraAttivita(attivita_, cal_);
    OrdiniFornitori();
    ConsegneFornitori();
    BolleClienti();
    OrdiniClienti();
    ScriviModelli();
    ScriviDocumenti();
    FatturaDifferita();
  }

 private:
  const Disposizione& D(const Rif& r) const {
    return modelli_[static_cast<size_t>(r.modello)].disp[static_cast<size_t>(r.disp)];
  }
  const Modello& M(const Rif& r) const { return modelli_[static_cast<size_t>(r.modello)]; }
  QDate Giorno(int i) const { return cal_.Giorno(i); }

  // Every state of a disposition shows up: one model is suspended (10) and, when
  // chance gave none, an old open disposition takes the missing state. The
  // forfait jobs stay as they are: one of them is running.
  void AssicuraStati() {
    for (auto& m : modelli_) {
      if (m.stato == 0 && m.tipo != kTipoForfait && Giorno(m.giorno).daysTo(oggi_) > 200) {
        m.stato = 10;
        for (auto& d : m.disp) d.cStato = 10;
        break;
      }
    }
    auto presente = [&](int stato) {
      for (const auto& m : modelli_)
        for (const auto& d : m.disp)
          if (d.cStato == stato) return true;
      return false;
    };
    for (int stato : {0, 9, 19}) {
      if (presente(stato)) continue;
      for (auto& m : modelli_) {
        if (m.stato != 0 || m.tipo == kTipoForfait || m.disp.size() < 2) continue;
        Disposizione& d = m.disp.front();
        if (stato == 9 && d.fine >= ultimo_) continue;
        d.cStato = stato;
        break;
      }
    }
  }

  void GeneraAttivita() {
    for (int i = 0; i < static_cast<int>(modelli_.size()); ++i) {
      const Modello& m = modelli_[static_cast<size_t>(i)];
      for (int k = 0; k < static_cast<int>(m.disp.size()); ++k) {
        const int tipo = m.disp[static_cast<size_t>(k)].tipo;
        const int n = tipo == kDispInterna      ? caso_.Int(0, 3)
                      : ref_.Disp(tipo).forfait ? caso_.Int(2, 6)
                                                : caso_.Int(1, 7);
        for (int j = 0; j < n; ++j)
          attivita_.push_back(NuovaAttivita(caso_, ref_, cal_, oggi_, modelli_, i, k));
      }
    }
    // The operator on duty at a forfait job since this morning: started, not yet ended.
    for (int i = static_cast<int>(modelli_.size()) - 1; i >= 0; --i) {
      Modello& m = modelli_[static_cast<size_t>(i)];
      if (m.tipo != kTipoForfait) continue;
      for (int k = 0; k < static_cast<int>(m.disp.size()); ++k) {
        Disposizione& d = m.disp[static_cast<size_t>(k)];
        if (!ref_.Disp(d.tipo).forfait) continue;
        m.stato = 0;
        d.cStato = 0;
        Attivita a = NuovaAttivita(caso_, ref_, cal_, oggi_, modelli_, i, k);
        a.giorno = cal_.Ultimo(oggi_);
        a.inizio = 8 * 60 + 30;
        a.durata = 0;
        a.costoH = 0;
        while (ref_.operatori[static_cast<size_t>(a.utente - 1)].eliminato)
          a.utente = static_cast<std::int16_t>(caso_.Uno(ref_.operatori).cAnag);
        attivita_.push_back(a);
        i = -1;
        break;
      }
    }
  }

  // A disposition billed to the customer, in course on the day of index giorno.
  Rif DisposizioneAperta(int giorno, bool soloPezzo, int cliente = 0) {
    std::vector<Rif> scelte;
    for (int i = 0; i < static_cast<int>(modelli_.size()); ++i) {
      const Modello& m = modelli_[static_cast<size_t>(i)];
      if (m.giorno > giorno || (cliente != 0 && m.cliente != cliente)) continue;
      for (int k = 0; k < static_cast<int>(m.disp.size()); ++k) {
        const Disposizione& d = m.disp[static_cast<size_t>(k)];
        const int tf = ref_.Disp(d.tipo).tipoFatt;
        if (tf == 0 || (soloPezzo && tf != 2) || d.giorno > giorno) continue;
        if (d.cStato != 0 && !(d.cStato == 9 && d.fine >= giorno)) continue;
        scelte.push_back({i, k});
      }
    }
    if (scelte.empty()) return {};
    return caso_.Uno(scelte);
  }

  void OrdiniFornitori() {
    const int da = cal_.Primo(oggi_.addDays(-300)), a = cal_.Ultimo(oggi_.addDays(-30));
    for (int o = 0; o < 12; ++o) {
      Documento d;
      d.tipo = 12;
      d.data = Giorno(caso_.Int(da, a));
      d.tAnag = 2;
      d.cAnag = caso_.Uno(ref_.fornitori);
      d.cIva = 0;
      d.riferimento =
          QStringLiteral("Vs. offerta n. %1 del %2")
              .arg(caso_.Int(100, 999))
              .arg(Format(Dt(d.data.addDays(-caso_.Int(5, 30))), QStringLiteral("dd/mm/yyyy")));
      d.oggetto = QStringLiteral("Ordine di lavorazione esterna");
      d.dataCons = d.data.addDays(caso_.Int(7, 20));
      ordini_.push_back(d);
    }
    NumeraDocumenti(ordini_);
    for (Documento& d : ordini_) {
      int righe = caso_.Int(1, 3);
      if (d.nDoc == 12) righe = std::max(righe, 2);  // its last line never arrives
      const int giorno = cal_.Ultimo(d.data);
      // Different items on each line; the first order's first line is one that costs about 10.00.
      auto copre = [](const Voce& v) { return v.min <= 10.0 && v.max >= 10.0; };
      if (d.nDoc == 1 && std::none_of(Catalogo(d.cAnag).begin(), Catalogo(d.cAnag).end(), copre))
        d.cAnag = 2;
      std::vector<int> voci(Catalogo(d.cAnag).size());
      for (size_t i = 0; i < voci.size(); ++i) voci[i] = static_cast<int>(i);
      for (size_t i = voci.size() - 1; i > 0; --i)
        std::swap(voci[i], voci[static_cast<size_t>(caso_.Int(0, static_cast<int>(i)))]);
      if (d.nDoc == 1)
        std::stable_partition(voci.begin(), voci.end(), [&](int i) {
          return copre(Catalogo(d.cAnag)[static_cast<size_t>(i)]);
        });
      for (int r = 1; r <= righe; ++r) {
        const Voce& v = Catalogo(d.cAnag)[static_cast<size_t>(voci[static_cast<size_t>(r - 1)])];
        Riga l;
        l.riga = r;
        l.codTesto = QString::fromLatin1(v.codice);
        l.codForn =
            QStringLiteral("%1/%2").arg(QString::fromLatin1(v.codice)).arg(caso_.Int(10, 99));
        l.dArt = QString::fromUtf8(v.descr);
        l.notaArt = QString::fromUtf8(v.nota);
        l.qta = caso_.Int(2, 120);
        l.prezzo = caso_.Prezzo(v.min, v.max);
        l.causale = v.causale;
        l.dataCons = d.dataCons;
        l.rif = DisposizioneAperta(giorno, false);
        if (d.nDoc == 1 && r == 1) l.qta = 4, l.prezzo = 10.0;  // arrives in two lots
        d.righe.push_back(l);
      }
    }
  }

  // Deliveries of the orders: the first order's first line in two lots (3 at
  // 10.00 and 1 at 14.00), the fourth and seventh partly in two, the fifth free
  // of charge, the tenth short, the twelfth without its last line.
  void ConsegneFornitori() {
    auto consegna = [&](const Documento& o, int dopo) {
      Documento c;
      c.tipo = 15;
      c.tAnag = 2;
      c.cAnag = o.cAnag;
      c.data = Giorno(std::min(cal_.Ultimo(o.data) + dopo, ultimo_));
      c.riferimento = QStringLiteral("DDT n. %1 del %2")
                          .arg(caso_.Int(1000, 9999))
                          .arg(Format(Dt(c.data), QStringLiteral("dd/mm/yyyy")));
      c.oggetto = QStringLiteral("Rientro da lavorazione esterna");
      return c;
    };
    auto riga = [](Documento& c, Riga& ordine, int nOrdine, double qta, double prezzo,
                   int causale) {
      Riga l = ordine;
      l.riga = static_cast<int>(c.righe.size()) + 1;
      l.qta = qta;
      l.qtaArr = 0;
      l.prezzo = prezzo;
      l.causale = causale;
      l.tipoDocRif = 12;
      l.nDocRif = nOrdine;
      l.rigaRif = ordine.riga;
      l.dataCons = QDate();
      l.rif = {};
      c.righe.push_back(l);
      ordine.qtaArr += qta;
    };
    for (Documento& o : ordini_) {
      const int primo = caso_.Int(5, 15), secondo = primo + caso_.Int(3, 10);
      Documento c1 = consegna(o, primo);
      switch (o.nDoc) {
        case 1: {
          Documento c2 = consegna(o, secondo);
          for (Riga& r : o.righe) riga(c1, r, o.nDoc, r.riga == 1 ? 3 : r.qta, r.prezzo, r.causale);
          riga(c2, o.righe.front(), o.nDoc, 1, 14.0, o.righe.front().causale);
          consegne_.push_back(c1);
          consegne_.push_back(c2);
          break;
        }
        case 4:
        case 7: {
          Documento c2 = consegna(o, secondo);
          for (Riga& r : o.righe) riga(c1, r, o.nDoc, std::floor(r.qta / 2), r.prezzo, r.causale);
          Riga& prima = o.righe.front();
          riga(c2, prima, o.nDoc, prima.qta - prima.qtaArr, prima.prezzo, prima.causale);
          consegne_.push_back(c1);
          consegne_.push_back(c2);
          break;
        }
        case 5:
          for (Riga& r : o.righe) riga(c1, r, o.nDoc, r.qta, r.prezzo, kCausOmaggio);
          consegne_.push_back(c1);
          break;
        case 10:
          for (Riga& r : o.righe)
            riga(c1, r, o.nDoc, r.riga == 1 ? r.qta - 1 : r.qta, r.prezzo, r.causale);
          consegne_.push_back(c1);
          break;
        case 12:
          for (Riga& r : o.righe)
            if (r.riga < static_cast<int>(o.righe.size()))
              riga(c1, r, o.nDoc, r.qta, r.prezzo, r.causale);
          consegne_.push_back(c1);
          break;
        default:
          for (Riga& r : o.righe) riga(c1, r, o.nDoc, r.qta, r.prezzo, r.causale);
          consegne_.push_back(c1);
          break;
      }
    }
    NumeraDocumenti(consegne_);
  }

  // Five delivery notes of the last two months for pieces made by the piece.
  void BolleClienti() {
    const int da = cal_.Primo(oggi_.addMonths(-2)), a = ultimo_;
    for (int b = 0; b < 5; ++b) {
      Documento d;
      d.tipo = 5;
      const int giorno = caso_.Int(da, a);
      d.data = Giorno(giorno);
      Rif r = DisposizioneAperta(giorno, true);
      if (r.modello < 0) continue;
      d.tAnag = 1;
      d.cAnag = M(r).cliente;
      d.cIva = b % 2 == 0 ? 0 : kIva22;
      d.oggetto = QStringLiteral("Consegna ") + M(r).descr.toLower();
      std::vector<Rif> rif = {r};
      Rif altra = DisposizioneAperta(giorno, true, d.cAnag);
      if (altra.modello >= 0 && (altra.modello != r.modello || altra.disp != r.disp) &&
          caso_.Prob(0.5))
        rif.push_back(altra);
      for (const Rif& x : rif) {
        const Disposizione& disp = D(x);
        Riga l;
        l.riga = static_cast<int>(d.righe.size()) + 1;
        l.codTesto = QString::number(M(x).codice);
        l.dArt = M(x).descr + QStringLiteral(" - ") + disp.descr;
        l.qta = std::max(1.0, std::floor(disp.qta * caso_.Int(2, 10) / 10.0));
        l.prezzo = disp.pzVend;
        l.causale = caso_.Prob(0.7) ? kCausLavorazione : kCausVendita;
        l.rif = x;
        d.righe.push_back(l);
      }
      bolle_.push_back(d);
    }
    NumeraDocumenti(bolle_);
    // The oldest note is invoiced at the end of its month.
    if (!bolle_.empty()) {
      const Documento& b = bolle_.front();
      Documento f;
      f.tipo = 9;
      f.tAnag = 1;
      f.cAnag = b.cAnag;
      f.cIva = b.cIva;
      f.data = std::min(QDate(b.data.year(), b.data.month(), b.data.daysInMonth()), oggi_);
      f.oggetto = QStringLiteral("Fattura differita");
      f.righe = b.righe;
      fatture_.push_back(f);
      NumeraDocumenti(fatture_);
    }
  }

  // Two customer orders of the last 300 days; a model of the first comes from its first line.
  void OrdiniClienti() {
    std::vector<int> candidati;
    for (int i = 0; i < static_cast<int>(modelli_.size()); ++i) {
      const Modello& m = modelli_[static_cast<size_t>(i)];
      const qint64 eta = Giorno(m.giorno).daysTo(oggi_);
      if (m.tipo != kTipoForfait && eta >= 10 && eta <= 280) candidati.push_back(i);
    }
    int collegato = -1;
    Documento o1;
    o1.tipo = 2;
    o1.tAnag = 1;
    if (!candidati.empty()) {
      collegato = caso_.Uno(candidati);
      const Modello& m = modelli_[static_cast<size_t>(collegato)];
      o1.cAnag = m.cliente;
      o1.data = Giorno(m.giorno - caso_.Int(2, 10));
      Riga l;
      l.codTesto = QStringLiteral("ART-%1").arg(caso_.Int(1000, 9999));
      l.dArt = m.descr;
      l.qta = m.qta;
      l.prezzo = m.tipo == kTipoStampo ? caso_.Int(16, 70) * 500.0 : caso_.Int(3, 18) * 500.0;
      o1.righe.push_back(l);
      o1.modello = collegato;
    } else {
      o1.cAnag = ref_.clienti.front();
      o1.data = Giorno(cal_.Primo(oggi_.addDays(-200)));
    }
    Riga ricambi;
    ricambi.codTesto = QStringLiteral("RIC-%1").arg(caso_.Int(100, 999));
    ricambi.dArt = QStringLiteral("Serie di inserti di ricambio");
    ricambi.qta = caso_.Int(2, 6);
    ricambi.prezzo = caso_.Prezzo(250, 900);
    o1.righe.push_back(ricambi);

    Documento o2;
    o2.tipo = 2;
    o2.tAnag = 1;
    o2.cAnag = caso_.Uno(ref_.clienti);
    o2.data = Giorno(caso_.Int(cal_.Primo(oggi_.addDays(-300)), ultimo_));
    Riga a, b;
    a.codTesto = QStringLiteral("ART-%1").arg(caso_.Int(1000, 9999));
    a.dArt = QStringLiteral("Attrezzatura di controllo ") + caso_.Uno(Oggetti());
    a.qta = 1;
    a.prezzo = caso_.Int(5, 12) * 500.0;
    b.codTesto = QStringLiteral("ART-%1").arg(caso_.Int(1000, 9999));
    b.dArt = QStringLiteral("Pezzi stampati ") + caso_.Uno(Oggetti());
    b.qta = caso_.Int(10, 50) * 100;
    b.prezzo = caso_.Prezzo(0.4, 2.5);
    b.annullato = 500;  // part of the quantity cancelled by the customer
    o2.righe = {a, b};

    for (Documento* o : {&o1, &o2}) {
      o->oggetto = QStringLiteral("Ordine cliente");
      o->riferimento = QStringLiteral("Vs. ordine n. %1").arg(caso_.Int(1000, 9999));
      o->dataCons = o->data.addDays(60);
      for (size_t i = 0; i < o->righe.size(); ++i) {
        o->righe[i].riga = static_cast<int>(i) + 1;
        o->righe[i].dataCons = o->dataCons;
        o->righe[i].causale = kCausVendita;
      }
      ordiniClienti_.push_back(*o);
    }
    NumeraDocumenti(ordiniClienti_);
    for (const Documento& o : ordiniClienti_) {
      if (o.modello < 0) continue;
      Modello& m = modelli_[static_cast<size_t>(o.modello)];
      m.tipoDocRif = 2;
      m.nDocRif = o.nDoc;
      m.rigaRif = 1;
    }
  }

  void ScriviModelli() {
    Row r;
    for (const Modello& m : modelli_) {
      RigaModello(m, cal_, r);
      Inserisci(db_, QStringLiteral("Projects"), kColProjects, r);
      for (const Disposizione& d : m.disp) {
        RigaDisposizione(m, d, cal_, r);
        Inserisci(db_, QStringLiteral("ProjectsDisp"), kColDisp, r);
        for (int p : d.prest)
          Inserisci(db_, QStringLiteral("ProjectsDispDett"), kColDispDett, {m.codice, d.cDisp, p});
      }
    }
    for (const Attivita& a : attivita_) {
      RigaAttivita(a, modelli_, cal_, r);
      Inserisci(db_, QStringLiteral("ActivitiesProd"), kColAttivita, r);
    }
  }

  void ScriviDocumento(const Documento& d, bool righe = true) {
    const double imp = Imponibile(d);
    const double iva = Round(imp * 0.22, 2);  // every line here is at 22%
    // Supplier orders and deliveries are kept apart from the customer documents.
    const bool fornitura = d.tipo == 12 || d.tipo == 15;
    Inserisci(db_, fornitura ? "DocForn" : "Doc",
              {{"TipoDoc", d.tipo},
               {"NDoc", d.nDoc},
               {"Data", Dt(d.data)},
               {"DataCons", Dt(d.dataCons)},
               {"Oggetto", Testo(d.oggetto)},
               {"Riferimento", Testo(d.riferimento)},
               {"TAnag", d.tAnag},
               {"CAnag", d.cAnag},
               {"ImpDoc", imp},
               {"IVADoc", iva},
               {"TotDoc", Round(imp + iva, 2)},
               {"ValSconto", 0.0},
               {"CIva", d.cIva}});
    if (!righe) return;
    for (const Riga& l : d.righe)
      Inserisci(db_, fornitura ? "DocFornDett" : "DocDett",
                {{"TipoDoc", d.tipo},
                 {"NDoc", d.nDoc},
                 {"Scheda", 0},
                 {"Riga", l.riga},
                 {"CodTesto", Testo(l.codTesto)},
                 {"CodForn", Testo(l.codForn)},
                 {"DArt", Testo(l.dArt)},
                 {"NotaArt", Testo(l.notaArt)},
                 {"Qta", l.qta},
                 {"QtaArr", l.qtaArr},
                 {"Annullato", l.annullato},
                 {"DataCons", Dt(l.dataCons)},
                 {"CCaus", l.causale},
                 {"PzVend", l.prezzo},
                 {"CIVA", kIva22},
                 {"TipoDocRif", l.tipoDocRif},
                 {"NDocRif", l.nDocRif},
                 {"RigaRif", l.rigaRif}});
  }

  // The lines of a document tied to dispositions, RigaD running within the document.
  void ScriviLegami(const Documento& d, bool prestazioni) {
    int rigaD = 0;
    for (const Riga& l : d.righe) {
      if (l.rif.modello < 0) continue;
      ++rigaD;
      Inserisci(db_, "ProjectsDocDett",
                {{"TipoDoc", d.tipo},
                 {"NDoc", d.nDoc},
                 {"Scheda", 0},
                 {"Riga", l.riga},
                 {"RigaD", rigaD},
                 {"CProject", M(l.rif).codice},
                 {"CDisp", D(l.rif).cDisp},
                 {"Ctipo", 0},
                 {"CArt", 0},
                 {"CVar", 0},
                 {"CodTesto", Testo(l.codTesto)},
                 {"CodForn", Testo(l.codForn)},
                 {"DArt", Testo(l.dArt)},
                 {"NotaArt", Testo(l.notaArt)},
                 {"Qta", l.qta},
                 {"CCaus", l.causale},
                 {"Importo", l.prezzo},
                 {"CIva", kIva22}});
      if (!prestazioni) continue;
      const std::vector<int>& prest = D(l.rif).prest;
      const int n = std::min(static_cast<int>(prest.size()), caso_.Int(1, 2));
      for (int s = 0; s < n; ++s)
        Inserisci(db_, "ProjectsDocDettPrest",
                  {{"TipoDoc", d.tipo},
                   {"NDoc", d.nDoc},
                   {"RigaD", rigaD},
                   {"SubRiga", s + 1},
                   {"CPrestazione", prest[static_cast<size_t>(s)]}});
    }
  }

  void ScriviDocumenti() {
    for (const Documento& d : ordini_) {
      ScriviDocumento(d);
      ScriviLegami(d, true);
    }
    for (const Documento& d : consegne_) ScriviDocumento(d);
    for (const Documento& d : bolle_) {
      ScriviDocumento(d);
      ScriviLegami(d, false);
    }
    for (const Documento& f : fatture_) {
      ScriviDocumento(f, false);
      Inserisci(db_, "DocSchede",
                {{"TipoDoc", f.tipo},
                 {"NDoc", f.nDoc},
                 {"TipoDocAss", 5},
                 {"NDocAss", bolle_.front().nDoc}});
    }
    for (const Documento& d : ordiniClienti_) ScriviDocumento(d);
  }

  // The hours of an hourly disposition of the invoiced customer (of anyone when
  // that customer has none) deferred to a later invoice.
  void FatturaDifferita() {
    if (fatture_.empty()) return;
    const Documento& f = fatture_.front();
    Rif scelta;
    for (int pass = 0; pass < 2 && scelta.modello < 0; ++pass)
      for (int i = 0; i < static_cast<int>(modelli_.size()) && scelta.modello < 0; ++i)
        for (int k = 0; k < static_cast<int>(modelli_[static_cast<size_t>(i)].disp.size()); ++k) {
          const Modello& m = modelli_[static_cast<size_t>(i)];
          if ((pass == 0 && m.cliente != f.cAnag) ||
              m.disp[static_cast<size_t>(k)].tipo != kDispOraria)
            continue;
          scelta = {i, k};
          break;
        }
    if (scelta.modello < 0) return;
    const Modello& m = M(scelta);
    const Disposizione& d = D(scelta);
    double minuti = 0;
    for (const Attivita& a : attivita_)
      if (a.modello == scelta.modello && a.cDisp == d.cDisp) minuti += a.durata;
    const double importo = Round(minuti / 60.0 * ref_.TarH(m.tipo, d.tipo, m.cliente), 2);
    Inserisci(
        db_, "FattDiff",
        {{"Progressivo", 1}, {"TipoDocRif", f.tipo}, {"NDocRif", f.nDoc}, {"Data", Dt(f.data)}});
    Inserisci(db_, "FattDiffDett",
              {{"Progressivo", 1},
               {"Riga", 1},
               {"ID", Format(m.codice, QStringLiteral("000000000")) +
                          Format(d.cDisp, QStringLiteral("000"))},
               {"Descrizione",
                QStringLiteral("Ore di ") + d.descr.toLower() + QStringLiteral(" - ") + m.descr},
               {"Importo", importo}});
  }

  Database& db_;
  QDate oggi_;
  Caso caso_;
  Calendario cal_;
  int ultimo_;
  Riferimenti ref_;
  std::vector<Modello> modelli_;
  std::vector<Attivita> attivita_;
  std::vector<Documento> ordini_, consegne_, bolle_, fatture_, ordiniClienti_;
};

// Runs f in a transaction of db: committed when f ends, rolled back when it fails.
template <class F>
void InTransazione(Database& db, F&& f) {
  db.BeginTrans();
  try {
    f();
  } catch (...) {
    db.Rollback();
    throw;
  }
  db.CommitTrans();
}

}  // namespace

void CreaDatiDemo(Database& db, const QDate& oggi) {
  CreaSchema(db, true);
  InTransazione(db, [&] { Demo(db, oggi).Crea(); });
}

void CreaDatiGrandi(Database& db, int modelli, int attivita, const QDate& oggi) {
  CreaSchema(db, true);
  InTransazione(db, [&] {
    Caso caso(kSeme);
    const Calendario cal(oggi.addDays(-800), oggi);
    const Riferimenti ref = CreaRiferimenti(db);
    const std::vector<Modello> m = GeneraModelli(caso, ref, cal, oggi, modelli, 3);

    // Each model draws a weight; a few heavy ones gather many activities, as
    // the big moulds of a shop do.
    std::vector<double> cumulato(m.size());
    double somma = 0;
    for (size_t i = 0; i < m.size(); ++i) cumulato[i] = somma += std::exp(1.3 * caso.Normale());
    std::vector<Attivita> a;
    a.reserve(static_cast<size_t>(std::max(attivita, 0)));
    for (int n = 0; n < attivita && !m.empty(); ++n) {
      const double x = caso.Unif() * somma;
      const int i = static_cast<int>(std::min<size_t>(
          std::upper_bound(cumulato.begin(), cumulato.end(), x) - cumulato.begin(), m.size() - 1));
      const int k = caso.Int(0, static_cast<int>(m[static_cast<size_t>(i)].disp.size()) - 1);
      a.push_back(NuovaAttivita(caso, ref, cal, oggi, m, i, k));
    }
    NumeraAttivita(a, cal);

    size_t i = 0, k = 0;
    db.InsertMany(QStringLiteral("Projects"), kColProjects, [&](Row& r) {
      if (i == m.size()) return false;
      RigaModello(m[i++], cal, r, true);
      return true;
    });
    i = 0;
    db.InsertMany(QStringLiteral("ProjectsDisp"), kColDisp, [&](Row& r) {
      while (i < m.size() && k == m[i].disp.size()) ++i, k = 0;
      if (i == m.size()) return false;
      RigaDisposizione(m[i], m[i].disp[k++], cal, r, true);
      return true;
    });
    i = 0, k = 0;
    size_t p = 0;
    db.InsertMany(QStringLiteral("ProjectsDispDett"), kColDispDett, [&](Row& r) {
      for (;;) {
        if (i == m.size()) return false;
        if (k == m[i].disp.size()) {
          ++i, k = 0, p = 0;
        } else if (p == m[i].disp[k].prest.size()) {
          ++k, p = 0;
        } else {
          break;
        }
      }
      r = {m[i].codice, m[i].disp[k].cDisp, m[i].disp[k].prest[p++]};
      return true;
    });
    i = 0;
    db.InsertMany(QStringLiteral("ActivitiesProd"), kColAttivita, [&](Row& r) {
      if (i == a.size()) return false;
      RigaAttivita(a[i++], m, cal, r, true);
      return true;
    });
  });
}

}  // namespace prestkt
