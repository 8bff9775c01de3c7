#pragma once

#include "support/FormLogic.h"

#include <QString>
#include <QStringList>
#include <QTimer>

// The SMS window. The exchange owns the GSM modules: the console asks for one
// (sub-code 1), the exchange grants a channel (3), the console sends the text
// block on it (2) and the exchange reports the result (4, 5) or refuses (6).
// One message is under way at a time; the state of it lives in SysParam()
// (GsmBusy, GsmModule as the channel, GsmNumber as the destination) because the
// dispatcher answers for it after this window has closed.
class TGSM_Form : public TFormLogic {
  Q_OBJECT

public:
  // Words a message may have, reply number and company included.
  static constexpr int kMaxWords = 70;
  static constexpr int kSendSmsTimeout = 20000; // ms
  // The text block's field in the sub-code 2 record: offset 18 to the end.
  static constexpr int kTextOffset = 18;
  static constexpr int kRecordSize = 220;
  static constexpr int kTextFieldSize = kRecordSize - kTextOffset;

  explicit TGSM_Form(QObject *parent = nullptr);

  // The inputs. A widget sets one and calls its change handler.
  QString SMSDest_TeSEdit;
  QString SMSDest_TeSEdit_Hint;
  QString CallTelNo_TeSEdit; // the reply number put under the message
  QString Company_TeSEdit;   // signs the message as " [company]"
  QString SMSBody_TeMemo;
  // Two panels; the second shows how many words are left.
  QStringList Main_StatusBar{QString(), QString()};
  QTimer GSM_SendSMS_Timer;
  // Words left for the message; -1 until the first edit, which keeps the send key dead.
  int WordsLeft = -1;

  // Words of a text as the exchange counts them for one message: a byte below
  // 128 of its GBK form is one word, any other byte half of one.
  static int getWordCount(const QString &text);

  void FormCreate();
  void FormShow();  // runs on every Show(): reply number and company from the settings
  void FormClose(); // runs on every Close(): both back to the settings in memory

  // Opens the window from a contact's page with its mobile number as destination.
  // A number over 10 characters that starts with "0" loses that "0".
  void SendSMSTo(const QString &mobile);

  void SMSDest_TeSEditChange();
  void SMSBody_TeMemoChange(); // also for the reply number and the company
  void TeButton1Click();       // send: asks the exchange for a module
  void TeButton2Click();       // cancel

  // The message as it goes out: body, reply number, company.
  QString MessageText() const;
  // "D:<dest>\n\rT:1\n\rM:<bytes><message>", the text of the sub-code 2 record.
  QString TextBlock() const;

public slots:
  // The exchange granted a channel: sends the text on it. The window is closed
  // by now and its inputs keep the text.
  void sendSms_TeButtonClick();
  void GSM_SendSMS_TimerTimer();
  // A result arrived.
  void GSM_SendSMS_TimerStop();
};
