// The ring's sound file and its start and stop, on whatever audio this machine
// has (none on a build machine: the ring must then stay silent, not fail).
#include "common/TestHome.h"
#include "support/Paths.h"
#include "ui/RingPlayer.h"

#include <QTest>

using namespace Qt::StringLiterals;

class RingPlayerTest : public QObject {
  Q_OBJECT

private slots:
  void theFoldersOwnRingWinsOverTheShippedOne() {
    TestHome home;
    SetShippedRoot(SourcePath(u"resources"_s));
    QCOMPARE(RingPlayer::Source(), QUrl::fromLocalFile(SourcePath(u"resources/sound/ring.wav"_s)));
    home.Write(u"Sound/Ring.wav"_s, "RIFF");
    QCOMPARE(RingPlayer::Source(), QUrl::fromLocalFile(home.File(u"Sound/Ring.wav"_s)));
  }

  void startAndStopNeverFailWithOrWithoutAudio() {
    TestHome home;
    SetShippedRoot(SourcePath(u"resources"_s));
    RingPlayer ring;
    ring.Start();
    ring.Start(); // a second ring while ringing is the same ring
    QVERIFY(ring.Ringing());
    QTest::qWait(50);
    ring.Stop();
    QVERIFY(!ring.Ringing());
    ring.Stop();
  }
};

QTEST_MAIN(RingPlayerTest)
#include "tst_ringplayer.moc"
