#include "Messages.h"

#include <cstdio>

namespace prestkt {

namespace {

int DefaultAnswer(int buttons) {
  const int kind = buttons & 7;
  const bool second = buttons & vbDefaultButton2;
  switch (kind) {
    case vbOKCancel: return second ? vbCancel : vbOK;
    case vbYesNoCancel: return second ? vbNo : vbYes;
    case vbYesNo: return second ? vbNo : vbYes;
    default: return vbOK;
  }
}

class HeadlessMessages : public MessageService {
 public:
  int MsgBox(const QString& prompt, int buttons, const QString& title) override {
    std::fprintf(stderr, "[%s] %s\n", qPrintable(title), qPrintable(prompt));
    return DefaultAnswer(buttons);
  }
  QString InputBox(const QString&, const QString&, const QString&) override { return {}; }
  QString OpenFileName(const QString&, const QString&, const QString&) override { return {}; }
  QString SaveFileName(const QString&, const QString&, const QString&) override { return {}; }
};

std::shared_ptr<MessageService>& Current() {
  static std::shared_ptr<MessageService> service = std::make_shared<HeadlessMessages>();
  return service;
}

}  // namespace

void SetMessageService(std::shared_ptr<MessageService> service) {
  Current() = service ? std::move(service) : std::make_shared<HeadlessMessages>();
}

MessageService& Messages() { return *Current(); }

QString AppTitle() { return QStringLiteral("OCPrestKT"); }

int MessageBoxVorn(const QString& prompt, int buttons, const QString& titolo, const QString&, int) {
  const QString title = titolo.trimmed().isEmpty() ? QStringLiteral("VORN") : titolo;
  return Messages().MsgBox(prompt, buttons, title);
}

int MsgBox(const QString& prompt, int buttons, const QString& title) {
  return Messages().MsgBox(prompt, buttons, title.isEmpty() ? AppTitle() : title);
}

QString InputBox(const QString& prompt, const QString& title, const QString& value) {
  return Messages().InputBox(prompt, title.isEmpty() ? AppTitle() : title, value);
}

}  // namespace prestkt
