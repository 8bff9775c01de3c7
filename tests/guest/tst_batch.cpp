// The batch walk against the simulated exchange on loopback: each kind that
// steps on answers through the success, the time-out, the late answer and
// the refusal, and the batch clear of voice mail that stalls after one room.
#include "LinkedDesk.h"
#include "common/PgStore.h"

#include "devices/DeviceEvents.h"
#include "guest/BatchWalk.h"
#include "guest/Hint_Form.h"
#include "guest/MoringCall_Unit.h"
#include "guest/Nodisturb_Form.h"
#include "guest/VoiceMail_Set.h"
#include "support/LanguagePack.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace {
const QString kDone = u"提示:批量修改成功完成！"_s;
const QString kTimedOut = u"网络错误:批量修改超时!"_s;

// A step's time-out while the exchange is made to miss one, and otherwise.
constexpr int kShortTimeout = 300;
constexpr int kLongTimeout = 8000;
} // namespace

class BatchTest : public QObject {
  Q_OBJECT

private slots:
  void walk_data() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QList<int>>("checked");
    QTest::addColumn<QList<int>>("sent");
    QTest::addColumn<QStringList>("messages");
    const QList<int> three{1, 2, 4};
    const QStringList kinds{u"srvclass"_s, u"wakeup-on"_s, u"wakeup-off"_s, u"nodisturb"_s};
    for (const QString &kind : kinds) {
      const QByteArray k = kind.toUtf8();
      QTest::newRow(QByteArray(k + ", three rooms").constData())
          << kind << u"success"_s << three << three << QStringList{kDone};
      QTest::newRow(QByteArray(k + ", a second answer lost").constData())
          << kind << u"timeout"_s << three << QList<int>{1, 2} << QStringList{kTimedOut};
    }
    QTest::newRow("srvclass, one room")
        << u"srvclass"_s << u"success"_s << QList<int>{3} << QList<int>{3} << QStringList{kDone};
    QTest::newRow("nodisturb, a late answer walks on")
        << u"nodisturb"_s << u"late"_s << three << three << QStringList{kTimedOut, kDone};
    QTest::newRow("srvclass, a late answer walks on")
        << u"srvclass"_s << u"late"_s << three << three << QStringList{kTimedOut, kDone};
    QTest::newRow("srvclass, refused on the second room")
        << u"srvclass"_s << u"refused"_s << three << QList<int>{1, 2}
        << QStringList{u"394000007"_s, kTimedOut};
  }

  void walk() {
    QFETCH(QString, kind);
    QFETCH(QString, scenario);
    QFETCH(QList<int>, checked);
    QFETCH(QList<int>, sent);
    QFETCH(QStringList, messages);
    LinkedDesk d(5);
    QVERIFY(d.Start());
    for (int id : checked)
      d.Check(id);
    TBatchWalk &walk = d.main.BatchWalk();
    walk.Timer_MultiProcess.setInterval(kLongTimeout);
    const qint16 type = kind == u"srvclass"_s ? 22 : kind == u"nodisturb"_s ? 24 : 35;
    // The exchange misbehaves on the second room's answer only. The wake-up
    // dialog sends its first room as its single apply does.
    int steps = kind.startsWith(u"wakeup"_s) ? 1 : 0;
    QObject::connect(&walk, &TBatchWalk::stepSent, [&](int) {
      ++steps;
      if (steps == 2 && scenario != u"success"_s) {
        walk.Timer_MultiProcess.setInterval(kShortTimeout);
        if (scenario == u"timeout"_s)
          d.sim.HoldAnswers(type, 1);
        else if (scenario == u"late"_s)
          d.sim.DelayAnswers(type, kShortTimeout * 4, 1);
        else
          d.sim.SetSrvClassResult(u"000007"_s);
      } else if (steps == 3) {
        walk.Timer_MultiProcess.setInterval(kLongTimeout);
      }
    });

    if (kind == u"srvclass"_s) {
      d.main.OpenSrvClass(0, false);
      d.main.Hint_Form().srvClass_TeComboBox_ItemIndex = 1;
      d.main.Hint_Form().TeButton_srvClsApply_MultiClick();
    } else if (kind == u"nodisturb"_s) {
      d.main.OpenNodisturb(0);
      d.main.Form_Nodisturb().TeComboBox_Nodisturb_ItemIndex = 3;
      d.main.Form_Nodisturb().TeButton_Nodisturb_ApplyMultiClick();
    } else {
      QSignalSpy answered(&d.main.DeviceEvents(), &TDeviceEvents::moringCallAnswered);
      d.main.OpenMoringCall(0);
      QTRY_COMPARE(answered.size(), 1);
      TMoringCall_Form &f = d.main.MoringCall_Form();
      f.MoCall_Flag_TeSComboBox_ItemIndex = kind == u"wakeup-on"_s ? 1 : 0;
      f.TeButton_MoringCallSet_MultiClick();
    }
    QTRY_COMPARE_WITH_TIMEOUT(d.shell.Messages.size(), messages.size(), 20000);
    QStringList shown;
    for (const RecordingShell::Shown &m : d.shell.Messages)
      shown << QString(m.Text).replace(LangText(394), u"394"_s);
    QCOMPARE(shown, messages);
    QCOMPARE(d.shell.Messages.last().Kind,
             messages.last() == kDone ? MessageKind::Information : MessageKind::Error);
    QCOMPARE(d.SentTo(type, type == 24 ? 152 : -1), sent);
    if (kind == u"srvclass"_s && scenario == u"success"_s)
      QTRY_COMPARE(d.sim.Device(sent.last())->SrvClass, 1);
    if (kind == u"nodisturb"_s && scenario == u"success"_s)
      QTRY_COMPARE(d.sim.Device(4)->MixData & 0x0604, 0x0400);
  }

  // One packet for the first room, then the time-out: the exchange's answer
  // to a clear never steps the walk.
  void voiceMailClearStalls() {
    LinkedDesk d(5);
    for (int id : {1, 2, 4})
      d.sim.SetDeviceMixData(id, 0x0040);
    QVERIFY(d.Start());
    for (int id : {1, 2, 4})
      d.Check(id);
    TBatchWalk &walk = d.main.BatchWalk();
    walk.Timer_MultiProcess.setInterval(kShortTimeout * 2);
    d.main.OpenVoiceMail(2);
    QCOMPARE(d.main.Form_VoiceMail_Set().TeLabel_State, u"有"_s);
    d.main.Form_VoiceMail_Set().TeButton_VoiceMail_ApplyMultiClick();
    QCOMPARE(walk.LMDCaptionPanel_MultiProcess_Tag, 11);
    QCOMPARE(walk.LMDCaptionPanel_MultiProcess_Caption, u"批量处理->清除留言"_s);
    QTRY_COMPARE_WITH_TIMEOUT(d.shell.Messages.size(), 1, 20000);
    QCOMPARE(d.shell.Messages[0].Text, kTimedOut);
    QCOMPARE(d.SentTo(40), QList<int>{1});
    QCOMPARE(d.sim.Device(1)->MixData & 0x0040, 0);
    QVERIFY(!walk.LMDCaptionPanel_MultiProcess_Visible);
  }
};

QTEST_GUILESS_MAIN(BatchTest)
#include "tst_batch.moc"
