#pragma once

#include "support/FormLogic.h"
#include "support/StoreServer.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

// One item of TeListView_ExtsPanel: a port type the board can show or hide.
struct TExtsPanelItem {
  QString Caption;
  int Type; // index into TypeVisible
  bool Checked;
};

// The settings window: six pages that edit the settings record. It loads the
// record when it is created, and the record stays the console's for the run.
class Tsysset_Form : public TFormLogic {
  Q_OBJECT

public:
  enum Page { TabSheet1, TabSheet2, TabSheet3, TabSheet6, TabSheet7, TabSheet_FrontDesk, TabSheet_Api };

  explicit Tsysset_Form(QObject *parent = nullptr);
  ~Tsysset_Form() override;

  // Loads the settings and the line-state texts and fills the controls. Run it
  // once the main window's logic listens, since it sets the ring key there.
  void FormCreate();
  // Fills the first page again: the login window may have changed the address.
  void FormShow();
  // Opens on the exchange page with this address in its box: the one the
  // console was told to use, which is what the operator wants to check.
  void ShowExchangePage(const QString &host);

  // Page 1, the exchange.
  QString HostIP_LMDEdit;
  QString HostPort_LMDEdit; // shown read-only
  QString OutNo_LMDEdit;
  QString LDNo_LMDEdit;
  void TeEffectButton1Click(); // apply and close
  void TeEffectButton2Click(); // close

  // Page 2, the database.
  QString DBFile_TeEdit;
  void TeSpeedButton1Click();  // browse
  void TeEffectButton3Click(); // apply, stays open
  void TeEffectButton4Click(); // close
  // --- Page 2 as well: the file, or a database server several desks share ([DB]) ---
  int DB_Kind_TeComboBox = 0; // item index: 0 the file, 1 a database server
  QString DB_Host_TeEdit;
  int DB_Port_TeSpinEdit = TStoreServer::kDefaultPort;
  QString DB_Database_TeEdit;
  QString DB_User_TeEdit;
  QString DB_Password_TeEdit;
  QString DB_Service_TeEdit;
  TStoreServer DB_ServerShown() const;
  // Tries a server (blocking, on a worker thread); the console sets it, since
  // the store is a module above this one.
  std::function<TServerProbe(const TStoreServer &)> ProbeStoreServer;
  // The test key: tries the server as the page shows it on a worker thread,
  // so the window stays usable; the key is off and the label says so until
  // the answer is in DB_TestResult_Label.
  void TeButton_DB_TestClick();
  bool DB_Testing = false;
  QString DB_TestResult_Label;
  // --- end of the [DB] part of page 2 ---

  // Page 3, incoming calls.
  int RingFlag_TeSComboBox = 0; // item index: 0 "开", 1 "关"
  void TeEffectButton5Click();
  void TeEffectButton6Click();

  // Page 4, the panel board's port types.
  QList<TExtsPanelItem> TeListView_ExtsPanel;
  void TeEffectButton7Click();

  // Page 5, the external program.
  QString TeSEdit_LinkURL;
  void TeEffectButton8Click(); // apply, stays open

  // --- Page 6, the front desk ([FrontDesk]) ---
  // The exchange's class names ("1:name", ...), read each time the page fills;
  // the console sets where they come from. Empty before the exchange sent them.
  std::function<QStringList()> SrvClassNames;
  QStringList FrontDesk_ClassItems;
  // Item indexes of the two lists, -1 for none: a class number, 0-based as on
  // the wire, is its item's number before the colon less one.
  int FrontDesk_VacantClass_ItemIndex = -1;
  int FrontDesk_OccupiedClass_ItemIndex = -1;
  void FillFrontDeskPage();
  void TeButton_FrontDesk_ApplyClick(); // apply, stays open
  // --- end of page 6 ---
  // --- Page "前台" (front desk): the wake-up follow-up's retries ---
  bool WakeFollowUp_TeCheckBox = false;
  bool WakeRetry_TeCheckBox = false;
  int WakeRetryMinutes_TeSpinEdit = 5;
  int WakeRetryMax_TeSpinEdit = 2;
  void WakeRetry_ApplyClick(); // apply, stays open
  // --- end of the wake-up follow-up block ---
  // --- Page "自动化接口": [Api] ---
  bool Api_Enabled_TeCheckBox = false;
  int Api_Port_TeSpinEdit = 5010;
  QString Api_Listen_TeEdit;
  QString Api_Token_TeEdit;
  // Applies and restarts the API as set. Turned on with a short token it is
  // refused with a warning, and nothing changes.
  void Api_ApplyClick();
  // --- end of the [Api] page ---

  Page ActivePage = TabSheet1;

signals:
  // The main window's RingTone_TeSpeedButton: its image index and caption.
  void ringToneButtonChanged(int imageIndex, const QString &caption);
  // The main window's TeTabSheet_Log is shown only while logging is on.
  void logPageVisibleChanged(bool visible);
  // The front-desk page was applied.
  void frontDeskChanged();
  // The [Api] page was applied: the API should run as the record now says.
  void apiChanged();
  // A database test began or ended: DB_Testing and DB_TestResult_Label changed.
  void dbTestChanged();

private:
  QString m_hostToShow;
  void FillDatabasePage();
};

// The ring key's images: 15 while calls ring, 14 while they are silent.
inline constexpr int kRingOnImage = 15;
inline constexpr int kRingOffImage = 14;
