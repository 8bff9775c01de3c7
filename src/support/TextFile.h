#pragma once

#include <QByteArray>
#include <QString>

// The files the console reads at start (settings, language packs, the panel
// layout) are small text files. One that is far larger, or that is not text at
// all, is a damaged or wrong file: reading it would cost the start minutes and
// memory for nothing, and saving over it would destroy what may still be rescued.
inline constexpr qint64 kMaxTextFileBytes = 1024 * 1024;

enum class TextFileStatus { Read, Missing, Unreadable, TooLarge, NotText };

// Reads a whole file when it is within the limit and looks like text; the bytes
// are left empty otherwise.
TextFileStatus ReadTextFile(const QString &path, QByteArray *bytes);

// True when decoded text is text: at most one character in ten is a control
// character (other than tab and line ends) or a byte no code page could read.
bool LooksLikeText(const QString &decoded);

// Why a file was refused, for the operator and the log; empty for Read and Missing.
QString TextFileProblem(TextFileStatus status, const QString &path);

// Where a refused file's replacement is saved instead: beside it, never over it.
QString ReplacementPath(const QString &path);
