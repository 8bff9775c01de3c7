#include "support/TextCodec.h"

#include <QStringDecoder>
#include <QStringEncoder>

#include <algorithm>
#include <cstring>

QByteArray ToGbk(QStringView text) {
  // A converter is cheap to make and, unlike a shared one, safe on any thread.
  QStringEncoder encoder("GBK");
  if (!encoder.isValid())
    return text.toLatin1();
  return encoder.encode(text);
}

QString FromGbk(QByteArrayView bytes) {
  QStringDecoder decoder("GBK");
  if (!decoder.isValid())
    return QString::fromLatin1(bytes);
  return decoder.decode(bytes);
}

namespace {
// Length of the longest prefix of `gbk` within `limit` bytes that ends on a
// character boundary: bytes below 0x80 stand alone, a lead byte takes one more.
qsizetype BoundaryPrefix(const QByteArray &gbk, qsizetype limit) {
  qsizetype pos = 0;
  while (pos < gbk.size()) {
    const qsizetype width = static_cast<unsigned char>(gbk[pos]) < 0x80 ? 1 : 2;
    if (pos + width > limit)
      break;
    pos += width;
  }
  return std::min(pos, gbk.size());
}
} // namespace

void WriteFixedText(char *field, qsizetype size, QStringView text) {
  if (size <= 0)
    return;
  std::memset(field, 0, size_t(size));
  QByteArray gbk = ToGbk(text);
  // A NUL inside the text would end it early on the far side; cut there honestly.
  if (const qsizetype nul = gbk.indexOf('\0'); nul >= 0)
    gbk.truncate(nul);
  const qsizetype n = BoundaryPrefix(gbk, size - 1);
  std::memcpy(field, gbk.constData(), size_t(n));
}

QString ReadFixedText(const char *field, qsizetype size) {
  if (size <= 0)
    return QString();
  const void *nul = std::memchr(field, 0, size_t(size));
  const qsizetype length = nul ? static_cast<const char *>(nul) - field : size;
  return FromGbk(QByteArrayView(field, length));
}

// A strict check: shortest forms only, no surrogates, nothing above U+10FFFF,
// and no sequence cut off at the end. GBK text almost never passes it.
bool IsValidUtf8(QByteArrayView bytes) {
  const auto *p = reinterpret_cast<const unsigned char *>(bytes.data());
  const qsizetype n = bytes.size();
  qsizetype i = 0;
  while (i < n) {
    const unsigned char c = p[i];
    if (c < 0x80) {
      ++i;
      continue;
    }
    int extra = 0;
    char32_t min = 0;
    char32_t cp = 0;
    if ((c & 0xE0) == 0xC0) {
      extra = 1;
      min = 0x80;
      cp = c & 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
      extra = 2;
      min = 0x800;
      cp = c & 0x0F;
    } else if ((c & 0xF8) == 0xF0) {
      extra = 3;
      min = 0x10000;
      cp = c & 0x07;
    } else {
      return false;
    }
    if (i + extra >= n) // the sequence runs past the end
      return false;
    for (int k = 1; k <= extra; ++k) {
      if ((p[i + k] & 0xC0) != 0x80)
        return false;
      cp = (cp << 6) | (p[i + k] & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
      return false;
    i += extra + 1;
  }
  return true;
}

QString DecodeFileText(const QByteArray &bytes) {
  static constexpr char kBom[] = "\xEF\xBB\xBF";
  const QByteArrayView view(bytes);
  // A byte-order mark says UTF-8 outright, even if a later byte is damaged.
  if (view.startsWith(kBom))
    return QString::fromUtf8(view.sliced(3));
  if (IsValidUtf8(view))
    return QString::fromUtf8(view);
  return FromGbk(view);
}
