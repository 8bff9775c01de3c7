#pragma once

#include <QObject>
#include <QString>

#include <memory>

class Tsysset_Form;

// The process around the windows: it prepares the program folder, brings the
// language and the settings up in their order, builds the window logics, and
// closes everything once, whichever way the end comes.
class ConsoleProcess : public QObject {
  Q_OBJECT

public:
  // The folder every shipped default file is seeded from.
  static constexpr char16_t kShippedRoot[] = u":/shipped";

  explicit ConsoleProcess(QObject *parent = nullptr);
  ~ConsoleProcess() override;

  // `home` empty means the executable's folder.
  void Start(const QString &home);

  // The close that asks nothing: settings saved, "Application Close!" logged,
  // the event loop told to end. Runs once; later calls do nothing.
  void SilentClose();

private:
  std::unique_ptr<Tsysset_Form> m_sysset;
  bool m_closed = false;
};
