#include "support/Settings.h"

#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Shell.h"
#include "support/TextFile.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {
IniFile &OpenIni() {
  static IniFile ini;
  return ini;
}

std::array<QString, kStateCodeCount> &StateCodeTable() {
  static std::array<QString, kStateCodeCount> table = [] {
    std::array<QString, kStateCodeCount> t;
    t.fill(u"---"_s);
    return t;
  }();
  return table;
}

constexpr std::array<int, 6> kDefaultColWidths{20, 100, 100, 100, 100, 100};

bool Refused(IniFile::LoadResult result) {
  return result == IniFile::LoadResult::TooLarge || result == IniFile::LoadResult::NotText;
}

TextFileStatus AsStatus(IniFile::LoadResult result) {
  return result == IniFile::LoadResult::TooLarge ? TextFileStatus::TooLarge
                                                 : TextFileStatus::NotText;
}

// A settings file refused for its size or content is never written over: the
// console's own settings go to a file beside it, and are read from there while
// the refused one is still in the way.
IniFile::LoadResult LoadUsable(IniFile &ini, QString *path) {
  const IniFile::LoadResult result = ini.Load(*path);
  if (!Refused(result))
    return result;
  *path = ReplacementPath(*path);
  if (Refused(ini.Load(*path)))
    ini.SetText(QString());
  return result;
}
} // namespace

TSysConfig &SysConfig() {
  static TSysConfig config;
  // The log sits below the settings; it is told where its switch is.
  static const bool logWired = (SetLogSwitch(&config.Debug), true);
  Q_UNUSED(logWired);
  return config;
}

TSettingsBindings &SettingsBindings() {
  static TSettingsBindings bindings;
  return bindings;
}

const IniFile &SettingsIni() {
  return OpenIni();
}

void LoadConfig(TSysConfig &c) {
  IniFile &ini = OpenIni();
  QString path = SettingsFilePath();
  const IniFile::LoadResult result = LoadUsable(ini, &path);
  if (result == IniFile::LoadResult::Unreadable) {
    WriteLog(u"LoadConfig: cannot read "_s + path);
    TheShell().Message(MessageKind::Error, LangText(527));
    return;
  }
  if (Refused(result)) {
    const QString problem = TextFileProblem(AsStatus(result), SettingsFilePath());
    WriteLog(u"LoadConfig: "_s + problem);
    TheShell().Message(MessageKind::Warning,
                       problem + u". The console uses the settings of %1 (defaults where it has "
                                 u"none) and saves its settings there; the file itself is left "
                                 u"as it is."_s.arg(QFileInfo(path).fileName()));
  }

  c.RecordIP = ini.ReadString(u"Record"_s, u"IP"_s, u"127.0.0.1"_s);
  c.Host = ini.ReadString(u"host"_s, u"IP"_s, u"192.168.0.144"_s);
  c.Port = ini.ReadString(u"host"_s, u"Port"_s, u"5003"_s);
  c.UserName = ini.ReadString(u"User"_s, u"userName"_s, QString());
  c.Password = ini.ReadString(u"User"_s, u"password"_s, QString());
  c.RecPwdFlag = ini.ReadBool(u"User"_s, u"recPwdFlag"_s, false);
  c.OutNo = ini.ReadString(u"other"_s, u"outNo"_s, u"9"_s);
  c.LDNo = ini.ReadString(u"other"_s, u"LDNo"_s, u"0"_s);
  c.CompanyCaption = ini.ReadString(u"company"_s, u"caption"_s, QString());
  c.CompanyURL = ini.ReadString(u"company"_s, u"URL"_s, QString());
  c.SMSReturnNos = ini.ReadString(u"GSM"_s, u"SMSReturnNos"_s, QString());
  c.GSMCompany = ini.ReadString(u"GSM"_s, u"company"_s, QString());
  for (int i = 0; i < 6; ++i)
    c.ColWidths[i] =
        ini.ReadInteger(u"MainDBgrid"_s, u"ColWidths%1"_s.arg(i), kDefaultColWidths[i]);
  c.DBFile = ini.ReadString(u"DB"_s, u"DBFile"_s, AppPath() + u"Database/Notes_DB.db"_s);
  c.RingFlag = ini.ReadInteger(u"Ring"_s, u"Flag"_s, 0);
  c.IncomStyle = ini.ReadInteger(u"Ring"_s, u"IncomStyle"_s, 0);

  const TSettingsBindings &b = SettingsBindings();
  if (b.IncomStyleLoaded)
    b.IncomStyleLoaded(c.IncomStyle);

  c.Debug = ini.ReadInteger(u"System"_s, u"Debug"_s, 0);
  c.isAGMode = ini.ReadBool(u"System"_s, u"isAGMode"_s, false);

  if (b.ExtsGridColumnWidths && b.SetExtsGridColumnWidth) {
    const QList<int> widths = b.ExtsGridColumnWidths();
    for (int col = 0; col < widths.size(); ++col)
      b.SetExtsGridColumnWidth(
          col, ini.ReadInteger(u"AdvStringGrid_Exts"_s, u"ColWidths%1"_s.arg(col), widths[col]));
  }

  for (int i = 0; i < kTypeVisibleCount; ++i)
    c.TypeVisible[i] = ini.ReadBool(u"ExtsPanel"_s, u"TypeVisible%1"_s.arg(i), true);
  c.LinkURL = ini.ReadString(u"Other"_s, u"LinkURL"_s, QString());
  c.IMHost = ini.ReadString(u"Other"_s, u"IMHost"_s, QString());

  // --- [FrontDesk] ---
  c.LastShiftReport = TDateTime();
  TryStrToDateTime(ini.ReadString(u"FrontDesk"_s, u"LastShiftReport"_s, QString()),
                   &c.LastShiftReport);
  // A class below -1 is as good as unset.
  c.VacantClass = qMax(-1, ini.ReadInteger(u"FrontDesk"_s, u"VacantClass"_s, -1));
  c.OccupiedClass = qMax(-1, ini.ReadInteger(u"FrontDesk"_s, u"OccupiedClass"_s, -1));
  // --- Front desk: wake-up follow-up. A hand-edited value out of range is
  // brought back into it rather than retrying every minute or for ever.
  c.WakeFollowUp = ini.ReadInteger(u"FrontDesk"_s, u"WakeFollowUp"_s, 0) != 0 ? 1 : 0;
  c.WakeRetry = ini.ReadInteger(u"FrontDesk"_s, u"WakeRetry"_s, 0) != 0 ? 1 : 0;
  c.WakeRetryMinutes = qBound(1, ini.ReadInteger(u"FrontDesk"_s, u"WakeRetryMinutes"_s, 5), 240);
  c.WakeRetryMax = qBound(1, ini.ReadInteger(u"FrontDesk"_s, u"WakeRetryMax"_s, 2), 10);
  // --- end of the wake-up follow-up block ---
  // --- [Api] --- A port out of range is as good as the default.
  c.ApiEnabled = ini.ReadInteger(u"Api"_s, u"Enabled"_s, 0) != 0;
  c.ApiPort = ini.ReadInteger(u"Api"_s, u"Port"_s, 5010);
  if (c.ApiPort < 1 || c.ApiPort > 65535)
    c.ApiPort = 5010;
  c.ApiListen = ini.ReadString(u"Api"_s, u"Listen"_s, u"127.0.0.1"_s).trimmed();
  if (c.ApiListen.isEmpty())
    c.ApiListen = u"127.0.0.1"_s;
  c.ApiToken = ini.ReadString(u"Api"_s, u"Token"_s, QString()).trimmed();
  // --- end of [Api] ---

  // --- [DB] shared store ---
  c.DBDriver = ini.ReadString(u"DB"_s, u"Driver"_s, QString()).trimmed();
  c.DBHost = ini.ReadString(u"DB"_s, u"Host"_s, QString());
  c.DBPort = ini.ReadInteger(u"DB"_s, u"Port"_s, 5432);
  if (c.DBPort < 1 || c.DBPort > 65535)
    c.DBPort = 5432;
  c.DBDatabase = ini.ReadString(u"DB"_s, u"Database"_s, QString());
  c.DBUser = ini.ReadString(u"DB"_s, u"User"_s, QString());
  c.DBPassword = ini.ReadString(u"DB"_s, u"Password"_s, QString());
  c.DBService = ini.ReadString(u"DB"_s, u"Service"_s, QString()).trimmed();
  // --- end of the shared store block ---
}

QString ApiTokenRefusal(const QString &token) {
  if (token.size() < kApiMinTokenLength)
    return u"[Api] Token must have at least %1 characters"_s.arg(kApiMinTokenLength);
  return {};
}

void SaveConfig(TSysConfig &c) {
  // The file is read anew so that lines edited by hand while the console ran,
  // and keys this version doesn't know, survive the save.
  IniFile ini;
  QString path = SettingsFilePath();
  if (LoadUsable(ini, &path) == IniFile::LoadResult::Unreadable) {
    WriteLog(u"SaveConfig: cannot read "_s + path);
    TheShell().Message(MessageKind::Error, LangText(528));
    return;
  }

  ini.WriteString(u"Record"_s, u"IP"_s, c.RecordIP);
  ini.WriteString(u"host"_s, u"IP"_s, c.Host);
  ini.WriteString(u"host"_s, u"Port"_s, c.Port);
  ini.WriteString(u"user"_s, u"userName"_s, c.UserName);
  ini.WriteString(u"user"_s, u"passWord"_s, c.Password);
  ini.WriteBool(u"user"_s, u"recPwdFlag"_s, c.RecPwdFlag);
  ini.WriteString(u"other"_s, u"outNo"_s, c.OutNo);
  ini.WriteString(u"other"_s, u"lDNo"_s, c.LDNo);
  ini.WriteString(u"company"_s, u"caption"_s, c.CompanyCaption);
  ini.WriteString(u"Company"_s, u"URL"_s, c.CompanyURL);
  ini.WriteString(u"GSM"_s, u"SMSReturnNos"_s, c.SMSReturnNos);
  ini.WriteString(u"GSM"_s, u"company"_s, c.GSMCompany);
  for (int i = 0; i < 6; ++i)
    ini.WriteInteger(u"MainDBgrid"_s, u"ColWidths%1"_s.arg(i), c.ColWidths[i]);
  ini.WriteString(u"DB"_s, u"DBFile"_s, c.DBFile);
  ini.WriteInteger(u"Ring"_s, u"Flag"_s, c.RingFlag);
  ini.WriteInteger(u"Ring"_s, u"IncomStyle"_s, c.IncomStyle);

  const TSettingsBindings &b = SettingsBindings();
  ini.WriteInteger(u"Lang"_s, u"LangID"_s, b.LanguageId ? b.LanguageId() : LanguagePack().LangID);

  if (b.ExtsGridColumnWidths) {
    const QList<int> widths = b.ExtsGridColumnWidths();
    for (int col = 0; col < widths.size(); ++col)
      ini.WriteInteger(u"AdvStringGrid_Exts"_s, u"ColWidths%1"_s.arg(col), widths[col]);
  }

  if (b.ExtsPanelChecks) {
    for (const auto &[type, checked] : b.ExtsPanelChecks()) {
      if (type >= 0 && type < kTypeVisibleCount)
        c.TypeVisible[type] = checked;
    }
  }
  for (int i = 0; i < kTypeVisibleCount; ++i)
    ini.WriteBool(u"ExtsPanel"_s, u"TypeVisible%1"_s.arg(i), c.TypeVisible[i]);

  ini.WriteString(u"Other"_s, u"LinkURL"_s, b.LinkUrlText ? b.LinkUrlText() : c.LinkURL);

  // --- [FrontDesk] ---
  if (!c.LastShiftReport.IsZero())
    ini.WriteString(u"FrontDesk"_s, u"LastShiftReport"_s, FormatFull(c.LastShiftReport));
  // The classes are written once the house has set them up, so a console that
  // never uses them keeps the file it always wrote.
  if (c.FrontDeskInUse() ||
      !ini.ReadString(u"FrontDesk"_s, u"VacantClass"_s, QString()).isEmpty() ||
      !ini.ReadString(u"FrontDesk"_s, u"OccupiedClass"_s, QString()).isEmpty()) {
    ini.WriteInteger(u"FrontDesk"_s, u"VacantClass"_s, c.VacantClass);
    ini.WriteInteger(u"FrontDesk"_s, u"OccupiedClass"_s, c.OccupiedClass);
  }
  // --- Front desk: wake-up follow-up, written like the classes once in use ---
  if (c.WakeFollowUp || c.WakeRetry ||
      !ini.ReadString(u"FrontDesk"_s, u"WakeFollowUp"_s, QString()).isEmpty()) {
    ini.WriteInteger(u"FrontDesk"_s, u"WakeFollowUp"_s, c.WakeFollowUp);
    ini.WriteInteger(u"FrontDesk"_s, u"WakeRetry"_s, c.WakeRetry);
    ini.WriteInteger(u"FrontDesk"_s, u"WakeRetryMinutes"_s, c.WakeRetryMinutes);
    ini.WriteInteger(u"FrontDesk"_s, u"WakeRetryMax"_s, c.WakeRetryMax);
  }
  // --- end of the wake-up follow-up block ---
  // --- [Api], written like the front desk's keys once in use ---
  if (c.ApiEnabled || !c.ApiToken.isEmpty() ||
      !ini.ReadString(u"Api"_s, u"Enabled"_s, QString()).isEmpty()) {
    ini.WriteInteger(u"Api"_s, u"Enabled"_s, c.ApiEnabled ? 1 : 0);
    ini.WriteInteger(u"Api"_s, u"Port"_s, c.ApiPort);
    ini.WriteString(u"Api"_s, u"Listen"_s, c.ApiListen);
    ini.WriteString(u"Api"_s, u"Token"_s, c.ApiToken);
  }
  // --- end of [Api] ---

  // --- [DB] shared store: written once a driver is set ---
  if (c.SharedStoreInUse() || !ini.ReadString(u"DB"_s, u"Driver"_s, QString()).isEmpty()) {
    ini.WriteString(u"DB"_s, u"Driver"_s, c.DBDriver);
    ini.WriteString(u"DB"_s, u"Host"_s, c.DBHost);
    ini.WriteInteger(u"DB"_s, u"Port"_s, c.DBPort);
    ini.WriteString(u"DB"_s, u"Database"_s, c.DBDatabase);
    ini.WriteString(u"DB"_s, u"User"_s, c.DBUser);
    ini.WriteString(u"DB"_s, u"Password"_s, c.DBPassword);
    ini.WriteString(u"DB"_s, u"Service"_s, c.DBService);
  }
  // --- end of the shared store block ---

  QString error;
  if (!ini.Save(path, /*ownerOnly=*/true, &error)) {
    WriteLog(u"SaveConfig: cannot write "_s + path + u": "_s + error);
    TheShell().Message(MessageKind::Error, LangText(528));
    return;
  }
  OpenIni() = std::move(ini);
}

bool SaveLastShiftReport(TDateTime when) {
  SysConfig().LastShiftReport = when;
  IniFile ini;
  QString path = SettingsFilePath();
  QString error;
  if (LoadUsable(ini, &path) == IniFile::LoadResult::Unreadable) {
    error = u"cannot read"_s;
  } else {
    ini.WriteString(u"FrontDesk"_s, u"LastShiftReport"_s, FormatFull(when));
    if (ini.Save(path, /*ownerOnly=*/true, &error))
      return true;
  }
  WriteLog(u"SaveLastShiftReport: %1: %2"_s.arg(path, error));
  return false;
}

void LanguageStart() {
  IniFile ini;
  QString path = SettingsFilePath();
  LoadUsable(ini, &path);
  const int id = ini.ReadInteger(u"Lang"_s, u"LangID"_s, 0);
  LanguagePack().LangID = id;
  LanguagePack().LoadLanguageFile(AppFileOrShipped(LanguageFileName(id)));
}

void LanguageFirstShow() {
  const int id = SettingsIni().ReadInteger(u"Lang"_s, u"LangID"_s, 0);
  LoadLanguage(id != 0 ? 1 : 0);
}

void LoadStateCodes(const QString &fileName) {
  IniFile ini;
  ini.Load(fileName);
  auto &table = StateCodeTable();
  for (int i = 0; i < kStateCodeCount; ++i)
    table[i] = ini.ReadString(u"Statecode"_s, QString::number(i), u"---"_s);
}

const std::array<QString, kStateCodeCount> &StateCodes() {
  return StateCodeTable();
}

QString StateCodeText(int index) {
  if (index < 0 || index >= kStateCodeCount)
    return u"---"_s;
  return StateCodeTable()[index];
}
