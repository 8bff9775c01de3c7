// Check-in and check-out against the simulated exchange on loopback: what the
// exchange and the store hold afterwards, and the starts that must change
// nothing.
#include "LinkedDesk.h"
#include "common/PgStore.h"

#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "guest/BatchWalk.h"
#include "guest/CheckIn_Form.h"
#include "guest/FrontDesk.h"
#include "link/Public_Unit.h"
#include "support/Clock.h"

#include <QSqlQuery>

using namespace Qt::StringLiterals;

namespace {
constexpr int kVacant = 4;   // "5:..." of the exchange's list
constexpr int kOccupied = 1; // "2:..."
const QStringList kClasses{u"无限制"_s, u"客房"_s, u"国内长途"_s, u"市话"_s, u"空房"_s};
constexpr quint16 kNoDisturbAndMail = 0x0604 | 0x0040;

QString Value(const QString &sql) {
  Sys_DM().PendingWrites().Flush();
  QSqlQuery q(StoreConnection());
  return q.exec(sql) && q.next() ? q.value(0).toString() : u"<none>"_s;
}

QString Cell(LinkedDesk &d, int id, int column) {
  const TExtGridModel &g = d.main.ExtsView().AdvStringGrid_Exts;
  return g.Cell(g.SlotOfId(id), column);
}

// The room history's texts joined in the order they were written, on either store.
QString History(const QString &text) {
  return Value(
      TestStoreIsPg()
          ? u"select coalesce(string_agg(%1, ',' order by ID), '') from RoomHistory"_s.arg(text)
          : u"select coalesce(group_concat(%1, ','), '') from "
            u"(select * from RoomHistory order by ID)"_s.arg(text));
}

QString Room(int port, const QString &columns) {
  return Value(u"select %1 from Exts where PortID=%2"_s.arg(columns).arg(port));
}

// Logged in with the exchange's classes, the house's two classes chosen.
bool Ready(LinkedDesk &d) {
  d.sim.SetServiceClassNames(kClasses);
  if (!d.Start())
    return false;
  SysConfig().VacantClass = kVacant;
  SysConfig().OccupiedClass = kOccupied;
  return true;
}

// A room as a guest leaves it: a wake-up, do-not-disturb on, a message
// waiting; a memo, a daily wake-up and a window in the store.
void Lived(LinkedDesk &d, int id) {
  d.sim.SetDeviceMixData(id, 0x0004 | 0x0040);
  d.sim.PushStatus(id);
  TExtsView &exts = d.main.ExtsView();
  exts.Exts_Write(id, [](TADOQuery &q) {
    q.SetString(u"Memo"_s, u"extra towels"_s);
    q.SetBoolean(u"NoDisturb_Time2_Checked"_s, true);
    q.SetBoolean(u"MoringCall_isEveryDay"_s, true);
  });
  exts.Ext_UpdateRow(id);
}
} // namespace

class FrontDeskTest : public QObject {
  Q_OBJECT

private slots:
  // On a shared store another desk names a room, notes it and checks a guest
  // in: this desk's grid shows it without a restart.
  void anotherDesksRoomsShow() {
    if (!TestStoreIsPg())
      QSKIP("only a shared store has other desks");
    LinkedDesk d(4);
    QVERIFY(Ready(d));
    {
      const TSysConfig &c = SysConfig();
      QSqlDatabase other = QSqlDatabase::addDatabase(u"QPSQL"_s, u"other_desk"_s);
      other.setHostName(c.DBHost);
      other.setPort(c.DBPort);
      other.setDatabaseName(c.DBDatabase);
      other.setUserName(c.DBUser);
      QVERIFY(other.open());
      QVERIFY(QSqlQuery(other).exec(u"UPDATE Exts SET RoomNo = '301', Memo = 'VIP', "
                                    u"GuestName = 'Mr Wu', Occupied = 1 WHERE PortID = 3"_s));
    }
    QSqlDatabase::removeDatabase(u"other_desk"_s);
    QTRY_COMPARE(Cell(d, 3, TExtGridModel::ColRoomNo), u"301"_s);
    QCOMPARE(Cell(d, 3, TExtGridModel::ColMemo), u"VIP"_s);
    QVERIFY(Cell(d, 3, TExtGridModel::ColSpare).contains(u"Mr Wu"_s));
  }

  // Two checked rooms in, then out with one key: the exchange and the store
  // see each room set and then reset, with a history row for each.
  void checkInThenCheckOut() {
    LinkedDesk d(4);
    QVERIFY(Ready(d));
    GuestDeskClock();
    for (int id : {1, 3})
      d.Check(id);
    TForm_CheckIn &dialog = d.main.Form_CheckIn();
    d.main.OpenCheckIn(1);
    QVERIFY(dialog.Label_OccupiedClass.startsWith(u"2:"_s));
    const QString name = u"O'Brien \"Jr\"; drop table Exts"_s;
    dialog.Edit_GuestName = name;
    dialog.Edit_Memo = u"late arrival"_s;
    dialog.CheckBox_WakeUp = true;
    dialog.DateTimePicker_WakeUp =
        TDateTime::FromQDateTime(QDateTime(QDate(2027, 1, 4), QTime(7, 15)));
    dialog.TeButton_CheckIn_ApplyMultiClick();
    QVERIFY(!dialog.Visible());
    QTRY_VERIFY_WITH_TIMEOUT(!d.main.FrontDesk().Running(), 20000);
    QCOMPARE(d.shell.Messages.size(), 1);
    QCOMPARE(d.shell.Messages[0].Text, u"提示:批量修改成功完成！"_s);
    for (int id : {1, 3}) {
      QCOMPARE(d.sim.Device(id)->SrvClass, kOccupied);
      QCOMPARE(d.sim.Device(id)->WakeUp, u"20270104071501"_s);
      QCOMPARE(Room(id, u"GuestName || '|' || Occupied || '|' || Memo"_s),
               name + u"|1|late arrival"_s);
      QCOMPARE(Cell(d, id, TExtGridModel::ColSpare), u"入住:"_s + name);
    }
    QCOMPARE(d.sim.Device(2)->SrvClass, 0);

    for (int id : {1, 3})
      Lived(d, id);
    d.shell.Answer = true;
    d.main.CheckOut(true);
    QTRY_VERIFY_WITH_TIMEOUT(!d.main.FrontDesk().Running(), 20000);
    QCOMPARE(d.shell.Messages.last().Text, u"提示:批量修改成功完成！"_s);
    for (int id : {1, 3}) {
      QCOMPARE(d.sim.Device(id)->SrvClass, kVacant);
      QCOMPARE(d.sim.Device(id)->WakeUp, QString());
      QCOMPARE(d.sim.Device(id)->MixData & kNoDisturbAndMail, 0);
      QCOMPARE(Room(id, u"coalesce(GuestName,'') || '|' || Occupied || '|' || coalesce(Memo,'') || "
                        u"'|' || NoDisturb_Time2_Checked || MoringCall_isEveryDay"_s),
               u"|0||00"_s);
      QCOMPARE(Cell(d, id, TExtGridModel::ColSpare), QString());
      QTRY_COMPARE(Cell(d, id, TExtGridModel::ColMoringTime), u"关"_s);
    }
    QCOMPARE(History(u"Ext || Action || Operator"_s),
             u"8002入住8001,8004入住8001,8002退房8001,8004退房8001"_s);
  }

  // Each start that can't go through says why and leaves the exchange and the
  // store as they were; a refusal midway says what was done.
  void refusals_data() {
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("said");
    QTest::addColumn<int>("classRequests");
    QTest::addColumn<QString>("history");
    QTest::newRow("link down") << u"link"_s << u"没有连接交换机"_s << 0 << QString();
    QTest::newRow("vacant class unset") << u"unset"_s << u"还没有设置空房服务级别"_s << 0
                                        << QString();
    QTest::newRow("class list not known yet")
        << u"classes"_s << u"服务级别还没有读到"_s << 0 << QString();
    QTest::newRow("class refused on the second room")
        << u"refused"_s << u"已完成退房的房间: 8002"_s << 2 << u"8002退房"_s;
    QTest::newRow("mailbox server away") << u"mailbox"_s << u"连接语音邮箱服务器失败"_s << 1
                                         << QString();
  }

  void refusals() {
    QFETCH(QString, fault);
    QFETCH(QString, said);
    QFETCH(int, classRequests);
    QFETCH(QString, history);
    LinkedDesk d(4);
    QVERIFY(Ready(d));
    for (int id : {1, 3}) {
      d.Check(id);
      Lived(d, id);
    }
    if (fault == u"link"_s) {
      d.sim.SetAccepting(false);
      d.sim.DropConnection();
      QTRY_COMPARE(int(SysParam().MyID), int(kNoSession));
    } else if (fault == u"unset"_s) {
      SysConfig().VacantClass = -1;
    } else if (fault == u"classes"_s) {
      d.main.DeviceEvents().SrvClassNames.setStringList({});
    } else if (fault == u"mailbox"_s) {
      d.sim.SetVoiceMailServerReachable(false);
    }
    int sent = 0;
    QObject::connect(&d.main.BatchWalk(), &TBatchWalk::stepSent, [&](int) {
      if (++sent == 2 && fault == u"refused"_s)
        d.sim.SetSrvClassResult(u"000007"_s);
    });
    const int before = d.SentTo(22).size();
    d.shell.Answer = true;
    d.main.CheckOut(true);
    QTRY_VERIFY_WITH_TIMEOUT(!d.main.FrontDesk().Running(), 20000);
    QVERIFY(!d.shell.Messages.isEmpty());
    QVERIFY2(d.shell.Messages.last().Text.contains(said), qPrintable(d.shell.Messages.last().Text));
    QCOMPARE(d.SentTo(22).size() - before, classRequests);
    QCOMPARE(History(u"Ext || Action"_s), history);
    // The room where it stopped, and every room after it, keep their state.
    QCOMPARE(Room(3, u"Memo || NoDisturb_Time2_Checked"_s), u"extra towels1"_s);
    if (classRequests == 0)
      QCOMPARE(d.sim.Device(1)->MixData & kNoDisturbAndMail, 0x0044);
  }

  void tooLongAName() {
    LinkedDesk d(2);
    QVERIFY(Ready(d));
    d.main.OpenCheckIn(0);
    d.main.Form_CheckIn().Edit_GuestName = QString(200, u'名');
    d.main.Form_CheckIn().TeButton_CheckIn_ApplyClick();
    QVERIFY(d.main.Form_CheckIn().Visible());
    QVERIFY(d.shell.Messages.last().Text.contains(u"最多 60 个字"_s));
    QVERIFY(!d.main.FrontDesk().Running());
    QCOMPARE(d.SentTo(22), QList<int>{});
  }

private:
  static void GuestDeskClock() {
    SetClock([] { return QDateTime(QDate(2027, 1, 3), QTime(20, 0)); });
  }
};

QTEST_GUILESS_MAIN(FrontDeskTest)
#include "tst_frontdesk.moc"
