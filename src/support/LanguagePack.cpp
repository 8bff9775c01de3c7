#include "support/LanguagePack.h"

#include "support/FormLogic.h"
#include "support/IniFile.h"
#include "support/LanguageTable.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/TextCodec.h"

using namespace Qt::StringLiterals;

namespace {
const QString kNull = u"(Null)"_s;

std::array<QString, kExtStatusNameCount> &StatusNames() {
  // Until a pack is loaded the extension states read as the exchange's own
  // Chinese names.
  static std::array<QString, kExtStatusNameCount> names = {
      u"维护忙"_s, u"空闲"_s, u"被叫振铃"_s, u"回叫振铃"_s, u"拨号"_s, u"回铃"_s,
      u"催挂"_s,   u"通话"_s, u"呼叫等待"_s, u"Error"_s,    u"Error"_s};
  return names;
}

void LoadAndApply(int langId) {
  LanguagePack().LoadLanguageFile(AppFileOrShipped(LanguageFileName(langId)));
  ApplyLanguage();
  ReloadTypeNames();
  LanguagePack().LangID = langId;
}
} // namespace

TLanguage_Pack::TLanguage_Pack() {
  m_strings.fill(kNull);
}

bool TLanguage_Pack::LoadLanguageFile(const QString &fileName) {
  IniFile ini;
  const IniFile::LoadResult result = ini.Load(fileName);
  if (result != IniFile::LoadResult::Loaded)
    WriteLog(u"Language file not loaded: "_s + fileName);
  for (int i = 0; i < kLanguageStringCount; ++i) {
    const std::optional<QString> value = ini.Value(u"Public"_s, u"str_%1"_s.arg(i));
    if (!value) {
      m_strings[i] = kNull;
      continue;
    }
    QString text = *value;
    // "Longer than two bytes" counts bytes of the file's code page, where a
    // Chinese character takes two.
    if (text.startsWith(u'|') && ToGbk(text).size() > 2)
      text.remove(0, 1);
    m_strings[i] = text;
  }
  return result == IniFile::LoadResult::Loaded;
}

QString TLanguage_Pack::Str(int index) const {
  if (index < 0 || index >= kLanguageStringCount)
    return kNull;
  return m_strings[index];
}

TLanguage_Pack &LanguagePack() {
  static TLanguage_Pack pack;
  return pack;
}

QString LangText(int key) {
  return LanguagePack().Str(key);
}

QString LangFormat(int key, std::initializer_list<QVariant> args) {
  return FormatText(LangText(key), args);
}

QString FormatText(const QString &format, std::initializer_list<QVariant> args) {
  QString out;
  out.reserve(format.size() + 16);
  auto next = args.begin();
  qsizetype i = 0;
  const qsizetype n = format.size();
  while (i < n) {
    const QChar ch = format[i];
    if (ch != u'%') {
      out += ch;
      ++i;
      continue;
    }
    if (i + 1 < n && format[i + 1] == u'%') {
      out += u'%';
      i += 2;
      continue;
    }
    // %[-][width][.precision]conversion
    qsizetype j = i + 1;
    bool left = false;
    if (j < n && format[j] == u'-') {
      left = true;
      ++j;
    }
    int width = 0;
    while (j < n && format[j].isDigit() && width < 1000)
      width = width * 10 + format[j++].digitValue();
    int precision = -1;
    if (j < n && format[j] == u'.') {
      precision = 0;
      ++j;
      while (j < n && format[j].isDigit() && precision < 100)
        precision = precision * 10 + format[j++].digitValue();
    }
    if (j >= n || QStringView(u"sdufx").indexOf(format[j].toLower()) < 0 || next == args.end()) {
      // Not a conversion we know, or no value left: keep the text as written.
      out += ch;
      ++i;
      continue;
    }
    const QChar conv = format[j].toLower();
    const QVariant &value = *next++;
    QString piece;
    bool isNumber = false;
    const qlonglong number = value.toLongLong(&isNumber);
    if (conv == u's') {
      piece = value.toString();
      if (precision >= 0)
        piece.truncate(precision);
    } else if (conv == u'f') {
      piece = QString::number(value.toDouble(), 'f', precision < 0 ? 2 : precision);
    } else if (!isNumber) {
      piece = value.toString();
    } else if (conv == u'x') {
      piece = QString::number(number, 16).toUpper();
    } else {
      piece = QString::number(qAbs(number));
      // For a number the precision is its least count of digits: "%.2d" of 7 is "07".
      if (precision > 0)
        piece = piece.rightJustified(precision, u'0');
      if (number < 0)
        piece.prepend(u'-');
    }
    if (piece.size() < width)
      piece = left ? piece.leftJustified(width) : piece.rightJustified(width);
    out += piece;
    i = j + 1;
  }
  return out;
}

QString LanguageFileName(int langId) {
  return langId == 1 ? u"ini/lang_English.lan"_s : u"ini/lang_chinese.lan"_s;
}

void LanguageStart() {
  IniFile ini;
  ini.Load(SettingsFilePath());
  const int id = ini.ReadInteger(u"Lang"_s, u"LangID"_s, 0);
  LanguagePack().LangID = id;
  LanguagePack().LoadLanguageFile(AppFileOrShipped(LanguageFileName(id)));
}

void LanguageFirstShow() {
  const int id = SettingsIni().ReadInteger(u"Lang"_s, u"LangID"_s, 0);
  LoadAndApply(id != 0 ? 1 : 0);
}

bool SelectLanguage(int langId) {
  langId = langId == 1 ? 1 : 0;
  if (LanguagePack().LangID == langId)
    return false;
  LoadAndApply(langId);
  return true;
}

void ApplyLanguage() {
  for (const TLanguageRow &row : LanguageTable()) {
    const QString text = LangText(row.Key);
    for (TFormLogic *form : LiveForms(QLatin1StringView(row.Form)))
      form->SetControlText(QLatin1StringView(row.Control), row.Property, row.Index, text);
  }
  NotifyLanguageApplied();
}

void ReloadTypeNames() {
  auto &names = StatusNames();
  for (int i = 0; i < kExtStatusNameCount; ++i)
    names[i] = LangText(741 + i);
}

const std::array<QString, kExtStatusNameCount> &ExtStatusNames() {
  return StatusNames();
}
