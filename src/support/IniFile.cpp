#include "support/IniFile.h"

#include "support/TextCodec.h"
#include "support/TextFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace {
QString IndexKey(const QString &sectionLower, const QString &key) {
  return sectionLower + u'\n' + key.toLower();
}

// Values go on one line; a line break inside a value would tear the file.
QString OneLine(QString value) {
  value.replace(u"\r\n"_s, u" "_s);
  value.replace(u'\r', u' ');
  value.replace(u'\n', u' ');
  value.replace(QChar(0), u' ');
  return value;
}
} // namespace

IniFile::Line IniFile::Parse(const QString &text, const QString &section) {
  Line line;
  line.raw = text;
  // A NUL ends the line's content, as it would for any C reader of the file.
  QString content = text;
  if (const qsizetype nul = content.indexOf(QChar(0)); nul >= 0)
    content.truncate(nul);
  const QString t = content.trimmed();
  if (t.isEmpty() || t.startsWith(u';'))
    return line;
  if (t.startsWith(u'[')) {
    // A header without its ']' still names its section; being lenient here keeps
    // the keys under it where the writer of the file meant them.
    const qsizetype close = t.indexOf(u']');
    line.kind = Line::Section;
    line.name = (close < 0 ? t.mid(1) : t.mid(1, close - 1)).trimmed();
    return line;
  }
  const qsizetype eq = t.indexOf(u'=');
  if (eq <= 0)
    return line; // no '=' or no name: a line we keep and ignore
  line.kind = Line::Key;
  line.name = t.left(eq).trimmed();
  line.value = t.mid(eq + 1).trimmed();
  line.section = section;
  return line;
}

void IniFile::Reindex() {
  m_keyIndex.clear();
  QString section;
  for (qsizetype i = 0; i < m_lines.size(); ++i) {
    Line &line = m_lines[i];
    if (line.kind == Line::Section) {
      section = line.name.toLower();
    } else if (line.kind == Line::Key) {
      line.section = section;
      const QString k = IndexKey(section, line.name);
      if (!m_keyIndex.contains(k))
        m_keyIndex.insert(k, i);
    }
  }
}

void IniFile::SetText(const QString &text) {
  m_lines.clear();
  m_crlf = text.contains(u"\r\n"_s);
  QStringList rows = text.split(u'\n');
  if (!rows.isEmpty() && rows.last().isEmpty())
    rows.removeLast();
  QString section;
  for (QString &row : rows) {
    if (row.endsWith(u'\r'))
      row.chop(1);
    Line line = Parse(row, section);
    if (line.kind == Line::Section)
      section = line.name.toLower();
    m_lines << std::move(line);
  }
  Reindex();
}

IniFile::LoadResult IniFile::Load(const QString &path) {
  QByteArray bytes;
  const TextFileStatus status = ReadTextFile(path, &bytes);
  SetText(DecodeFileText(bytes));
  switch (status) {
  case TextFileStatus::Read:
    return LoadResult::Loaded;
  case TextFileStatus::Missing:
    return LoadResult::Missing;
  case TextFileStatus::TooLarge:
    return LoadResult::TooLarge;
  case TextFileStatus::NotText:
    return LoadResult::NotText;
  case TextFileStatus::Unreadable:
    break;
  }
  return LoadResult::Unreadable;
}

QString IniFile::Text() const {
  const QString eol = m_crlf ? u"\r\n"_s : u"\n"_s;
  QString out;
  for (const Line &line : m_lines)
    out += line.raw + eol;
  return out;
}

bool IniFile::Save(const QString &path, bool ownerOnly, QString *error) const {
  const QString folder = QFileInfo(path).absolutePath();
  if (!QDir().mkpath(folder)) {
    if (error)
      *error = u"cannot create folder "_s + folder;
    return false;
  }
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) {
    if (error)
      *error = file.errorString();
    return false;
  }
  if (ownerOnly)
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
  file.write(Text().toUtf8());
  if (!file.commit()) {
    if (error)
      *error = file.errorString();
    return false;
  }
  if (ownerOnly)
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
  return true;
}

std::optional<QString> IniFile::Value(const QString &section, const QString &key) const {
  const auto it = m_keyIndex.constFind(IndexKey(section.toLower(), key));
  if (it == m_keyIndex.cend())
    return std::nullopt;
  return m_lines[*it].value;
}

QString IniFile::ReadString(const QString &section, const QString &key, const QString &def) const {
  return Value(section, key).value_or(def);
}

int IniFile::ReadInteger(const QString &section, const QString &key, int def) const {
  const std::optional<QString> v = Value(section, key);
  if (!v)
    return def;
  QString t = v->trimmed();
  bool ok = false;
  int result = 0;
  const bool negative = t.startsWith(u'-');
  const QString body = negative ? t.mid(1) : t;
  if (body.startsWith(u'$'))
    result = body.mid(1).toInt(&ok, 16);
  else if (body.startsWith(u"0x"_s, Qt::CaseInsensitive))
    result = body.mid(2).toInt(&ok, 16);
  else
    result = body.toInt(&ok, 10);
  if (!ok || body.startsWith(u'+') || body.startsWith(u'-'))
    return def;
  return negative ? -result : result;
}

bool IniFile::ReadBool(const QString &section, const QString &key, bool def) const {
  return ReadInteger(section, key, def ? 1 : 0) != 0;
}

qsizetype IniFile::FindSection(const QString &sectionLower) const {
  for (qsizetype i = 0; i < m_lines.size(); ++i) {
    if (m_lines[i].kind == Line::Section && m_lines[i].name.toLower() == sectionLower)
      return i;
  }
  return -1;
}

// The line after the last key of the section that starts at headerLine, so that
// a new key joins its section ahead of any blank lines or comments that follow.
qsizetype IniFile::EndOfSection(qsizetype headerLine) const {
  qsizetype end = headerLine + 1;
  for (qsizetype i = headerLine + 1; i < m_lines.size(); ++i) {
    if (m_lines[i].kind == Line::Section)
      break;
    if (m_lines[i].kind == Line::Key)
      end = i + 1;
  }
  return end;
}

void IniFile::WriteString(const QString &section, const QString &key, const QString &value) {
  const QString sectionLower = section.toLower();
  const QString v = OneLine(value);
  const QString k = OneLine(key).trimmed();
  Line line;
  line.kind = Line::Key;
  line.name = k;
  line.value = v.trimmed();
  line.section = sectionLower;
  line.raw = k + u'=' + v;

  const auto it = m_keyIndex.constFind(IndexKey(sectionLower, k));
  if (it != m_keyIndex.cend()) {
    m_lines[*it] = std::move(line);
    return;
  }
  qsizetype header = FindSection(sectionLower);
  if (header < 0) {
    Line head;
    head.kind = Line::Section;
    head.name = section;
    head.raw = u'[' + section + u']';
    m_lines << std::move(head);
    header = m_lines.size() - 1;
  }
  m_lines.insert(EndOfSection(header), std::move(line));
  Reindex();
}

void IniFile::WriteInteger(const QString &section, const QString &key, int value) {
  WriteString(section, key, QString::number(value));
}

void IniFile::WriteBool(const QString &section, const QString &key, bool value) {
  WriteString(section, key, value ? u"1"_s : u"0"_s);
}
