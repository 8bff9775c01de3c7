#pragma once

#include <QString>
#include <QStringList>

// The program folder: the executable's folder or the one given by --home,
// always with a trailing '/'. Everything the console keeps lies below it.
QString AppPath();
void SetAppPath(const QString &folder);

// Resolves a path below the program folder ("ini\\sys.ini", "Ini/PhonePanels.xml")
// without regard to the case of its parts, so a folder copied from a Windows
// console works as it is. Either separator is accepted. When no such file exists,
// the path is returned as spelled, for creating it.
QString AppFile(const QString &relative);

// The files every part of the console knows by place.
QString SettingsFilePath(); // ini/sys.ini

// Like AppFile, but when the program folder lacks the file and a shipped copy
// exists (see SetShippedRoot), the shipped copy. A home that could not be seeded
// still gets readable language texts this way.
QString AppFileOrShipped(const QString &relative);
// Where the program's own copies of its default files are (e.g. ":/shipped").
void SetShippedRoot(const QString &root);

// Same, below any folder.
QString ResolveNoCase(const QString &folder, const QString &relative);

// Copies every file below `shippedRoot` (a folder or a resource path such as
// ":/shipped") into `home` where the home lacks it; nothing present is
// overwritten. Returns the relative names copied; names that could not be copied
// go to *failed.
QStringList SeedHome(const QString &shippedRoot, const QString &home,
                     QStringList *failed = nullptr);
