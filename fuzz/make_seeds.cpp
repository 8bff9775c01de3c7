// Writes the seed corpora from the project's own writers: the simulated
// exchange's packets and datagrams, the settings and layout files the console
// saves, and the shipped language packs. Run by fuzz/run.sh --seeds; the output
// is kept in fuzz/corpus.
#include "FuzzHome.h"

#include "ExchangeSim.h"
#include "SimDevicePackets.h"
#include "SimPackets.h"

#include "devices/PhoneBoard.h"
#include "link/SysParam.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>

namespace {
QString g_root;

void Seed(const char *target, const QString &name, const QByteArray &bytes) {
  const QString folder = g_root + QLatin1String(target);
  QDir().mkpath(folder);
  QFile file(folder + u'/' + name);
  if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
    file.write(bytes);
}

QByteArray ReadFile(const QString &path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString DeviceFrame(const QList<int> &bytes) {
  QString text = QStringLiteral("PDP");
  int sum = 0;
  for (int b : bytes) {
    text += QStringLiteral("%1 ").arg(b, 2, 16, QChar(u'0')).toUpper();
    sum = (sum + b) & 0xFF;
  }
  return text + QStringLiteral("%1 ").arg((-sum) & 0xFF, 2, 16, QChar(u'0')).toUpper() + u'\r';
}

void LinkSeeds() {
  using namespace SimPackets;
  const quint16 s = 2;
  SimDevice room{3, 1, QStringLiteral("8003"), QStringLiteral("Room 103"), 1, 2, 0x0181,
                 QStringLiteral("202611240700")};
  SimDevice trunk{20, 5, QStringLiteral("0"), QStringLiteral("Trunk"), 1};
  SimDevice gsm{30, 21, QStringLiteral("13900001111"), QStringLiteral("GSM"), 1};
  gsm.Signal = 20;
  gsm.ModuleType = QStringLiteral("M35");
  Seed("fuzz_link", QStringLiteral("login"), LoginAnswer(s, QStringLiteral("1000")));
  Seed("fuzz_link", QStringLiteral("pulse"), PulsePacket(s));
  Seed("fuzz_link", QStringLiteral("enumeration"),
       DeviceReport(s, room) + DeviceReport(s, trunk) + DeviceReport(s, gsm) + EndOfDevices(s));
  Seed("fuzz_link", QStringLiteral("classes"),
       SrvClassNameAnswer(s, 0, QStringLiteral("内线")) +
           SrvClassNameAnswer(s, 1, QStringLiteral("市话")) + SrvClassNameAnswer(s, kEndOfNames, {}));
  Seed("fuzz_link", QStringLiteral("call"),
       CallStatePacket(s, 2, 20, QStringLiteral("13900001111")) +
           CallStatePacket(s, 4, 20, QStringLiteral("13900001111")) +
           CallStatePacket(s, 1, 20, QStringLiteral("13900001111")));
  Seed("fuzz_link", QStringLiteral("dial"),
       CallStatePacket(s, 7, 3, {}, QStringLiteral("8003"), true, 1));
  Seed("fuzz_link", QStringLiteral("missed"), MissedCallPacket(s, QStringLiteral("02188886666")));
  Seed("fuzz_link", QStringLiteral("userinfo"),
       UserInfoPacket(s, QStringLiteral("8001"), QStringLiteral("Lobby"), 17,
                      QStringLiteral("Front desk"), 1, QStringLiteral("*51 *52")));
  Seed("fuzz_link", QStringLiteral("guest"),
       SrvClassSetAnswer(s, 3, QStringLiteral("000000")) + NoDisturbAnswer(s, 3, 1) +
           VoiceMailAnswer(s, 3, 0) +
           MoringCallAnswer(s, 2, 3, QStringLiteral("20261124070001"), 2) +
           MoringCallAnswer(s, 2, 3, {}, 0));
  Seed("fuzz_link", QStringLiteral("gsm"),
       GsmAnswer(s, kGsmChosen, 30) + GsmAnswer(s, kGsmSent, 30) + GsmAnswer(s, kGsmFailed, 30));
  Seed("fuzz_udp", QStringLiteral("status_room"), StatusDatagram(room));
  Seed("fuzz_udp", QStringLiteral("status_trunk"), StatusDatagram(trunk));
  Seed("fuzz_udp", QStringLiteral("status_gsm"), StatusDatagram(gsm));
  Seed("fuzz_udp", QStringLiteral("record"),
       CallRecordDatagram(3, QStringLiteral("8003"), 1, QStringLiteral("13900001111"), 1, 1));
}

void FileSeeds() {
  const QString shipped = QStringLiteral(TRUNKDESK_SOURCE_DIR "/resources/ini/");
  for (const char *pack : {"lang_chinese.lan", "lang_English.lan"}) {
    const QByteArray bytes = ReadFile(shipped + QLatin1String(pack));
    Seed("fuzz_langpack", QLatin1String(pack), bytes);
    Seed("fuzz_ini", QLatin1String(pack), bytes.left(4096));
  }
  Seed("fuzz_ini", QStringLiteral("sys_RadioB.ini"), ReadFile(shipped + u"sys_RadioB.ini"));
  Seed("fuzz_layout", QStringLiteral("shipped.xml"), ReadFile(shipped + u"PhonePanels.xml"));

  // What the console itself writes: its settings with every key, and a layout.
  TSysConfig config;
  config.Host = QStringLiteral("192.168.1.10");
  SaveConfig(config);
  const QByteArray sys = ReadFile(FuzzHome::Path() + u"ini/sys.ini");
  Seed("fuzz_settings", QStringLiteral("saved.ini"), sys);
  Seed("fuzz_ini", QStringLiteral("saved.ini"), sys);

  SysParam().MyID = 65535;
  TCallControlDev table;
  table.ParentWidth = 755;
  TNetModule net;
  TPhoneBoard board(table, net);
  FuzzHome::Write(QStringLiteral("ini/PhonePanels.xml"), ReadFile(shipped + u"PhonePanels.xml"));
  for (int id : {0, 1, 5, 30})
    table.PortsID_ComboBox << QString::number(id);
  if (board.LoadPhones_tefxButtonClick()) {
    for (int id : {0, 1, 5, 30})
      table.AddPanel(id);
    board.savePhones_tefxButtonClick();
    Seed("fuzz_layout", QStringLiteral("saved.xml"),
         ReadFile(FuzzHome::Path() + u"ini/PhonePanels.xml"));
  }
}

void TextSeeds() {
  Seed("fuzz_devicelink", QStringLiteral("lamps"),
       DeviceFrame({0, 16, 0x81, 0x02, 17, 0b0101, 0b0110, 0, 0, 19, 0x30, 20, 26, 11, 22, 6, 59,
                    30, 0, 99, 7})
           .toLatin1());
  Seed("fuzz_devicelink", QStringLiteral("display"),
       DeviceFrame({0, 40, 1, 1, 'H', 'I', 1, 7, 'Z'}).toLatin1());
  Seed("fuzz_devicelink", QStringLiteral("states"), QByteArrayLiteral("xx$03Dev Online.$02"));
  int n = 0;
  for (const char *text : {"13900001111", "O'Brien", "张三", "%cdate(a-b)%", "a;b", "[x]_%",
                           "\"quoted\"", "#2026-11-23#", "8001 & 8002"})
    Seed("fuzz_jetsql", QStringLiteral("text%1").arg(++n), QByteArray(text));
}
} // namespace

int main(int argc, char **argv) {
  FuzzHome::Start(&argc, &argv);
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s CORPUS_FOLDER\n", argv[0]);
    return 2;
  }
  g_root = QString::fromLocal8Bit(argv[1]) + u'/';
  LinkSeeds();
  FileSeeds();
  TextSeeds();
  return 0;
}
