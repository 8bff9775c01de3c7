#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

// Text on the wire is GBK, NUL-terminated inside fixed-size fields.
QByteArray ToGbk(QStringView text);
QString FromGbk(QByteArrayView bytes);

// Puts text into a field of `size` bytes: at most size-1 bytes of GBK, cut on a
// character boundary, and NUL for the rest, so the exchange always finds an end.
void WriteFixedText(char *field, qsizetype size, QStringView text);

// Reads a field up to its first NUL, or the whole field when there is none.
QString ReadFixedText(const char *field, qsizetype size);

// Files the console reads may come from a Windows console in GBK or be written
// here in UTF-8: valid UTF-8 (with or without BOM) is taken as UTF-8, anything
// else as GBK.
QString DecodeFileText(const QByteArray &bytes);
bool IsValidUtf8(QByteArrayView bytes);
