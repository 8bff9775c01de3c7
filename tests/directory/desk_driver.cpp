// One front desk on a shared store, driven line by line from stdin, for the
// two-desk test: the console's own store code (the data module, the contact
// pages, the task window, the appends of pushed call records, the link) with
// the screens left out. Answers and events go to stdout, one per line.
//
//   desk_driver HOME HOST PORT DATABASE USER
//   contact NAME PHONE | lookup NUMBER | task TITLE | tasks
//   record CALLER CALLED [yyyy-MM-ddThh:mm:ss] | records | rooms
// Events: "changed TABLE,...", "away", "back".
#include "directory/DirectoryPages.h"
#include "directory/SysDM_Unit.h"
#include "directory/Tasks_Unit.h"
#include "support/Clock.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
void Say(const QString &line) {
  std::printf("%s\n", qUtf8Printable(line));
  std::fflush(stdout);
}

QString Answer(TDirectoryPages &pages, TTasks_Form &tasks, const QStringList &words) {
  const QString verb = words.value(0);
  if (verb == u"contact"_s) {
    TMaininfoRecord contact;
    contact.Name = words.value(1);
    contact.Phone1 = words.value(2);
    pages.AddMainInfo(contact);
    return u"ok contact %1"_s.arg(pages.CurrentMatID);
  }
  if (verb == u"lookup"_s) {
    pages.ShowCallerInfo(u"Phone1"_s, words.value(1));
    return u"lookup "_s + pages.CON_Name_LMDEdit;
  }
  if (verb == u"task"_s) {
    TTaskType task;
    task.Title = words.value(1);
    task.createDatetime = task.lastDateTime = Now();
    return u"ok task %1"_s.arg(tasks.AddTask(task));
  }
  if (verb == u"tasks"_s) {
    TADOQuery q;
    Sys_DM().OpenSQL(u"select Title from Task_Table order by ID"_s, q);
    QStringList titles;
    for (q.First(); !q.Eof(); q.Next())
      titles << q.AsString(u"Title"_s);
    return u"tasks "_s + titles.join(u'|');
  }
  if (verb == u"record"_s) {
    TPBXConRecord r;
    r.Caller = words.value(1);
    r.Called = words.value(2);
    // Without a time the record is stamped on arrival, as the exchange's are.
    r.startTime = words.size() > 3
                      ? TDateTime::FromQDateTime(QDateTime::fromString(words[3], Qt::ISODate))
                      : Now();
    r.IOFlag = 1;
    Sys_DM().AddPBXConRecord(r);
    return u"ok record"_s;
  }
  if (verb == u"rooms"_s) {
    TADOQuery q;
    Sys_DM().OpenSQL(u"select count(*) as n from Exts"_s, q);
    return u"rooms %1"_s.arg(q.AsInteger(u"n"_s));
  }
  if (verb == u"records"_s) {
    TADOQuery q;
    Sys_DM().OpenSQL(u"select count(*) as n from PBXConRecords"_s, q);
    return u"records %1 waiting %2"_s.arg(q.AsInteger(u"n"_s))
        .arg(Sys_DM().PendingWrites().Waiting());
  }
  return u"unknown "_s + verb;
}
} // namespace

int main(int argc, char **argv) {
  QCoreApplication app(argc, argv);
  const QStringList args = app.arguments();
  if (args.size() != 6) {
    std::fprintf(stderr, "usage: desk_driver HOME HOST PORT DATABASE USER\n");
    return 2;
  }
  SetAppPath(args[1]);
  TSysConfig &c = SysConfig();
  c.DBDriver = u"QPSQL"_s;
  c.DBHost = args[2];
  c.DBPort = args[3].toInt();
  c.DBDatabase = args[4];
  c.DBUser = args[5];
  TDirectoryPages pages;
  TTasks_Form tasks;
  RunGuarded([] { Sys_DM().DataModuleCreate(); });
  TStoreLink &link = Sys_DM().Link();
  QObject::connect(&link, &TStoreLink::tablesChanged,
                   [](const QStringList &tables) { Say(u"changed "_s + tables.join(u',')); });
  QObject::connect(&link, &TStoreLink::awayChanged,
                   [](bool away) { Say(away ? u"away"_s : u"back"_s); });

  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QByteArray buffer;
  QObject::connect(&input, &QSocketNotifier::activated, [&] {
    char chunk[4096];
    const ssize_t n = read(STDIN_FILENO, chunk, sizeof chunk);
    if (n <= 0) {
      app.quit();
      return;
    }
    buffer.append(chunk, n);
    for (qsizetype end; (end = buffer.indexOf('\n')) >= 0;) {
      const QStringList words = QString::fromUtf8(buffer.left(end)).split(u'\t');
      buffer.remove(0, end + 1);
      QString answer = u"failed"_s;
      RunGuarded([&] { answer = Answer(pages, tasks, words); });
      Say(answer);
    }
  });
  Say(u"ready"_s);
  const int code = app.exec();
  Sys_DM().PendingWrites().Close();
  return code;
}
