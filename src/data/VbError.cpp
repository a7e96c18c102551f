#include "VbError.h"

namespace prestkt {

QString ErrorText(int number) {
  switch (number) {
    case err::InvalidProcedureCall: return QStringLiteral("Invalid procedure call or argument");
    case err::Overflow: return QStringLiteral("Overflow");
    case err::OutOfMemory: return QStringLiteral("Out of memory");
    case err::SubscriptOutOfRange: return QStringLiteral("Subscript out of range");
    case err::DivisionByZero: return QStringLiteral("Division by zero");
    case err::TypeMismatch: return QStringLiteral("Type mismatch");
    case err::FileNotFound: return QStringLiteral("File not found");
    case err::FileAlreadyExists: return QStringLiteral("File already exists");
    case err::PermissionDenied: return QStringLiteral("Permission denied");
    case err::PathFileAccess: return QStringLiteral("Path/File access error");
    case err::PathNotFound: return QStringLiteral("Path not found");
    case err::ObjectNotSet:
      return QStringLiteral("Object variable or With block variable not set");
    case err::InvalidUseOfNull: return QStringLiteral("Invalid use of Null");
    case err::NoCurrentRecord:
      return QStringLiteral(
          "Either BOF or EOF is True, or the current record has been deleted. Requested "
          "operation requires a current record.");
    case err::ItemNotFound:
      return QStringLiteral("Item cannot be found in the collection corresponding to the "
                            "requested name or ordinal.");
    case err::BadArguments:
      return QStringLiteral("Arguments are of the wrong type, are out of acceptable range, or "
                            "are in conflict with one another.");
    case err::OperationNotAllowed: return QStringLiteral("Operation is not allowed in this context.");
    case err::MultipleStep:
      return QStringLiteral("Multiple-step operation generated errors. Check each status value.");
    default: return {};
  }
}

VbError::VbError(int number, QString description, QString source)
    : number_(number),
      description_(description.isEmpty() ? ErrorText(number) : std::move(description)),
      source_(std::move(source)),
      what_(description_.toStdString()) {
  if (description_.isEmpty()) {
    description_ = QStringLiteral("Application-defined or object-defined error");
    what_ = description_.toStdString();
  }
}

void Raise(int number, const QString& description, const QString& source) {
  throw VbError(number, description, source);
}

}  // namespace prestkt
