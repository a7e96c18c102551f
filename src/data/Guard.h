#pragma once
// The three kinds of procedure. A logged procedure runs each statement that can
// fail through its Guard: the failure is written to the error log and the
// procedure goes on with the next statement. A silent procedure does the same
// without the log. An unguarded procedure simply lets the failure travel.
//
//   Guard g("frmModelli", "Salva");
//   g([&] { rs->SetFilter(f); });              // a statement
//   if (g.If([&] { return rs->Eof(); })) ...   // a failed condition enters the block
#include <QString>
#include <functional>

namespace prestkt {

class Guard {
 public:
  enum Kind { Logged, Silent };
  Guard(QString modulo, QString procedura, Kind kind = Logged)
      : modulo_(std::move(modulo)), procedura_(std::move(procedura)), kind_(kind) {}

  // Runs one statement; false when it failed.
  template <class F>
  bool operator()(F&& statement) {
    try {
      statement();
      return true;
    } catch (...) {
      Fail();
      return false;
    }
  }

  // A condition: a failure counts as true, as the next statement after a failed
  // test is the first of its block.
  template <class F>
  bool If(F&& condition) {
    try {
      return static_cast<bool>(condition());
    } catch (...) {
      Fail();
      return true;
    }
  }

  // A value: on failure the fallback stays.
  template <class T, class F>
  T Value(F&& expression, T fallback) {
    try {
      return expression();
    } catch (...) {
      Fail();
      return fallback;
    }
  }

  int Failures() const { return failures_; }
  int LastNumber() const { return lastNumber_; }
  const QString& LastDescription() const { return lastDescription_; }
  const QString& Modulo() const { return modulo_; }
  const QString& Procedura() const { return procedura_; }

 private:
  void Fail();  // reads the current exception, logs it when the kind asks

  QString modulo_;
  QString procedura_;
  Kind kind_;
  int failures_ = 0;
  int lastNumber_ = 0;
  QString lastDescription_;
};

}  // namespace prestkt
