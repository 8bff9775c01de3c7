#pragma once

#include <QByteArray>
#include <QString>

// The world a fuzz target runs in: a Qt application object, a throw-away
// program folder seeded with the shipped files, a shell that answers every
// question "no" and shows nothing, and the log on (its lines kept in memory
// only) so the tracing paths are fuzzed too.
namespace FuzzHome {
// Once per process, from LLVMFuzzerInitialize.
void Start(int *argc, char ***argv);
// The program folder, with a trailing '/'.
QString Path();
// Writes a file below the program folder.
void Write(const QString &relative, const QByteArray &bytes);
// Drops the in-memory log lines of the last input, so memory stays flat.
void ForgetLog();
} // namespace FuzzHome
