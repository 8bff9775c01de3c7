#pragma once

#include <QString>
#include <QVariant>

#include <array>
#include <initializer_list>

inline constexpr int kLanguageStringCount = 1001; // str_0 .. str_1000
inline constexpr int kExtStatusNameCount = 11;    // str_741 .. str_751

// The texts of one language: an INI file with the keys str_0..str_1000 in
// section [Public]. LangID 0 is Chinese, 1 English.
class TLanguage_Pack {
public:
  TLanguage_Pack();

  int LangID = 0;

  // Fills every string from the file; a missing file or key gives "(Null)".
  // A value longer than two bytes loses a leading "|", which lets a text start
  // with blanks that an INI reader would otherwise trim. Returns false when the
  // file is missing or unreadable.
  bool LoadLanguageFile(const QString &fileName);

  QString Str(int index) const;

private:
  std::array<QString, kLanguageStringCount> m_strings;
};

// The process-wide pack.
TLanguage_Pack &LanguagePack();

// The text of str_<key> in the language in force.
QString LangText(int key);

// str_<key> with values put in for its %s / %d conversions, in the order given.
QString LangFormat(int key, std::initializer_list<QVariant> args);

// printf-style formatting as the packs write it: %s %d %u %x %f %% with optional
// '-' flag, width and precision. A conversion with no value left stays as it is,
// so a damaged pack can't crash the console.
QString FormatText(const QString &format, std::initializer_list<QVariant> args);

// The pack file for a language: "ini/lang_English.lan" for 1, else "ini/lang_chinese.lan".
QString LanguageFileName(int langId);

// Loads the pack of a language (0 Chinese, 1 English), applies it to every live
// window and the status names, and makes it the language in force. Which one the
// console starts with is the settings' business (LanguageStart, Settings.h).
void LoadLanguage(int langId);

// The menu's language choice (0 Chinese, 1 English). Choosing the language in
// force does nothing and reads no file. Returns true when it switched.
bool SelectLanguage(int langId);

// Sets the texts of every control that takes language texts, on every live window.
void ApplyLanguage();

// Copies str_741..str_751 into the extension status names.
void ReloadTypeNames();
const std::array<QString, kExtStatusNameCount> &ExtStatusNames();
