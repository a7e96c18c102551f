#pragma once
// Message boxes, input boxes and file dialogs all go through one service. The
// program installs the one that shows Qt dialogs; a test installs a script of
// answers and reads back what was asked.
#include <QString>
#include <memory>

namespace prestkt {

enum MsgBoxStyle {
  vbOKOnly = 0,
  vbOKCancel = 1,
  vbYesNoCancel = 3,
  vbYesNo = 4,
  vbCritical = 16,
  vbQuestion = 32,
  vbExclamation = 48,
  vbInformation = 64,
  vbDefaultButton2 = 256,
};
enum MsgBoxResult { vbOK = 1, vbCancel = 2, vbAbort = 3, vbRetry = 4, vbIgnore = 5, vbYes = 6, vbNo = 7 };

class MessageService {
 public:
  virtual ~MessageService() = default;
  // buttons: the flags above (48 exclamation with OK, 292 question Yes/No with No as default ...)
  virtual int MsgBox(const QString& prompt, int buttons, const QString& title) = 0;
  // The text typed; an empty string when cancelled.
  virtual QString InputBox(const QString& prompt, const QString& title, const QString& value) = 0;
  // A path; empty when cancelled. filter is "Descr|*.ext|Descr|*.ext" as the system writes it.
  virtual QString OpenFileName(const QString& title, const QString& filter, const QString& dir) = 0;
  virtual QString SaveFileName(const QString& title, const QString& filter, const QString& dir) = 0;
};

// Without a service installed, messages go to standard error and get the default button.
void SetMessageService(std::shared_ptr<MessageService> service);
MessageService& Messages();

// The title of the component's ordinary messages.
QString AppTitle();

// MessageBoxVorn: titled "VORN" unless a title that is not blank is given.
int MessageBoxVorn(const QString& prompt, int buttons = vbOKOnly, const QString& titolo = {},
                   const QString& helpFile = {}, int context = 0);
// The ordinary message of a screen: no title of its own, so the application's.
int MsgBox(const QString& prompt, int buttons = vbOKOnly, const QString& title = {});
QString InputBox(const QString& prompt, const QString& title = {}, const QString& value = {});

}  // namespace prestkt
