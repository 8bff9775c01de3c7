#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <functional>

// A fresh program folder for one test: the process-wide settings, language,
// clock and log memo are reset, and AppPath points into a temporary folder
// that goes away afterwards.
class TestHome {
public:
  TestHome();
  ~TestHome();

  QString Path() const; // with a trailing '/'
  QString File(const QString &relative) const;
  void Write(const QString &relative, const QByteArray &bytes) const;
  QByteArray Read(const QString &relative) const;
  // Copies one of the shipped files (resources/...) into the home.
  void CopyShipped(const QString &relative) const;
  // The shipped Chinese pack, copied in and loaded, with its status names.
  void UseChinese() const;

  // Run at the end of every home's set-up, after the settings are reset: a
  // suite that runs on another store backend points the settings at it here.
  static std::function<void()> &AfterReset();

private:
  QTemporaryDir m_dir;
};

// Path of a file in the source tree.
QString SourcePath(const QString &relative);
