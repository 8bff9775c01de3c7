#include "support/Shell.h"

#include "support/Log.h"

using namespace Qt::StringLiterals;

namespace {
class QuietShell final : public Shell {
public:
  void Balloon(const QString &title, const QString &text, int, BalloonIcon) override {
    WriteLog(title + u": "_s + text);
  }
  void Message(MessageKind, const QString &text) override { WriteLog(text); }
  bool Question(const QString &text) override {
    WriteLog(text);
    return false;
  }
  QString ChooseOpenFile(const QString &, const QString &) override { return QString(); }
  void Open(const QString &target, const QString &parameters) override {
    WriteLog(u"Open: "_s + target + u' ' + parameters);
  }
  void HintAt(const QString &title, const QString &text, int, int, int) override {
    WriteLog(title + u": "_s + text);
  }
  void RingStart() override {}
  void RingStop() override {}
};

Shell *&Installed() {
  static Shell *shell = nullptr;
  return shell;
}
} // namespace

Shell &TheShell() {
  static QuietShell quiet;
  Shell *shell = Installed();
  return shell ? *shell : quiet;
}

void SetShell(Shell *shell) {
  Installed() = shell;
}

void ApplicationHandleException(const std::exception &error) {
  const QString text = QString::fromUtf8(error.what());
  WriteLog(u"Error: "_s + text);
  if (!dynamic_cast<const ToldError *>(&error))
    TheShell().Message(MessageKind::Error, text);
}
