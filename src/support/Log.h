#pragma once

#include <QDate>
#include <QObject>
#include <QStringList>

// The Log page's memo. It holds at most 2000 lines: the line that passes that
// clears it whole, the file keeps everything.
class TLogMemo : public QObject {
  Q_OBJECT

public:
  static constexpr int kMaxLines = 2000;

  const QStringList &Lines() const { return m_lines; }
  void Append(const QString &line);
  void Clear();

signals:
  void lineAdded(const QString &line);
  void cleared();

private:
  QStringList m_lines;
};

TLogMemo &LogMemo();

// Whether lines are written at all. The log stands below everything, so it does
// not read the settings: their owner hands it the switch (the setting Debug,
// nonzero for on), read at every line so a change counts at once. Without a
// switch the log is off.
void SetLogSwitch(const int *on);
// A caller whose line is costly to build asks first.
bool LogEnabled();

// The one trace call: when the setting Debug is on, the line goes to the memo and
// to the file of the day. Any error on the file is swallowed.
void WriteLog(const QString &text);

// The file part: opened, appended and closed for each line, so nothing is lost
// if the program dies.
void WriteLogFile(const QString &text);

// "<program folder>/TrunkdeskLog<yyyy-MM-dd>.ini"
QString LogFileName(const QDate &day);

// Gathers the file part of the lines written on this thread while it lives and
// appends them with one open of the file when it ends. A burst of datagrams logs
// a line each; opening the file for each would cost more than handling them.
// The memo still gets each line at once. Nested batches join the outer one.
class TLogBatch {
public:
  TLogBatch();
  ~TLogBatch();
  TLogBatch(const TLogBatch &) = delete;
  TLogBatch &operator=(const TLogBatch &) = delete;
};
