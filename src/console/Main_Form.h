#pragma once

#include "link/Display.h"
#include "link/ExchangeLink.h"
#include "support/FormLogic.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

class TCallControlDev;
class TCallDirectory;
class TDeviceEvents;
class TDeviceTestPanel;
class TDirectoryPages;
class TExtsView;
class TBatchWalk;
class TForm_ExtFind;
class TForm_MemoSet;
class TForm_CheckIn;
class TForm_RoomHistory;
class TFrontDesk;
class TForm_Nodisturb;
class TForm_VoiceMail_Set;
class THint_Form;
class TNodisturb;
class TForm_MoringCallLog;
class TForm_WakeUpAlarms;
class TPBXRecords;
class TRecordServerPage;
class TMoringCall_Form;
class TNetModule;
class TPhoneBoard;
struct TPhoneTis;
class TLogin_Form;
class TUserInfo_Form;

// The main window's logic: it owns the link, the display and the session's
// timers, dispatches every packet, and is the one place where the screens and
// the later subsystems meet. Split by concern over several source files.
class TMain_Form : public TFormLogic {
  Q_OBJECT

public:
  explicit TMain_Form(QObject *parent = nullptr);
  ~TMain_Form() override;

  // The companions it talks to; set by whoever builds the windows.
  TLogin_Form *Login_Form = nullptr;
  TUserInfo_Form *UserInfo_Form = nullptr;

  // --- frame (Main_Form.cpp) ---
  void FormCreate();
  void FormShow();
  bool FormCloseQuery(); // true: the window may close
  void FormClose();
  void config_Save();

  int Tag = 0;
  quint8 SilentExit = 0;
  quint8 LoginDialogOpen = 0;
  quint8 EverConnected = 0;
  QString AppTitle;
  QString Caption;  // the window's caption
  QString HostText; // the exchange's address as the login window gave it
  QString HostIP_tefxButton_Caption;
  QString HostIP_tefxButton_Hint;

  // Which panel stands in front where the dial pad goes.
  enum class FrontPanel { Dial_TeTabControl, Company_TePanel };
  FrontPanel Front = FrontPanel::Dial_TeTabControl;

  TExchangeLink &Link() { return m_link; }
  TDisplay &Display() { return m_display; }
  const TDisplay &Display() const { return m_display; }
  void ShowDisplay(QString text, bool blink) { m_display.ShowDisplay(std::move(text), blink); }

  // --- session (Main_Session.cpp) ---
  QTimer PulseCheck_Timer;
  void Winsock_TCPConnect();
  void Winsock_TCPClose();
  // A connect that did not come through: the operator is told, unless the
  // console is already trying again by itself.
  void Winsock_TCPConnectFailed(const QString &error);
  void Login_ToolButtonClick(); // sends the Login packet
  void PulseCheck_TimerTimer();
  void TeSpeedButton9Click();  // re-login
  void TeSpeedButton11Click(); // log off

  // After a lost session the console logs in again by itself until it is back
  // or the operator logs off: a try at once, then one every fast interval for
  // ReloginFastTries tries, then one every slow interval. A desk left alone
  // through an exchange restart must not stay logged out all night.
  QTimer Relogin_Timer;
  int ReloginFastInterval = 5000;
  int ReloginSlowInterval = 15000;
  int ReloginFastTries = 12;
  bool Reconnecting() const { return m_reconnecting; }
  int ReloginTries() const { return m_reloginTries; }
  void Relogin_TimerTimer(); // one try: connect afresh; the connect sends Login
  // The session as the status bar shows it: in session, connecting, or lost.
  QString SessionStateText() const;

  // The contact pages, the call page and the call lists of this window.
  TDirectoryPages &Pages() { return *m_pages; }
  // The device table, its requests, its events and the board of panels.
  TCallControlDev &CallControlDev() { return *m_devices; }
  TNetModule &NetModule() { return *m_netModule; }
  TDeviceEvents &DeviceEvents() { return *m_deviceEvents; }
  TPhoneBoard &Board() { return *m_board; }
  // The old local console device's hidden test panel, over this window's display.
  TDeviceTestPanel &DeviceTestPanel() { return *m_deviceTestPanel; }

  // --- the operator's own calls (Main_Calls.cpp) ---
  // The phone book and call log as the call handling uses them; the window's
  // own pages unless a test puts another in.
  TCallDirectory *CallDirectory = nullptr;
  // The name of a trunk of kind 5 on a line, for the ringing balloon's title;
  // empty for any other line (the device monitor answers it).
  std::function<QString(int line)> AnalogTrunkName;

  void processPacketFromSocket_CallState(const char *work);
  void Call_StateChanged(const char *work);
  static QString FilterDialString(const QString &text);
  static QByteArray DigitCodes(const QString &number);
  void DialNumber(const QString &number);
  void DivertNumber(const QString &number);
  void DialOneDigit(int code);

  // The dial box and its history.
  QString dial_TeSComboBox_Text;
  QString dial_TeSComboBox_SelText;
  QStringList dial_TeSComboBox_Items;
  void dial_TeButtonClick();
  void dial_TeSComboBoxKeyPress(QChar key);

  // The panel that counts down while a number waits for the handset.
  QTimer Msg_Timer;
  int Msg_Timer_Tag = 0;
  bool Msg_Panel_Visible = false;
  QString Msg_Panel_Caption;
  QString Msg_TeLabel;
  void Msg_TimerTimer();
  void Msg_TeButton1Click(); // cancel the waiting number

  // Call-control keys.
  void HoldClick();        // LMDButton18, tefxButton1
  void ConferenceClick();  // LMDButton17, tefxButton2
  void LMDButton21Click(); // cancel, not while idle or ringing
  void tefxButton3Click(); // cancel, not while idle
  void TransferClick();    // LMDButton20
  void QueryClick();       // LMDButton22
  void Offhook_tefxButtonClick();
  void Onhook_tefxButtonClick();
  int CtrlMode_Tag = 0;
  QString CtrlMode_Caption;
  bool HookKeys_Enabled = false;
  void CtrlMode_tefxButtonClick();

  // The ring key: its image and caption follow the mute setting.
  int RingTone_ImageIndex = 15;
  QString RingTone_Caption;
  void RingTone_TeSpeedButtonClick();
  void SetRingToneButton(int imageIndex, const QString &caption);

  bool tefxSpeedButton1_Enabled = true;
  // False while the exchange bars this console's guest-room actions.
  bool ServiceAllowed = true;

  // The clock on the idle display.
  QTimer incTime_Timer;
  QTimer showTime_Timer;
  QDateTime CurrentTime;
  QString userText_LMDEdit;
  void incTime_TimerTimer();
  void showTime_TimerTimer();

  // --- panel actions (Main_Panels.cpp) ---
  // The panel popup menu as it stands after its last opening.
  struct TPanelMenu {
    QString test1_Caption;
    bool test1_Visible = true;
    bool N15_Visible = true; // transfer
    bool N2_Visible = true;  // wake-up settings
    bool PopMenu_ResetTrunk_Visible = false;
  };
  TPanelMenu PhonePanel_PopupMenu;
  int MenuDeviceID = -1;    // the device whose panel the menu opened over
  int CurrentDeviceID = -1; // the device whose service class dialog opened last
  void PhonePanel_PopupMenuPopup(int id);
  void test1Click();
  void N15Click();
  void PopMenu_ResetTrunkClick();
  void Template_PhoneSpeedButtonClick(int id);
  void tefxSpeedButton2Click();
  void tefxButton5Click(); // do-not-disturb on
  void tefxButton6Click(); // do-not-disturb off
  void HostIP_tefxButtonClick();
  // Where the board stands in the window, for placing hints; the screens fill it.
  struct TBoardGeometry {
    int WindowLeft = 0;
    int WindowTop = 0;
    int PageLeft = 0;
    int PageTop = 0;
    int BoardLeft = 0;
    int BoardTop = 0;
    int BoardHeight = 600;
    int MouseX = 0;
    int MouseY = 0;
  };
  TBoardGeometry BoardGeometry;
  // Finds a panel by its exact number, scrolls it into view and says so;
  // returns the device ID or -1.
  int FindExtension(const QString &number);
  // The exchange's type 24 notices about this console's calls.
  void DeviceNotice(int subCode, const QByteArray &work);
  // How many "another desk is ringing" rows the incoming list keeps.
  static constexpr int kMaxRingingNotices = 50;
  QString StatusLine; // the status bar's message, beside the session state

  // --- guest rooms (Main_Guest.cpp) ---
  // The extension list of the extensions page, and the dialogs over its rows.
  TExtsView &ExtsView() { return *m_extsView; }
  TMoringCall_Form &MoringCall_Form() { return *m_moringCall; }
  TForm_ExtFind &Form_ExtFind() { return *m_extFind; }
  // The wake-up dialog of a device: the board's "叫醒设置..." and the grid's
  // wake-up columns come here. The screens show the dialog on its shown().
  void OpenMoringCall(int id);
  // The other dialogs over a room; each shows on its shown(). The service
  // class dialog opens without blocking from the grid and modally from the
  // board's phone icon (which also raises srvClassDialogRequested to place it).
  THint_Form &Hint_Form() { return *m_hintForm; }
  TForm_Nodisturb &Form_Nodisturb() { return *m_nodisturbForm; }
  TForm_VoiceMail_Set &Form_VoiceMail_Set() { return *m_voiceMailForm; }
  TForm_MemoSet &Form_MemoSet() { return *m_memoSetForm; }
  void OpenSrvClass(int id, bool modal);
  void OpenNodisturb(int id);
  void OpenVoiceMail(int id);
  void OpenMemoSet(int id);
  // The grid's do-not-disturb actions and the 30-second tick's windows.
  TNodisturb &Nodisturb() { return *m_nodisturb; }
  // The walk of the batch keys, with Timer_MultiProcess and its panel.
  TBatchWalk &BatchWalk() { return *m_batchWalk; }
  // The front desk: check-in (its dialog on the current row) and check-out
  // (asked first) of the current room or the checked ones, and the room
  // history, all or one extension's.
  TFrontDesk &FrontDesk() { return *m_frontDesk; }
  TForm_CheckIn &Form_CheckIn() { return *m_checkInForm; }
  TForm_RoomHistory &Form_RoomHistory() { return *m_roomHistory; }
  void OpenCheckIn(int id);
  void CheckOut(bool checkedRooms);
  void OpenRoomHistory(const QString &ext);
  // Front desk: the alarms of failed wake-ups and their window (shown on its
  // shown()), with the retries of failed wake-ups.
  TForm_WakeUpAlarms &Form_WakeUpAlarms() { return *m_wakeUpAlarms; }
  // PopupMenu_Ext: call and transfer to the grid's current row.
  void N21Click();
  void N22Click();

  // --- record views (Main_Records.cpp) ---
  TPBXRecords &PBXRecords() { return *m_pbxRecords; }
  TForm_MoringCallLog &Form_MoringCallLog() { return *m_moringCallLog; }
  // The recordings page: the recording server's rows and their player.
  TRecordServerPage &RecordServer() { return *m_recordServer; }
  // Asks the exchange where its recording server is (type 37).
  void AskRecordInfo();
  void tefxButton_MCallRecordClick();

  // --- dispatch (Main_Dispatch.cpp) ---
  void processPacketFromSocket(const char *packet, int length);

  // Hand-offs to the call lists, the board and the UDP channel: each does the
  // main form's own part, if any, and raises its signal for whoever shows it.
  void LoadConRecords();
  void LoadPhones_tefxButtonClick();
  void RefrshPhones_tefxButtonClick();
  void savePhones_tefxButtonClick();
  void SetUdpLoggedIn(bool loggedIn);

signals:
  void captionChanged(const QString &caption);
  void frontChanged();
  void callListsReloadRequested();
  void phonesLoadRequested();
  void phonesRefreshRequested();
  void phonesSaveRequested();
  void udpLoggedInChanged(bool loggedIn);
  void gsmSendRequested();      // the SMS window's send key
  void gsmTimerStopRequested(); // the SMS window's time-out
  void serviceAllowedChanged(bool allowed);
  void callControlChanged(); // keys, panel or ring key changed
  // The service class dialog for a device; the screens take its own width from
  // left and add its height to top to place it by the panel's icon.
  void srvClassDialogRequested(int id, int left, int top);
  // The settings window on its network page, with the host filled in.
  void settingsRequested(const QString &host);
  void closeRequested(); // the frame should close the main window

private:
  void StartRelogin();
  void StopRelogin();
  void SetCaption(const QString &caption);
  void SetFront(FrontPanel panel);
  void processPacketFromSocket_Login(const char *work, const QString &result);
  void processPacketFromSocket_UserInfo(const char *work);
  void processPacketFromSocket_MissedCall(const char *work);
  void processPacketFromSocket_Gsm(const char *work);
  void processPacketFromSocket_RecordServer(const char *work);

  int m_droppedRingingNotices = 0;
  bool m_reconnecting = false;
  int m_reloginTries = 0;
  QElapsedTimer m_reloginLogged; // tries are logged once a minute at most
  QString m_lastConnectError;

  TExchangeLink m_link;
  TDisplay m_display;
  std::unique_ptr<TDirectoryPages> m_pages;
  std::unique_ptr<TCallDirectory> m_directoryCalls;
  std::unique_ptr<TCallControlDev> m_devices;
  std::unique_ptr<TNetModule> m_netModule;
  std::unique_ptr<TDeviceEvents> m_deviceEvents;
  std::unique_ptr<TPhoneBoard> m_board;
  std::unique_ptr<TDeviceTestPanel> m_deviceTestPanel;
  std::unique_ptr<TExtsView> m_extsView;
  std::unique_ptr<TMoringCall_Form> m_moringCall;
  std::unique_ptr<TForm_ExtFind> m_extFind;
  std::unique_ptr<TBatchWalk> m_batchWalk;
  std::unique_ptr<TNodisturb> m_nodisturb;
  std::unique_ptr<THint_Form> m_hintForm;
  std::unique_ptr<TForm_Nodisturb> m_nodisturbForm;
  std::unique_ptr<TForm_VoiceMail_Set> m_voiceMailForm;
  std::unique_ptr<TForm_MemoSet> m_memoSetForm;
  std::unique_ptr<TFrontDesk> m_frontDesk;
  std::unique_ptr<TForm_CheckIn> m_checkInForm;
  std::unique_ptr<TForm_RoomHistory> m_roomHistory;
  std::unique_ptr<TForm_WakeUpAlarms> m_wakeUpAlarms;
  std::unique_ptr<TPBXRecords> m_pbxRecords;
  std::unique_ptr<TRecordServerPage> m_recordServer;
  std::unique_ptr<TForm_MoringCallLog> m_moringCallLog;

  // Transfers of the board's and the list's menus and of the to-number key.
  void TransferToIdle(const TPhoneTis *p, int holdWaitMs, int releaseWaitMs,
                      bool yieldAfterRelease);
  void TransferSteps(const QString &number, int holdWaitMs, int releaseWaitMs,
                     bool yieldAfterRelease, bool divert);
  void WireGuest();   // Main_Guest.cpp, from the constructor
  void WireRecords(); // Main_Records.cpp, after WireGuest
  void LanguageApplied() override;
};
