#include "Script.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

qint16 AnswerTypeCode(const QString &kind) {
  if (kind == u"srvclass"_s)
    return 22;
  if (kind == u"nodisturb"_s)
    return 24;
  if (kind == u"wakeup"_s)
    return 35;
  if (kind == u"voicemail"_s)
    return 40;
  return 0;
}

namespace {

// Hex bytes; blanks between them are ignored, so "12 19 1039" is four bytes.
bool ParseHex(const QStringList &tokens, QByteArray *bytes) {
  const QString joined = tokens.join(QString());
  static const QRegularExpression hex(u"^([0-9A-Fa-f]{2})*$"_s);
  if (!hex.match(joined).hasMatch())
    return false;
  *bytes = QByteArray::fromHex(joined.toLatin1());
  return true;
}

bool IsAnswerKind(const QString &name) {
  return AnswerTypeCode(name) != 0;
}

// Parses one step; returns an empty string when it is good, else what is wrong.
QString ParseStep(const QStringList &tokens, ScriptStep *step) {
  if (tokens.size() < 3 || tokens.at(0) != u"at"_s)
    return u"expected \"at <ms> <step> ...\""_s;
  bool ok = false;
  step->At = tokens.at(1).toInt(&ok);
  if (!ok || step->At < 0)
    return u"\"%1\" is not a time in milliseconds"_s.arg(tokens.at(1));

  const QString verb = tokens.at(2);
  const QStringList args = tokens.mid(3);
  if (verb == u"send"_s) {
    step->Action = ScriptStep::Kind::Send;
    if (args.isEmpty())
      return u"send needs a type code"_s;
    step->TypeCode = args.at(0).toShort(&ok);
    if (!ok)
      return u"\"%1\" is not a type code"_s.arg(args.at(0));
    if (!ParseHex(args.mid(1), &step->Bytes))
      return u"the payload is not whole hex bytes"_s;
  } else if (verb == u"raw"_s) {
    step->Action = ScriptStep::Kind::Raw;
    if (args.isEmpty() || !ParseHex(args, &step->Bytes))
      return u"raw needs whole hex bytes"_s;
  } else if (verb == u"drop"_s) {
    step->Action = ScriptStep::Kind::Drop;
    if (!args.isEmpty())
      return u"drop takes nothing after it"_s;
  } else if (verb == u"pulses"_s) {
    if (args == QStringList{u"off"_s})
      step->Action = ScriptStep::Kind::PulsesOff;
    else if (args == QStringList{u"on"_s})
      step->Action = ScriptStep::Kind::PulsesOn;
    else
      return u"pulses takes \"on\" or \"off\""_s;
  } else if (verb == u"callstate"_s) {
    step->Action = ScriptStep::Kind::CallState;
    if (args.size() < 2 || args.size() > 4)
      return u"callstate takes <state> <line> [<caller> [<called>]]"_s;
    const uint state = args.at(0).toUInt(&ok);
    if (!ok || state > 255)
      return u"\"%1\" is not a call state"_s.arg(args.at(0));
    step->State = static_cast<quint8>(state);
    step->DeviceLine = args.at(1).toShort(&ok);
    if (!ok)
      return u"\"%1\" is not a line"_s.arg(args.at(1));
    step->Caller = args.value(2);
    step->Called = args.value(3);
  } else if (verb == u"missed"_s) {
    step->Action = ScriptStep::Kind::Missed;
    if (args.size() != 1)
      return u"missed takes one caller number"_s;
    step->Caller = args.at(0);
  } else if (verb == u"ring"_s) {
    step->Action = ScriptStep::Kind::Ring;
    if (args.isEmpty() || args.size() > 2)
      return u"ring takes <caller> [<line>]"_s;
    step->Caller = args.at(0);
    step->DeviceLine = -1;
    if (args.size() == 2) {
      step->DeviceLine = args.at(1).toShort(&ok);
      if (!ok || step->DeviceLine < 0)
        return u"\"%1\" is not a line"_s.arg(args.at(1));
    }
  } else if (verb == u"callback"_s) {
    step->Action = ScriptStep::Kind::CallBack;
    if (args.size() != 1)
      return u"callback takes one caller number"_s;
    step->Caller = args.at(0);
  } else if (verb == u"answer"_s || verb == u"hangup"_s || verb == u"giveup"_s) {
    step->Action = verb == u"answer"_s   ? ScriptStep::Kind::Answer
                   : verb == u"hangup"_s ? ScriptStep::Kind::HangUp
                                         : ScriptStep::Kind::GiveUp;
    if (!args.isEmpty())
      return u"%1 takes nothing after it"_s.arg(verb);
  } else if (verb == u"userinfo"_s) {
    step->Action = ScriptStep::Kind::UserInfo;
    if (args.size() < 4)
      return u"userinfo takes <number> <name> <port> <admin 0|1> [<feature code> ...]"_s;
    step->Caller = args.at(0);
    step->Name = args.at(1);
    step->Port = args.at(2).toUShort(&ok);
    if (!ok)
      return u"\"%1\" is not a port"_s.arg(args.at(2));
    if (args.at(3) != u"0"_s && args.at(3) != u"1"_s)
      return u"admin is 0 or 1, not \"%1\""_s.arg(args.at(3));
    step->Admin = args.at(3) == u"1"_s;
    step->Features = args.mid(4);
  } else if (verb == u"srvresult"_s) {
    step->Action = ScriptStep::Kind::SrvResult;
    if (args.size() != 1 || args.at(0).isEmpty() || args.at(0).size() > 20)
      return u"srvresult takes one result code, such as 000000"_s;
    step->Name = args.at(0);
  } else if (verb == u"hold"_s || verb == u"delay"_s) {
    const bool hold = verb == u"hold"_s;
    step->Action = hold ? ScriptStep::Kind::Hold : ScriptStep::Kind::Delay;
    const int fixed = hold ? 1 : 2;
    if (args.size() < fixed || args.size() > fixed + 1 || !IsAnswerKind(args.at(0)))
      return hold ? u"hold takes srvclass|nodisturb|voicemail|wakeup [<count>]"_s
                  : u"delay takes srvclass|nodisturb|voicemail|wakeup <ms> [<count>]"_s;
    step->Name = args.at(0);
    if (!hold) {
      step->DelayMs = args.at(1).toInt(&ok);
      if (!ok || step->DelayMs < 0)
        return u"\"%1\" is not a delay in milliseconds"_s.arg(args.at(1));
    }
    step->Value = hold ? 1 : -1;
    if (args.size() == fixed + 1) {
      step->Value = args.at(fixed).toInt(&ok);
      if (!ok || step->Value < 0)
        return u"\"%1\" is not a count"_s.arg(args.at(fixed));
    }
  } else if (verb == u"status"_s || verb == u"mixdata"_s) {
    const bool status = verb == u"status"_s;
    step->Action = status ? ScriptStep::Kind::Status : ScriptStep::Kind::MixData;
    if (args.size() != 2)
      return u"%1 takes <device id> <%2>"_s.arg(verb, status ? u"status"_s : u"word"_s);
    step->Device = args.at(0).toInt(&ok);
    if (!ok || step->Device < 0)
      return u"\"%1\" is not a device id"_s.arg(args.at(0));
    // 0 = the base from the prefix, so the word can be written 0x0245.
    const uint value = args.at(1).toUInt(&ok, 0);
    if (!ok || value > (status ? 255u : 65535u))
      return u"\"%1\" is not a %2"_s.arg(args.at(1), status ? u"status"_s : u"16-bit word"_s);
    step->Value = static_cast<int>(value);
  } else if (verb == u"cdr"_s) {
    step->Action = ScriptStep::Kind::CallRecord;
    if (args.size() < 2 || args.size() > 5)
      return u"cdr takes <extension> <number> [<asstype> [<direction> [<rectype>]]]"_s;
    step->Caller = args.at(0);
    step->Called = args.at(1);
    for (const QString &code : args.mid(2)) {
      step->Codes << code.toShort(&ok);
      if (!ok)
        return u"\"%1\" is not a 16-bit code"_s.arg(code);
    }
  } else if (verb == u"live"_s || verb == u"records"_s) {
    step->Action = verb == u"live"_s ? ScriptStep::Kind::Live : ScriptStep::Kind::CallRecords;
    if (args.size() != 1)
      return u"%1 takes a rate a second or \"off\""_s.arg(verb);
    if (args.at(0) != u"off"_s) {
      step->Rate = args.at(0).toDouble(&ok);
      if (!ok || !(step->Rate > 0))
        return u"\"%1\" is not a rate a second"_s.arg(args.at(0));
    }
  } else if (verb == u"clock"_s) {
    step->Action = ScriptStep::Kind::Clock;
    if (args.size() != 1)
      return u"clock takes one time, YYYYMMDDHHNN[SS]"_s;
    const QString &text = args.at(0);
    step->Moment = QDateTime::fromString(
        text, text.size() == 14 ? u"yyyyMMddHHmmss"_s : u"yyyyMMddHHmm"_s);
    if (!step->Moment.isValid())
      return u"\"%1\" is not a time YYYYMMDDHHNN[SS]"_s.arg(text);
  } else if (verb == u"wakeresult"_s) {
    step->Action = ScriptStep::Kind::WakeResult;
    static const QStringList results{u"random"_s, u"answer"_s, u"noanswer"_s};
    if (args.size() < 2 || args.size() > 3 || !results.contains(args.at(1)))
      return u"wakeresult takes <number> answer|noanswer|random [<ring ms>]"_s;
    step->Caller = args.at(0);
    step->Value = static_cast<int>(results.indexOf(args.at(1)));
    if (args.size() == 3) {
      step->RingMs = args.at(2).toInt(&ok);
      if (!ok || step->RingMs < 0)
        return u"\"%1\" is not a ring time in milliseconds"_s.arg(args.at(2));
    }
  } else {
    return u"unknown step \"%1\""_s.arg(verb);
  }
  return {};
}

} // namespace

bool ParseScript(const QString &text, QList<ScriptStep> *steps, QString *error) {
  // A comment starts at a "#" that opens the line or follows a blank, so a
  // caller number such as "*72#" keeps its sign.
  static const QRegularExpression comment(u"(^|\\s)#.*$"_s);
  static const QRegularExpression blanks(u"\\s+"_s);
  QList<ScriptStep> parsed;
  QStringList problems;
  const QStringList lines = text.split(u'\n');
  for (qsizetype i = 0; i < lines.size(); ++i) {
    QString line = lines.at(i);
    line.remove(comment);
    const QStringList tokens = line.split(blanks, Qt::SkipEmptyParts);
    if (tokens.isEmpty())
      continue;
    ScriptStep step;
    step.Line = static_cast<int>(i + 1);
    const QString problem = ParseStep(tokens, &step);
    if (problem.isEmpty())
      parsed << step;
    else
      problems << u"line %1: %2"_s.arg(step.Line).arg(problem);
  }
  if (!problems.isEmpty()) {
    if (error)
      *error = problems.join(u'\n');
    return false;
  }
  std::stable_sort(parsed.begin(), parsed.end(),
                   [](const ScriptStep &a, const ScriptStep &b) { return a.At < b.At; });
  *steps = parsed;
  return true;
}

ScriptRunner::ScriptRunner(QObject *parent) : QObject(parent) {
  Timer.setSingleShot(true);
  Timer.setTimerType(Qt::PreciseTimer);
  connect(&Timer, &QTimer::timeout, this, &ScriptRunner::RunDue);
}

void ScriptRunner::Start(QList<ScriptStep> steps, Perform perform) {
  Steps = std::move(steps);
  Next = 0;
  Act = std::move(perform);
  Clock.start();
  // The first steps run from the event loop too, so a caller can connect to
  // the exchange's signals after starting the script.
  Timer.start(0);
}

void ScriptRunner::Stop() {
  Timer.stop();
  Steps.clear();
  Next = 0;
}

void ScriptRunner::RunDue() {
  const qint64 now = Clock.elapsed();
  while (Next < Steps.size() && Steps.at(Next).At <= now) {
    const ScriptStep step = Steps.at(Next++);
    Act(step);
  }
  if (Next < Steps.size())
    ArmTimer();
  else
    emit finished();
}

void ScriptRunner::ArmTimer() {
  const qint64 wait = Steps.at(Next).At - Clock.elapsed();
  Timer.start(static_cast<int>(std::max<qint64>(wait, 0)));
}
