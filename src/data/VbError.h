#pragma once
// The runtime failure of the component: a number and a description, as the
// errors of the platform the system grew up on. Every routine that can fail
// throws it; guards (Guard.h) catch it, log it and go on.
#include <QString>
#include <exception>
#include <string>

namespace prestkt {

namespace err {
inline constexpr int InvalidProcedureCall = 5;  // "Invalid procedure call or argument"
inline constexpr int Overflow = 6;              // "Overflow"
inline constexpr int OutOfMemory = 7;           // "Out of memory"
inline constexpr int SubscriptOutOfRange = 9;   // "Subscript out of range"
inline constexpr int DivisionByZero = 11;       // "Division by zero"
inline constexpr int TypeMismatch = 13;         // "Type mismatch"
inline constexpr int FileNotFound = 53;         // "File not found"
inline constexpr int FileAlreadyExists = 58;    // "File already exists"
inline constexpr int PermissionDenied = 70;     // "Permission denied"
inline constexpr int PathFileAccess = 75;       // "Path/File access error"
inline constexpr int PathNotFound = 76;         // "Path not found"
inline constexpr int ObjectNotSet = 91;         // "Object variable or With block variable not set"
inline constexpr int InvalidUseOfNull = 94;     // "Invalid use of Null"
inline constexpr int UserErrorBase = 512;       // vbObjectError is far below; user errors start here
inline constexpr int NoCurrentRecord = 3021;    // "No current record."
inline constexpr int ItemNotFound = 3265;       // "Item not found in this collection."
inline constexpr int BadArguments = 3001;       // wrong, out of range or conflicting arguments
inline constexpr int OperationNotAllowed = 3219;  // "Operation is not allowed in this context."
inline constexpr int SqlError = 3061;           // a statement the database refused
inline constexpr int MultipleStep = -2147217887;  // a value that does not fit its field
}  // namespace err

// The standard text of a runtime error number ("" for unknown numbers).
QString ErrorText(int number);

class VbError : public std::exception {
 public:
  VbError(int number, QString description = {}, QString source = {});
  int Number() const { return number_; }
  const QString& Description() const { return description_; }
  const QString& Source() const { return source_; }
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  int number_;
  QString description_;
  QString source_;
  std::string what_;
};

[[noreturn]] void Raise(int number, const QString& description = {}, const QString& source = {});

}  // namespace prestkt
