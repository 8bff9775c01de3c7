#include "common/TestHome.h"

#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

TestHome::TestHome() {
  SetAppPath(m_dir.path());
  SysConfig() = TSysConfig{};
  SettingsBindings() = TSettingsBindings{};
  LanguagePack() = TLanguage_Pack{};
  SetClock({});
  LogMemo().Clear();
  if (AfterReset())
    AfterReset()();
}

std::function<void()> &TestHome::AfterReset() {
  static std::function<void()> hook;
  return hook;
}

TestHome::~TestHome() {
  SetClock({});
}

QString TestHome::Path() const {
  return AppPath();
}

QString TestHome::File(const QString &relative) const {
  return Path() + relative;
}

void TestHome::Write(const QString &relative, const QByteArray &bytes) const {
  const QString path = File(relative);
  QDir().mkpath(QFileInfo(path).absolutePath());
  QFile file(path);
  if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
    file.write(bytes);
}

QByteArray TestHome::Read(const QString &relative) const {
  QFile file(File(relative));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestHome::CopyShipped(const QString &relative) const {
  QFile source(SourcePath(u"resources/"_s + relative));
  if (source.open(QIODevice::ReadOnly))
    Write(relative, source.readAll());
}

void TestHome::UseChinese() const {
  CopyShipped(u"ini/lang_chinese.lan"_s);
  LanguagePack().LoadLanguageFile(AppFile(u"ini/lang_chinese.lan"_s));
  ReloadTypeNames();
}

QString SourcePath(const QString &relative) {
  return QStringLiteral(TRUNKDESK_SOURCE_DIR) + u'/' + relative;
}
