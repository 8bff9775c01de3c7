// Two desks as two processes (desk_driver: the console's store code without
// its screens) on one throwaway server: a contact and a task saved at one
// are seen by the other without a restart, a first start of both at once
// makes one schema, a call record pushed to both is
// stored once, and a restart of the server in mid-shift loses no record.
#include "common/PgStore.h"
#include "common/TestHome.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
class Desk {
public:
  explicit Desk(const QString &home) {
    PgServer &server = *pgstore_detail::Server();
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(
        QStringLiteral(DESK_DRIVER),
        {home, server.Host(), QString::number(server.Port()), server.Database(), server.User()});
  }
  ~Desk() {
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(10000))
      m_process.kill();
  }
  // Waits for a line that starts with the prefix; every line before it is
  // kept for later waits (events come between answers).
  QString Await(const QString &prefix, int ms = 30000) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < ms) {
      for (qsizetype i = 0; i < m_lines.size(); ++i) {
        if (m_lines[i].startsWith(prefix))
          return m_lines.takeAt(i);
      }
      m_process.waitForReadyRead(100);
      while (m_process.canReadLine())
        m_lines << QString::fromUtf8(m_process.readLine()).trimmed();
    }
    return u"(no \"%1\"; had: %2)"_s.arg(prefix, m_lines.join(u" / "_s));
  }
  QString Ask(const QStringList &words, const QString &answerPrefix) {
    m_process.write(words.join(u'\t').toUtf8() + '\n');
    return Await(answerPrefix);
  }

private:
  QProcess m_process;
  QStringList m_lines;
};
} // namespace

class TwoDesksTest : public QObject {
  Q_OBJECT

private slots:
  void initTestCase() { TestHome::AfterReset() = pgstore_detail::PointAtServer; }

  void twoDesksShareAndSurviveARestart() {
    TestHome home; // an empty database, which both desks set up at once
    Desk a(home.Path() + u"a"_s);
    Desk b(home.Path() + u"b"_s);
    QCOMPARE(a.Await(u"ready"_s), u"ready"_s);
    QCOMPARE(b.Await(u"ready"_s), u"ready"_s);
    QCOMPARE(a.Ask({u"rooms"_s}, u"rooms"_s), u"rooms 3072"_s);

    QVERIFY(a.Ask({u"contact"_s, u"Mrs Lee"_s, u"13800138000"_s}, u"ok"_s).startsWith(u"ok"_s));
    QVERIFY(b.Await(u"changed"_s).contains(u"maininfo"_s));
    QCOMPARE(b.Ask({u"lookup"_s, u"13800138000"_s}, u"lookup"_s), u"lookup Mrs Lee"_s);

    QVERIFY(b.Ask({u"task"_s, u"Towels to 101"_s}, u"ok"_s).startsWith(u"ok"_s));
    QVERIFY(a.Await(u"changed"_s).contains(u"task_table"_s));
    QCOMPARE(a.Ask({u"tasks"_s}, u"tasks"_s), u"tasks Towels to 101"_s);

    // Stamped on arrival by each desk's clock, as the exchange's records are.
    const QStringList pushed = {u"record"_s, u"8001"_s, u"8002"_s};
    a.Ask(pushed, u"ok"_s);
    b.Ask(pushed, u"ok"_s);
    QCOMPARE(a.Ask({u"records"_s}, u"records"_s), u"records 1 waiting 0"_s);
    QCOMPARE(b.Ask({u"records"_s}, u"records"_s), u"records 1 waiting 0"_s);

    // The server restarts while both desks receive records.
    PgServer &server = *pgstore_detail::Server();
    QVERIFY(server.Stop());
    const QStringList during = {u"record"_s, u"8003"_s, u"8004"_s, u"2026-11-23T10:05:00"_s};
    a.Ask(during, u"ok"_s);
    b.Ask(during, u"ok"_s);
    a.Ask({u"record"_s, u"8005"_s, u"8006"_s, u"2026-11-23T10:06:00"_s}, u"ok"_s);
    QCOMPARE(a.Await(u"away"_s), u"away"_s);
    QCOMPARE(b.Await(u"away"_s), u"away"_s);
    QVERIFY(server.Start());
    QCOMPARE(a.Await(u"back"_s, 90000), u"back"_s);
    QCOMPARE(b.Await(u"back"_s, 90000), u"back"_s);
    QCOMPARE(a.Ask({u"records"_s}, u"records"_s), u"records 3 waiting 0"_s);
    QCOMPARE(b.Ask({u"records"_s}, u"records"_s), u"records 3 waiting 0"_s);
  }
};

QTEST_GUILESS_MAIN(TwoDesksTest)
#include "tst_twodesks_pg.moc"
