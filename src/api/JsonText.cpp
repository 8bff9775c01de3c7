#include "api/JsonText.h"

TJsonText &TJsonText::Open(char c) {
  Value();
  m_out.append(c);
  m_first = true;
  return *this;
}

TJsonText &TJsonText::Close(char c) {
  m_out.append(c);
  m_first = false;
  return *this;
}

void TJsonText::Value() {
  if (!m_first)
    m_out.append(',');
  m_first = false;
}

TJsonText &TJsonText::Key(const char *name) {
  Value();
  m_out.append('"').append(name).append("\":");
  m_first = true; // the value after a key takes no comma
  return *this;
}

TJsonText &TJsonText::String(const QString &text) {
  Value();
  m_out.append('"');
  const QByteArray utf8 = text.toUtf8();
  for (const char c : utf8) {
    const auto u = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      m_out.append('\\').append(c);
    } else if (u < 0x20) {
      static const char hex[] = "0123456789abcdef";
      m_out.append("\\u00").append(hex[u >> 4]).append(hex[u & 0xF]);
    } else {
      m_out.append(c);
    }
  }
  m_out.append('"');
  return *this;
}

TJsonText &TJsonText::Number(qint64 n) {
  Value();
  m_out.append(QByteArray::number(n));
  return *this;
}

TJsonText &TJsonText::Bool(bool b) {
  Value();
  m_out.append(b ? "true" : "false");
  return *this;
}

TJsonText &TJsonText::Null() {
  Value();
  m_out.append("null");
  return *this;
}
