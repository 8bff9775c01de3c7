#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <memory>

class QTimer;

// One row to append to a table: columns and their values (text, numbers, or
// null; dates already in their stored text form).
struct TPendingRow {
  QString Table;
  QStringList Columns;
  QVariantList Values;
};

// Every record the console appends (the exchange's call records, the wake-up
// log, the console's own call log) goes through here, so a store that is busy
// never holds up the main thread and never costs a record.
//
// Rows that arrive in one turn of the event loop are written together in one
// transaction at the end of that turn. A write never waits for a lock: when
// another program holds the store, the rows wait in memory and are tried again;
// past kMemoryRows the oldest go to a spill file beside the store, which is also
// where they survive a close or a crash and from where they are written at the
// next start. Rows are written in the order they arrived, whichever of the two
// places they waited in. The operator hears of it once per spell of waiting.
class TPendingWrites : public QObject {
  Q_OBJECT

public:
  static constexpr int kMemoryRows = 10000;
  // Rows per transaction: large enough that a burst costs little, small enough
  // that one write leaves the event loop free again within milliseconds.
  static constexpr int kRowsPerTurn = 500;
  static constexpr int kRetryMs = 500;
  // Rows in one statement on the database server (the file takes one a time).
  static constexpr int kServerRowsPerStatement = 100;

  TPendingWrites();
  ~TPendingWrites() override;

  // The spill file of the store now open. What a former run left in it is
  // written from the next turn of the event loop on.
  void Open(const QString &spillFile);
  // Puts whatever waits in memory into the spill file (the store is about to
  // close or the process to end).
  void Close();

  void Append(const TPendingRow &row);
  // Appends and writes at once, with everything that waited before it. Answers
  // the row's ID when it was written now, -1 when it has to wait.
  qint64 AppendNow(const TPendingRow &row);

  // Writes what waits, one transaction's worth; true when nothing is left.
  bool Flush();

  qint64 Waiting() const { return m_memory.size() + m_spilledRows; }
  qint64 Spilled() const { return m_spilledRows; }
  QString SpillFile() const { return m_spillPath; }

private:
  enum class Outcome { Written, Busy };
  Outcome Begin();
  Outcome WriteRows(const QList<TPendingRow> &rows, qint64 *lastId);
  void ScheduleFlush(int ms);
  void SpillMemory();
  bool SpillRows(const QList<TPendingRow> &rows);
  QList<TPendingRow> ReadSpill(int maxRows, qint64 *endOffset, qint64 *lines);
  void ConsumeSpill(qint64 endOffset, qint64 lines);
  void CountSpill();
  void NoteWaiting(const QString &reason);
  void NoteWritten();

  QList<TPendingRow> m_memory;
  QString m_spillPath;
  qint64 m_spilledRows = 0;
  std::unique_ptr<QTimer> m_timer;
  bool m_waitingNoticed = false;
  bool m_flushing = false;
};
