// trunkdesk-exchange: the simulated exchange as a program, for demos, training
// and trying the console by hand.
#include "ExchangeSim.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QTextStream>
#include <QTime>

#ifdef Q_OS_UNIX
#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

void Say(const QString &line) {
  static QTextStream out(stdout);
  out << QTime::currentTime().toString(u"hh:mm:ss.zzz"_s) << u' ' << line << Qt::endl;
}

void Complain(const QString &line) {
  QTextStream err(stderr);
  err << line << Qt::endl;
}

#ifdef Q_OS_UNIX
// Ctrl+C and a service stop end the event loop instead of killing the process
// mid-line: the handler only writes a byte that the loop then reads.
int g_signalPipe[2] = {-1, -1};

void OnSignal(int) {
  const char byte = 1;
  [[maybe_unused]] const ssize_t n = ::write(g_signalPipe[1], &byte, 1);
}

void QuitOnSignals(QCoreApplication &app) {
  if (::pipe(g_signalPipe) != 0)
    return;
  ::fcntl(g_signalPipe[1], F_SETFL, O_NONBLOCK);
  auto *notifier = new QSocketNotifier(g_signalPipe[0], QSocketNotifier::Read, &app);
  QObject::connect(notifier, &QSocketNotifier::activated, &app, [&app] {
    char byte = 0;
    [[maybe_unused]] const ssize_t n = ::read(g_signalPipe[0], &byte, 1);
    app.quit();
  });
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
}
#else
void QuitOnSignals(QCoreApplication &) {}
#endif

// A count of devices to add, or -1 after complaining.
int CountOf(const QCommandLineParser &parser, const QString &option) {
  if (!parser.isSet(option))
    return 0;
  bool ok = false;
  const int n = parser.value(option).toInt(&ok);
  if (!ok || n < 0 || n > SimDeviceSet::kMaxDevices) {
    Complain(u"--%1 wants a count from 0 to %2"_s.arg(option).arg(SimDeviceSet::kMaxDevices));
    return -1;
  }
  return n;
}

// Devices, class names, the event channel and the GSM answers, from the
// command line. Without any device option the exchange has a small office:
// sixteen extensions from 8001, two trunks and a GSM module.
bool SetUpDevices(const QCommandLineParser &parser, ExchangeSim &sim) {
  if (parser.isSet(u"devices"_s)) {
    QFile file(parser.value(u"devices"_s));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
      Complain(u"cannot read %1: %2"_s.arg(file.fileName(), file.errorString()));
      return false;
    }
    QString error;
    if (!ParseDeviceList(QString::fromUtf8(file.readAll()), &sim.Devices(), &error)) {
      Complain(error);
      return false;
    }
  }
  for (const QString &range : parser.values(u"extensions"_s)) {
    const QStringList ends = range.split(u'-');
    bool okFirst = false, okLast = false;
    const qlonglong first = ends.value(0).toLongLong(&okFirst);
    const qlonglong last = ends.value(1).toLongLong(&okLast);
    if (ends.size() != 2 || !okFirst || !okLast || last < first) {
      Complain(u"--extensions wants FIRST-LAST, as 8001-8100, not \"%1\""_s.arg(range));
      return false;
    }
    sim.AddDevices(
        sim.Devices().NextFreeId(),
        static_cast<int>(std::min<qlonglong>(last - first + 1, SimDeviceSet::kMaxDevices)),
        SimDeviceTypes::AnalogueExtension, ends.at(0));
  }
  const struct {
    QString Option;
    qint16 Type;
    QString FirstNumber;
  } kinds[] = {{u"trunks"_s, SimDeviceTypes::AnalogueTrunk, u"701"_s},
               {u"gsm"_s, SimDeviceTypes::GsmModule, u"13800000001"_s},
               {u"ivr"_s, SimDeviceTypes::Ivr, u"600"_s}};
  bool anyDevice = parser.isSet(u"devices"_s) || parser.isSet(u"extensions"_s);
  for (const auto &kind : kinds) {
    const int n = CountOf(parser, kind.Option);
    if (n < 0)
      return false;
    sim.AddDevices(sim.Devices().NextFreeId(), n, kind.Type, kind.FirstNumber);
    anyDevice = anyDevice || parser.isSet(kind.Option);
  }
  if (!anyDevice) {
    sim.AddDevices(0, 16, SimDeviceTypes::AnalogueExtension, u"8001"_s);
    sim.AddDevices(16, 2, SimDeviceTypes::AnalogueTrunk, u"701"_s);
    sim.AddDevices(18, 1, SimDeviceTypes::GsmModule, u"13800000001"_s);
  }
  if (parser.isSet(u"classes"_s))
    sim.SetServiceClassNames(parser.value(u"classes"_s).split(u','));

  const QHostAddress udpHost(parser.value(u"udp-host"_s));
  bool ok = false;
  const uint udpPort = parser.value(u"udp-port"_s).toUInt(&ok);
  if (udpHost.isNull() || !ok || udpPort == 0 || udpPort > 65535) {
    Complain(u"--udp-host wants an IP address and --udp-port a number from 1 to 65535"_s);
    return false;
  }
  sim.SetEventTarget(udpHost, static_cast<quint16>(udpPort));
  if (parser.isSet(u"udp-from"_s)) {
    const QHostAddress from(parser.value(u"udp-from"_s));
    if (from.isNull() || !sim.SetEventSender(from)) {
      Complain(u"cannot send events from \"%1\": %2"_s.arg(parser.value(u"udp-from"_s),
                                                           sim.Events().LastError()));
      return false;
    }
  }
  if (parser.isSet(u"live"_s)) {
    const double rate = parser.value(u"live"_s).toDouble(&ok);
    if (!ok || !(rate > 0)) {
      Complain(u"--live wants a rate a second above 0"_s);
      return false;
    }
    sim.StartLiveStatus(rate);
  }
  const QString gsm = parser.value(u"gsm-answer"_s);
  if (gsm == u"sent"_s) {
    sim.SetGsmOutcome(ExchangeSim::GsmOutcome::Sent);
  } else if (gsm == u"failed"_s) {
    sim.SetGsmOutcome(ExchangeSim::GsmOutcome::Failed);
  } else if (gsm == u"none"_s) {
    sim.SetGsmOutcome(ExchangeSim::GsmOutcome::NoModule);
  } else {
    Complain(u"--gsm-answer is sent, failed or none, not \"%1\""_s.arg(gsm));
    return false;
  }
  return true;
}

} // namespace

int main(int argc, char *argv[]) {
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(u"trunkdesk-exchange"_s);

  QCommandLineParser parser;
  parser.setApplicationDescription(
      u"A simulated telephone exchange for the Trunkdesk console: it accepts the "
      "console's connection, answers its login, sends keep-alive pulses, rings the "
      "wake-ups the console sets and prints every packet the console sends."_s);
  parser.addHelpOption();
  const QCommandLineOption portOption(u"port"_s, u"TCP port to listen on (default 5003)."_s, u"N"_s,
                                      u"5003"_s);
  const QCommandLineOption listenOption(u"listen"_s, u"Address to listen on (default 127.0.0.1)."_s,
                                        u"ADDR"_s, u"127.0.0.1"_s);
  const QCommandLineOption userOption(
      u"user"_s,
      u"An extension that may log in, with the answer it gets (default 1000, "
      "accepted). Repeatable; without it the only user is 8001:1234."_s,
      u"TEL:PASSWORD[:RESULT]"_s);
  const QCommandLineOption pulseOption(
      u"pulse"_s, u"Milliseconds between pulses in a session; 0 sends none (default 5000)."_s,
      u"MS"_s, u"5000"_s);
  const QCommandLineOption scriptOption(
      u"script"_s, u"Play the timed steps in FILE from each accepted login on."_s, u"FILE"_s);
  const QCommandLineOption dialCompleteOption(
      u"dial-complete"_s,
      u"Milliseconds after the last digit before a dialled call goes out; 0 at once "
      "(default 1500)."_s,
      u"MS"_s, u"1500"_s);
  const QCommandLineOption answerAfterOption(
      u"answer-after"_s,
      u"Milliseconds a dialled party rings before it answers; 0 at once, negative "
      "never, so only a script's answer step does (default 2000)."_s,
      u"MS"_s, u"2000"_s);
  const QCommandLineOption devicesOption(
      u"devices"_s,
      u"Read devices from FILE, a line each: \"id[-last] type number [status [name]]\"."_s,
      u"FILE"_s);
  const QCommandLineOption extensionsOption(
      u"extensions"_s, u"Analogue extensions numbered FIRST to LAST, after the devices so far."_s,
      u"FIRST-LAST"_s);
  const QCommandLineOption trunksOption(
      u"trunks"_s, u"N analogue trunks numbered from 701, after the devices so far."_s, u"N"_s);
  const QCommandLineOption gsmOption(
      u"gsm"_s, u"N GSM modules numbered from 13800000001, after the devices so far."_s, u"N"_s);
  const QCommandLineOption ivrOption(
      u"ivr"_s, u"N IVR ports numbered from 600, after the devices so far."_s, u"N"_s);
  const QCommandLineOption classesOption(
      u"classes"_s, u"Service class names, separated by commas, index 0 first."_s, u"NAMES"_s);
  const QCommandLineOption udpHostOption(
      u"udp-host"_s, u"Where the console listens for events (default 127.0.0.1)."_s, u"ADDR"_s,
      u"127.0.0.1"_s);
  const QCommandLineOption udpPortOption(
      u"udp-port"_s, u"The console's event port (default 5009)."_s, u"N"_s, u"5009"_s);
  const QCommandLineOption udpFromOption(
      u"udp-from"_s,
      u"Send events from this local address, e.g. 127.0.0.2, which a console "
      "expecting 127.0.0.1 must drop."_s,
      u"ADDR"_s);
  const QCommandLineOption liveOption(
      u"live"_s, u"Random status changes of random devices, RATE a second, from the start."_s,
      u"RATE"_s);
  const QCommandLineOption gsmAnswerOption(
      u"gsm-answer"_s, u"How an SMS ends: sent (default), failed, or none (no module is free)."_s,
      u"sent|failed|none"_s, u"sent"_s);
  const QCommandLineOption clockOption(
      u"clock"_s,
      u"Start the exchange's clock at this time, YYYYMMDDHHNN; it rings wake-ups by "
      "it (default: the system's time)."_s,
      u"TIME"_s);
  const QCommandLineOption recordServerOption(
      u"record-server"_s,
      u"Tell the console a recording server is at ADDR (e.g. one trunkdesk-recordserver "
      "runs); by default the exchange has none."_s,
      u"ADDR"_s);
  parser.addOptions({portOption, listenOption, userOption, pulseOption, scriptOption,
                     dialCompleteOption, answerAfterOption, devicesOption, extensionsOption,
                     trunksOption, gsmOption, ivrOption, classesOption, udpHostOption,
                     udpPortOption, udpFromOption, liveOption, gsmAnswerOption, clockOption,
                     recordServerOption});
  parser.process(app);

  bool ok = false;
  const uint port = parser.value(portOption).toUInt(&ok);
  if (!ok || port > 65535) {
    Complain(u"--port wants a number from 0 to 65535"_s);
    return 2;
  }
  const QHostAddress address(parser.value(listenOption));
  if (address.isNull()) {
    Complain(u"--listen wants an IP address, not \"%1\""_s.arg(parser.value(listenOption)));
    return 2;
  }
  const int pulse = parser.value(pulseOption).toInt(&ok);
  if (!ok || pulse < 0) {
    Complain(u"--pulse wants a number of milliseconds"_s);
    return 2;
  }

  const int dialComplete = parser.value(dialCompleteOption).toInt(&ok);
  if (!ok || dialComplete < 0) {
    Complain(u"--dial-complete wants a number of milliseconds"_s);
    return 2;
  }
  const int answerAfter = parser.value(answerAfterOption).toInt(&ok);
  if (!ok) {
    Complain(u"--answer-after wants a number of milliseconds"_s);
    return 2;
  }

  ExchangeSim sim;
  sim.SetPulsePeriod(pulse);
  sim.SetDialCompleteAfter(dialComplete);
  sim.SetAnswerAfter(answerAfter);
  QStringList users = parser.values(userOption);
  if (users.isEmpty())
    users << u"8001:1234"_s;
  for (const QString &user : std::as_const(users)) {
    const QStringList parts = user.split(u':');
    if (parts.size() < 2 || parts.size() > 3 || parts.at(0).isEmpty()) {
      Complain(u"--user wants TEL:PASSWORD or TEL:PASSWORD:RESULT, not \"%1\""_s.arg(user));
      return 2;
    }
    sim.AddUser(parts.at(0), parts.at(1), parts.value(2, u"1000"_s));
  }

  if (!SetUpDevices(parser, sim))
    return 2;
  if (parser.isSet(recordServerOption))
    sim.SetRecordServer(u"1000"_s, parser.value(recordServerOption));
  if (parser.isSet(clockOption)) {
    const QDateTime at = QDateTime::fromString(parser.value(clockOption), u"yyyyMMddHHmm"_s);
    if (!at.isValid()) {
      Complain(u"--clock wants a time YYYYMMDDHHNN, as 202701030659"_s);
      return 2;
    }
    sim.SetClockTo(at);
  }

  // The script is checked now, so a bad file stops the program before it listens,
  // and it plays from the start of every session: a scripted call means
  // nothing to a console that has not logged in yet.
  QString script;
  if (parser.isSet(scriptOption)) {
    QFile file(parser.value(scriptOption));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
      Complain(u"cannot read %1: %2"_s.arg(file.fileName(), file.errorString()));
      return 2;
    }
    script = QString::fromUtf8(file.readAll());
    QList<ScriptStep> steps;
    QString error;
    if (!ParseScript(script, &steps, &error)) {
      Complain(error);
      return 2;
    }
  }

  QObject::connect(&sim, &ExchangeSim::consoleConnected, &sim,
                   [&sim] { Say(u"console connected from %1"_s.arg(sim.PeerAddress())); });
  QObject::connect(&sim, &ExchangeSim::consoleDisconnected, &sim,
                   [] { Say(u"console disconnected"_s); });
  QObject::connect(&sim, &ExchangeSim::packetReceived, &sim,
                   [](const SimPacket &packet) { Say(u"<- "_s + SimPackets::Describe(packet)); });
  QObject::connect(&sim, &ExchangeSim::loginAnswered, &sim,
                   [&sim, &script](const QString &telNo, const QString &result) {
                     QString line = u"login of %1 answered %2"_s.arg(telNo, result);
                     if (result == u"1000"_s)
                       line += u", session %1"_s.arg(sim.SessionId());
                     Say(line);
                     if (result == u"1000"_s && !script.isEmpty()) {
                       sim.RunScriptText(script);
                       Say(u"script started"_s);
                     }
                   });
  QObject::connect(&sim, &ExchangeSim::scriptFinished, &sim, [] { Say(u"script finished"_s); });
  auto numberOf = [&sim](int id) { return sim.Device(id) ? sim.Device(id)->Number : QString(); };
  QObject::connect(&sim, &ExchangeSim::wakeUpRinging, &sim, [&sim, numberOf](int id) {
    Say(u"-> wake-up call rings %1 at %2"_s.arg(numberOf(id),
                                                 sim.Now().toString(u"yyyy-MM-dd hh:mm"_s)));
  });
  QObject::connect(&sim, &ExchangeSim::wakeUpEnded, &sim, [numberOf](int id, bool answered) {
    Say(u"-> wake-up call of %1 %2"_s.arg(numberOf(id), answered ? u"answered"_s
                                                                   : u"not answered"_s));
  });
  QObject::connect(&sim, &ExchangeSim::callStateChanged, &sim, [](const SimCallStatus &status) {
    QString line =
        u"-> call state %1 (%2)"_s.arg(status.State).arg(SimCall::StateName(status.State));
    if (!status.Caller.isEmpty())
      line += u" caller %1"_s.arg(status.Caller);
    if (!status.Called.isEmpty())
      line += u" with %1"_s.arg(status.Called);
    if (status.Line != 0)
      line += u" on line %1"_s.arg(status.Line);
    Say(line);
  });

  if (!sim.Listen(static_cast<quint16>(port), address)) {
    Complain(
        u"cannot listen on %1:%2: %3"_s.arg(address.toString()).arg(port).arg(sim.ListenError()));
    return 1;
  }
  Say(u"listening on %1:%2, users %3"_s.arg(address.toString())
          .arg(sim.Port())
          .arg(users.join(u", "_s)));
  Say(u"%1 devices, %2 service classes; events to %3:%4%5"_s.arg(sim.Devices().Count())
          .arg(sim.ServiceClassNames().size())
          .arg(sim.Events().TargetAddress().toString())
          .arg(sim.Events().TargetPort())
          .arg(sim.Events().SenderAddress().isNull()
                   ? QString()
                   : u" from "_s + sim.Events().SenderAddress().toString()));

  QuitOnSignals(app);
  const int code = app.exec();
  Say(u"stopped"_s);
  return code;
}
