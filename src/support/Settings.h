#pragma once

#include "support/IniFile.h"
#include "support/Paths.h"
#include "support/TDateTime.h"

#include <QList>
#include <QString>

#include <array>
#include <functional>

inline constexpr int kTypeVisibleCount = 31;
inline constexpr int kStateCodeCount = 41;

// Everything the console remembers between runs apart from the database: the
// record behind ini/sys.ini. Field order follows the file's reading order.
struct TSysConfig {
  QString Host;
  QString Port; // kept as text, as the operator typed it
  QString UserName;
  QString Password; // plain text: the file is written owner-only for that reason
  bool RecPwdFlag = false;
  QString OutNo;
  QString LDNo;
  QString CompanyCaption;
  QString CompanyURL;
  QString SMSReturnNos;
  QString GSMCompany;
  QString DBFile;
  std::array<int, 6> ColWidths{};
  int RingFlag = 0;   // 0 rings, anything else is silent
  int IncomStyle = 0; // 0..3; other values are kept and act as 2
  int Debug = 0;      // only read: a hand-edited file keeps it
  std::array<bool, kTypeVisibleCount> TypeVisible{};
  QString LinkURL;
  QString RecordIP;
  bool isAGMode = false; // only read, like Debug
  // The instant-messenger server a contact's link goes to. Set by hand in
  // [Other] IMHost and only read, like Debug.
  QString IMHost;

  // --- [FrontDesk]: the house's check-in and check-out ---
  // Service classes (0-based, as on the wire) a room takes when it is let and
  // when it is given back; -1 while the house hasn't chosen. Check-in and
  // check-out refuse to run without them. More front-desk keys belong here.
  int VacantClass = -1;
  int OccupiedClass = -1;
  bool FrontDeskInUse() const { return VacantClass >= 0 || OccupiedClass >= 0; }
  // [FrontDesk] LastShiftReport: when the last shift report was handed over
  // (saved or printed), "yyyy-MM-dd hh:mm:ss"; 0 (missing or unreadable) means
  // never. The next report lists the failed wake-ups from then on.
  TDateTime LastShiftReport;
  // --- end of [FrontDesk] ---
  // --- Front desk: wake-up follow-up, section [FrontDesk] ---
  // WakeFollowUp: a failed wake-up raises an alarm that stays until someone
  // acknowledges it, and a wake-up set into a room's do-not-disturb asks
  // first. Off by default: a house that doesn't turn it on sees the console
  // it always had.
  int WakeFollowUp = 0;
  // With the follow-up on, a failed wake-up is set again this many minutes
  // on, at most this many times, while WakeRetry isn't 0. Off by default.
  int WakeRetry = 0;
  int WakeRetryMinutes = 5; // 1..240
  int WakeRetryMax = 2;     // 1..10
  // --- end of the wake-up follow-up block ---
  // --- [Api]: the automation API for the hotel's own systems ---
  // Off unless enabled; it refuses to start with a token under 16 characters.
  // Written once in use, so a console that never uses it keeps its file.
  bool ApiEnabled = false;
  int ApiPort = 5010;
  QString ApiListen = QStringLiteral("127.0.0.1");
  QString ApiToken;
  // --- end of [Api] ---

  // --- [DB] shared store: the database server several desks share ---
  // DBDriver "QPSQL" opens the store on a PostgreSQL server instead of the
  // SQLite file DBFile names; empty (the default) keeps the file. Written only
  // once set, so a desk that never uses a server keeps the file it always had.
  QString DBDriver;
  QString DBHost;
  int DBPort = 5432;
  QString DBDatabase;
  QString DBUser;
  QString DBPassword; // plain text, like Password: the file is owner-only
  // A libpq service name (pg_service.conf); when set it supplies whatever of
  // host, port, database, user and password the fields above leave empty.
  QString DBService;
  bool SharedStoreInUse() const { return !DBDriver.isEmpty(); }
  // --- end of the shared store block ---
};

// The process-wide record.
TSysConfig &SysConfig();

// Why [Api] can't run as set (a token under 16 characters); empty when it can.
inline constexpr int kApiMinTokenLength = 16;
QString ApiTokenRefusal(const QString &token);

// The INI object of the last LoadConfig or SaveConfig. Values read from it later
// in the run (the language at the main window's first show) see the file as it
// was then, not as it may have been edited since.
const IniFile &SettingsIni();

// The places in windows that the settings touch but the settings module may not
// know. The windows that own them fill these in as they are built; an empty
// function means the window isn't there.
struct TSettingsBindings {
  // Checks the IncomStyle_PopupMenu entry for a loaded value.
  std::function<void(int incomStyle)> IncomStyleLoaded;
  // AdvStringGrid_Exts: its present column widths, and setting one of them.
  std::function<QList<int>()> ExtsGridColumnWidths;
  std::function<void(int column, int width)> SetExtsGridColumnWidth;
  // The settings window: the checks of TeListView_ExtsPanel as (type, checked)
  // pairs, and the text of TeSEdit_LinkURL. What counts at saving is what the
  // window shows, applied or not.
  std::function<QList<std::pair<int, bool>>()> ExtsPanelChecks;
  std::function<QString()> LinkUrlText;
  // The number of the language in force, written as Lang/LangID.
  std::function<int()> LanguageId;
};
TSettingsBindings &SettingsBindings();

// Reads sys.ini into the record, key by key in the file's order, each missing key
// taking its default. A missing file is no error. An unreadable one shows str_527
// and leaves the record as it was.
void LoadConfig(TSysConfig &config);

// Writes the record back, rewriting the keys it owns and keeping every other line.
// A failure shows str_528 and leaves the file as it was.
void SaveConfig(TSysConfig &config);

// Records a shift report's handover in the record and writes that one key to
// sys.ini at once, so a console that stops unexpectedly doesn't report the
// same failures again. False (logged) when the file can't be written.
bool SaveLastShiftReport(TDateTime when);

// At process start, ahead of any window: reads Lang/LangID from sys.ini and loads
// English at 1, Chinese otherwise. LangID keeps the value read.
void LanguageStart();

// At the main window's first show: reads Lang/LangID from the settings' INI
// object; anything but 0 loads English, applies it and sets LangID 1; 0 loads
// Chinese and sets 0.
void LanguageFirstShow();

// The line-state texts of ini/sys_RadioB.ini, section "Statecode", keys "0".."40";
// "---" for each one missing.
void LoadStateCodes(const QString &fileName);
const std::array<QString, kStateCodeCount> &StateCodes();
QString StateCodeText(int index); // "---" outside the table
