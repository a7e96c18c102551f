#pragma once
// The demo workshop: a small database of an Italian mould and tooling shop,
// made by code, for the demo host and the tests; and a large generated one
// for the benchmarks. Both are deterministic: the same day gives the same data.
#include <QDate>

namespace prestkt {

class Database;

// Creates the schema (the on-demand tables too) and fills it with the demo
// workshop: customers, suppliers and operators, service kinds, causals and VAT
// codes, model and disposition types with their tariffs, about sixty models of
// the two years before oggi with their dispositions and a few hundred
// activities, supplier orders and deliveries tied to the dispositions,
// delivery notes to customers (one of them invoiced), customer orders and a
// deferred invoice. Everything goes in one transaction.
void CreaDatiDemo(Database& db, const QDate& oggi);

// Creates the schema with the same reference tables as the demo, then
// `modelli` models spread over the two years before oggi (1-3 dispositions
// each) and `attivita` activities spread over their dispositions, a few models
// taking many of them. Models and activities are numbered year*100000 + n in
// date order; a set with more than 99999 items in one year is numbered instead
// 1, 2, 3 ... in date order.
void CreaDatiGrandi(Database& db, int modelli, int attivita, const QDate& oggi);

}  // namespace prestkt
