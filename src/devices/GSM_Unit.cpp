#include "devices/GSM_Unit.h"

#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/LanguagePack.h"
#include "support/Settings.h"
#include "support/Shell.h"
#include "support/TextCodec.h"

#include <cstring>

using namespace Qt::StringLiterals;

namespace {
// Sub-codes of the GsmModule packets the console sends.
constexpr quint8 kGsmChooseModule = 1;
constexpr quint8 kGsmSendText = 2;

// Sub-code 1 and 2 records start alike: type, then the sub-code byte at 12.
void StartGsmRecord(char *record, int size, quint8 subCode) {
  std::memset(record, 0, size_t(size));
  PutU16(record, 6, quint16(PacketType::GsmModule));
  record[12] = char(subCode);
}
} // namespace

TGSM_Form::TGSM_Form(QObject *parent) : TFormLogic("TGSM_Form", parent) {
  GSM_SendSMS_Timer.setObjectName(u"GSM_SendSMS_Timer"_s);
  GSM_SendSMS_Timer.setInterval(kSendSmsTimeout);
  connect(&GSM_SendSMS_Timer, &QTimer::timeout, this, &TGSM_Form::GSM_SendSMS_TimerTimer);
  connect(this, &TFormLogic::shown, this, &TGSM_Form::FormShow);
  connect(this, &TFormLogic::closed, this, &TGSM_Form::FormClose);
  FormCreate();
}

int TGSM_Form::getWordCount(const QString &text) {
  const QByteArray gbk = ToGbk(text);
  int halves = 0;
  for (const char byte : gbk)
    halves += quint8(byte) < 128 ? 2 : 1;
  return halves / 2;
}

void TGSM_Form::FormCreate() {
  WordsLeft = -1;
}

void TGSM_Form::FormShow() {
  const TSysConfig &c = SysConfig();
  CallTelNo_TeSEdit = c.SMSReturnNos;
  Company_TeSEdit = c.GSMCompany;
}

void TGSM_Form::FormClose() {
  TSysConfig &c = SysConfig();
  c.SMSReturnNos = CallTelNo_TeSEdit;
  c.GSMCompany = Company_TeSEdit;
}

void TGSM_Form::SendSMSTo(const QString &mobile) {
  QString number = mobile.trimmed();
  if (number.size() > 10 && number.startsWith(u'0'))
    number.remove(0, 1);
  SMSDest_TeSEdit = number;
  SMSDest_TeSEditChange();
  Show();
}

void TGSM_Form::SMSDest_TeSEditChange() {
  // Long numbers don't fit the box; the hint shows them whole.
  SMSDest_TeSEdit_Hint = SMSDest_TeSEdit;
}

void TGSM_Form::SMSBody_TeMemoChange() {
  int total = 0;
  const QString telNo = CallTelNo_TeSEdit.trimmed();
  if (!telNo.isEmpty())
    total += getWordCount(LangText(656) + telNo);
  const QString company = Company_TeSEdit.trimmed();
  if (!company.isEmpty())
    total += getWordCount(u" []"_s + company);
  total += getWordCount(SMSBody_TeMemo.trimmed());
  WordsLeft = kMaxWords - total;
  Main_StatusBar[1] = WordsLeft < 0 ? LangText(658) : LangFormat(657, {WordsLeft});
}

void TGSM_Form::TeButton1Click() {
  // Over the limit, or a window nobody has typed in yet.
  if (WordsLeft < 0)
    return;
  TNetPhone_SysParam &sp = SysParam();
  if (sp.GsmBusy == 1) {
    TheShell().Message(MessageKind::Warning, LangText(647));
    return;
  }
  if (SMSDest_TeSEdit.size() < 6) {
    TheShell().Balloon(LangFormat(649, {SMSDest_TeSEdit}), LangText(650), 10, BalloonIcon::Warning);
    return;
  }
  if (SMSBody_TeMemo.trimmed().isEmpty()) {
    TheShell().Balloon(LangFormat(651, {SMSDest_TeSEdit}), LangText(652), 10, BalloonIcon::Warning);
    return;
  }
  sp.GsmBusy = 1;
  sp.GsmNumber = SMSDest_TeSEdit.trimmed();
  TheShell().Balloon(LangFormat(653, {sp.GsmNumber}), LangText(654), 10, BalloonIcon::Info);
  char record[16];
  StartGsmRecord(record, 16, kGsmChooseModule);
  SendPacket16(record); // the session's ID goes in as the sender
  Close();
}

void TGSM_Form::TeButton2Click() {
  Close();
}

QString TGSM_Form::MessageText() const {
  QString message = SMSBody_TeMemo.trimmed();
  const QString telNo = CallTelNo_TeSEdit.trimmed();
  if (!telNo.isEmpty())
    message += LangText(655) + telNo;
  const QString company = Company_TeSEdit.trimmed();
  if (!company.isEmpty())
    message += u" ["_s + company + u']';
  return message;
}

QString TGSM_Form::TextBlock() const {
  const QString message = MessageText();
  // The length is the message's, in bytes as they go out.
  const int messageBytes = int(ToGbk(message).size());
  // LF before CR is how the exchange reads the block; it is not a slip for CR LF.
  const QString lf = u"\n"_s;
  const QString cr = u"\r"_s;
  return FormatText(u"D:%s%s%sT:1%s%sM:%.4d%s"_s,
                    {SMSDest_TeSEdit.trimmed(), lf, cr, lf, cr, messageBytes, message});
}

void TGSM_Form::sendSms_TeButtonClick() {
  char record[kRecordSize];
  StartGsmRecord(record, kRecordSize, kGsmSendText);
  PutU16(record, 14, SysParam().GsmModule);
  // A destination longer than any real number could push the block past the
  // record; the field keeps what fits, cut between characters and NUL-ended,
  // and the length tells the exchange exactly that much.
  WriteFixedText(record + kTextOffset, kTextFieldSize, TextBlock());
  const auto length = quint16(qstrnlen(record + kTextOffset, kTextFieldSize));
  PutU16(record, 16, length);
  SendPacket220(record);
}

void TGSM_Form::GSM_SendSMS_TimerTimer() {
  TNetPhone_SysParam &sp = SysParam();
  TheShell().Balloon(LangFormat(659, {sp.GsmNumber}), LangText(660), 10, BalloonIcon::Warning);
  sp.GsmBusy = 0;
  GSM_SendSMS_Timer.stop();
}

void TGSM_Form::GSM_SendSMS_TimerStop() {
  GSM_SendSMS_Timer.stop();
}
