#include "Guard.h"

#include <exception>

#include "Procedure.h"
#include "VbError.h"

namespace prestkt {

void Guard::Fail() {
  ++failures_;
  try {
    throw;
  } catch (const VbError& e) {
    lastNumber_ = e.Number();
    lastDescription_ = e.Description();
  } catch (const std::bad_alloc&) {
    lastNumber_ = 7;
    lastDescription_ = QStringLiteral("Out of memory");
  } catch (const std::exception& e) {
    lastNumber_ = err::InvalidProcedureCall;
    lastDescription_ = QString::fromUtf8(e.what());
  } catch (...) {
    lastNumber_ = err::InvalidProcedureCall;
    lastDescription_ = ErrorText(err::InvalidProcedureCall);
  }
  if (kind_ == Logged) {
    bool mostra = false;
    ScriviErrLog(modulo_, procedura_,
                 lastDescription_ + QStringLiteral(" (") + QString::number(lastNumber_) +
                     QStringLiteral(")"),
                 mostra);
  }
}

}  // namespace prestkt
