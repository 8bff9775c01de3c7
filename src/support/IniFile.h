#pragma once

#include <QHash>
#include <QList>
#include <QString>

#include <optional>

// An INI file as the console's settings and language packs use it: sections in
// square brackets, one key=value a line, names compared without regard to case,
// the first of two equal keys winning. Writing a key rewrites its own line (or
// adds one to its section) and leaves every other line as it was, comments,
// unknown keys and odd lines included. Lines the reader can't make sense of are
// kept and ignored.
class IniFile {
public:
  // TooLarge and NotText: the file is refused whole (see TextFile.h) and the INI
  // is empty.
  enum class LoadResult { Loaded, Missing, Unreadable, TooLarge, NotText };

  IniFile() = default;

  // Reads a file (UTF-8 or GBK). A missing file gives an empty INI.
  LoadResult Load(const QString &path);
  void SetText(const QString &text);

  // Writes the whole file atomically, UTF-8, keeping the line ends it came with.
  // `ownerOnly` restricts the file to its owner (it may hold a password).
  bool Save(const QString &path, bool ownerOnly, QString *error = nullptr) const;
  QString Text() const;

  std::optional<QString> Value(const QString &section, const QString &key) const;
  QString ReadString(const QString &section, const QString &key, const QString &def) const;
  // Integers read as decimal, or hexadecimal with "$" or "0x"; anything else gives def.
  int ReadInteger(const QString &section, const QString &key, int def) const;
  bool ReadBool(const QString &section, const QString &key, bool def) const;

  void WriteString(const QString &section, const QString &key, const QString &value);
  void WriteInteger(const QString &section, const QString &key, int value);
  void WriteBool(const QString &section, const QString &key, bool value);

  qsizetype LineCount() const { return m_lines.size(); }

private:
  struct Line {
    enum Kind { Other, Section, Key } kind = Other;
    QString raw;     // the line as read, for lines that are kept
    QString name;    // section or key name as spelled
    QString value;   // for keys: the value, trimmed
    QString section; // for keys: the lower-cased section they are in
  };

  static Line Parse(const QString &text, const QString &section);
  void Reindex();
  qsizetype FindSection(const QString &sectionLower) const;
  qsizetype EndOfSection(qsizetype headerLine) const;

  QList<Line> m_lines;
  QHash<QString, qsizetype> m_keyIndex; // "section\nkey" (lower case) -> line
  bool m_crlf = false;
};
