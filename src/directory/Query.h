#pragma once

#include "support/TDateTime.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

// A static cursor over one statement, in the manner the console's windows use
// their queries: set SQL, Open, walk with First/Next/Prior/Last and Eof, read
// fields by name; Append or Edit, set fields, Post; Delete; Locate; Refresh.
// Rows are read whole at Open. Edits go to the one table the statement reads
// from, by its ID column. Every failure raises EDatabaseError.
//
// Dates: a date column holds the text "yyyy-MM-dd hh:mm:ss"; AsDateTime reads it
// (NULL and the zero date both read as 0), AsString shows it in the console's
// format, dropping a midnight time.
class TADOQuery {
public:
  explicit TADOQuery(const QString &name = QString());

  QString Name;
  QString SQL;

  void Open();
  void Close();
  void ExecSQL(); // a statement that returns no rows; returns nothing
  int RowsAffected() const { return m_rowsAffected; }
  bool Active() const { return m_active; }

  // Navigation.
  void First();
  void Last();
  void Next();
  void Prior();
  bool Eof() const;
  bool Bof() const;
  bool IsEmpty() const { return m_rows.isEmpty(); }
  int RecordCount() const { return int(m_rows.size()); }
  int RecNo() const { return m_pos + 1; } // 1-based; 0 when empty
  void SetRecNo(int recNo);

  // Fields of the current row.
  QStringList FieldNames() const { return m_fields; }
  bool HasField(const QString &name) const { return FieldIndex(name) >= 0; }
  QVariant Value(const QString &name) const;
  bool IsNull(const QString &name) const;
  QString AsString(const QString &name) const;
  int AsInteger(const QString &name) const;
  bool AsBoolean(const QString &name) const;
  TDateTime AsDateTime(const QString &name) const;

  // Editing the current row, or a new one.
  enum class State { Browse, Insert, Edit };
  State EditState() const { return m_state; }
  void Append();
  void Edit();
  void SetString(const QString &name, const QString &value);
  void SetInteger(const QString &name, int value);
  void SetBoolean(const QString &name, bool value);
  void SetDateTime(const QString &name, TDateTime value); // 0 stores NULL
  void SetNull(const QString &name);
  void Post();
  void Cancel();
  void Delete();

  // Moves to the first row whose field equals the value (text compared without
  // regard to case); false and no move when none does.
  bool Locate(const QString &name, const QVariant &value);
  // Reads the rows again and stays on the row with the same ID where it can.
  void Refresh();

private:
  int FieldIndex(const QString &name) const;
  const QVariant &Cell(const QString &name) const;
  QString BaseTable() const;
  void Load();
  void SetField(const QString &name, const QVariant &value);

  bool m_active = false;
  QStringList m_fields;
  QStringList m_dateFields; // lower-case names of the fields declared as dates
  QList<QVariantList> m_rows;
  int m_pos = -1;
  bool m_eof = true;
  bool m_bof = true;
  State m_state = State::Browse;
  QVariantList m_editRow;
  QList<int> m_changed;
  int m_rowsAffected = 0;
};
